#include "media/containers/boxes/jpeg_2000.h"

#include <algorithm>
#include <array>

#include "media/containers/boxes/boxes.h"
#include "media/containers/exif_payload.h"
#include "media/containers/media_offsets.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kSignature = "\0\0\0\x0CjP  \r\n\x87\n"sv;
constexpr std::string_view kCodestream = "\xFF\x4F\xFF\x51"sv;

// There is no standard for these; what writers agree on.
constexpr std::string_view kExifUuid = "JpgTiffExif->JP2";
constexpr std::string_view kOldExifUuid = "\x05\x37\xCD\xAB\x9D\x0C\x44\x31\xA7\x2A\xFA\x56\x1F\x2A\x11\x3E";
constexpr std::string_view kIIMUuid = "\x33\xC7\xA4\xD2\xB8\x1D\x47\x23\xA0\xBA\xF1\xA3\xE0\x97\xAD\x38";

/// Boxes that do not say where in the file something lies. Others may: fragment tables and cross-references (ISO/IEC
/// 15444-2), pages (15444-6), indexes (15444-9).
constexpr std::array<std::string_view, 19> kUnmovedBy = {"jP  ", "ftyp", "rreq", "jp2h", "ihdr", "bpcc", "colr",
                                                         "pclr", "cmap", "cdef", "res ", "jp2c", "jp2i", "xml ",
                                                         "uuid", "uinf", "asoc", "lbl ", "free"};

struct Jpeg2000File {
    BoxList mBoxes;
    const Box* mXMP = nullptr;
    const Box* mExif = nullptr;
    const Box* mIIM = nullptr;
    std::string mDamage;
};

bool IsBare(const ByteSource& file) {
    return ReadUpTo(file, 0, kCodestream.size()) == kCodestream;
}

Jpeg2000File ReadFile(const ByteSource& file) {
    Jpeg2000File found;
    found.mBoxes = ReadBoxes(file, {0, file.Size()});
    found.mXMP = found.mBoxes.FindUuid(kXMPUuid);
    found.mExif = found.mBoxes.FindUuid(kExifUuid);
    if (found.mExif == nullptr) {
        found.mExif = found.mBoxes.FindUuid(kOldExifUuid);
    }
    found.mIIM = found.mBoxes.FindUuid(kIIMUuid);
    const Box* const type = found.mBoxes.Find("ftyp");
    const bool isPlain = type != nullptr && ReadRange(file, {type->Contents().mOffset, 4}) == "jp2 ";
    if (IsCutBox(file, found.mBoxes.mRest) || type == nullptr) {
        found.mDamage = "the file is cut off";
    } else if (isPlain && found.mBoxes.Find("jp2c") == nullptr) {
        found.mDamage = "there is no picture in the file";
    }
    return found;
}

std::optional<std::string> Contents(const ByteSource& file, const Box* box) {
    const bool isThere = box != nullptr && box->Contents().mSize <= kMaxBlockBytes;
    return isThere ? ReadRange(file, box->Contents()) : std::nullopt;
}

/// Whether what follows a box may move: nothing in the file refers to places.
bool CanMove(const ByteSource& file) {
    const BoxList tree = ReadBoxTree(
        file, {0, file.Size()}, [](const ByteSource&, const Box& box, const BoxList&) -> std::optional<std::uint64_t> {
            const bool isEntered = box.mType == "jp2h" || box.mType == "asoc";
            return isEntered ? std::optional<std::uint64_t>(0) : std::nullopt;
        });
    return tree.mIsWhole && std::all_of(tree.mBoxes.begin(), tree.mBoxes.end(), [](const Box& box) {
               return std::find(kUnmovedBy.begin(), kUnmovedBy.end(), box.mType) != kUnmovedBy.end();
           });
}

class Jpeg2000Editor {
public:
    Jpeg2000Editor(const ByteSource& file, const Jpeg2000File& boxes)
        : mFile(file), mBoxes(boxes), mLast(boxes.mBoxes.mBoxes.back()), mCanMove(CanMove(file)) {}

    PlannedEdit Edit(const BlockChanges& changes) {
        if (mLast.mSize == BoxSize::kToEnd && mLast.mWhole.mSize > 0xFFFFFFFFU && !mCanMove) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "what follows the header cannot be moved");
        }
        if (!changes.mExif.empty() && !EditExif(changes.mExif)) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, "the Exif block is damaged");
        }
        if (changes.mIIM) {
            Put(kIIMUuid, mBoxes.mIIM, *changes.mIIM);
        }
        if (changes.mXMP) {
            EditXMP(*changes.mXMP);
        }
        if (!mNewBoxes.empty()) {
            if (!mIsLastWritten) {
                MakeExplicit(mPlan, mLast);
            }
            mPlan.Insert(mLast.mWhole.End(), mNewBoxes, Touch::kBlock);
        }
        return {FileStatus::kFileStatus_Success, {}, std::move(mPlan)};
    }

private:
    void Put(std::string_view uuid, const Box* old, const std::string& bytes) {
        if (old == nullptr) {
            mNewBoxes += UuidBoxBytes(uuid, bytes);
            return;
        }
        const bool isLast = old == &mLast;
        if (bytes.size() == old->Contents().mSize && old->mSize != BoxSize::kToEnd) {
            mPlan.Replace(old->Contents(), bytes, Touch::kBlock);
        } else if (isLast || mCanMove) {
            mPlan.Replace(old->mWhole, UuidBoxBytes(old->mUuid, bytes), Touch::kBlock);
            mIsLastWritten = mIsLastWritten || isLast;
        } else {
            mPlan.Replace(old->mWhole, FreeBox(old->mWhole.mSize), Touch::kSpace);
            mNewBoxes += UuidBoxBytes(old->mUuid, bytes);
        }
    }

    bool EditExif(const std::vector<TiffEdit>& edits) {
        if (mBoxes.mExif == nullptr && OnlyRemove(edits)) {
            return true;
        }
        const std::optional<std::string> old = mBoxes.mExif == nullptr ? std::string() : Contents(mFile, mBoxes.mExif);
        const std::optional<std::string> bytes = old ? EditedExifPayload(*old, edits, {}) : std::nullopt;
        if (bytes) {
            Put(kExifUuid, mBoxes.mExif, *bytes);
        }
        return bytes.has_value();
    }

    void EditXMP(const std::string& element) {
        const Box* const old = mBoxes.mXMP;
        const bool canShrink = old == &mLast || mCanMove;
        if (!element.empty()) {
            Put(kXMPUuid, old, FittingPacket(element, old == nullptr ? 0 : old->Contents().mSize, canShrink));
        } else if (old != nullptr) {
            PlanPacketBox(mPlan, *old, {}, canShrink);
            mIsLastWritten = mIsLastWritten || old == &mLast;
        }
    }

    const ByteSource& mFile;
    const Jpeg2000File& mBoxes;
    const Box& mLast;
    const bool mCanMove;
    Plan mPlan;
    std::string mNewBoxes;
    bool mIsLastWritten = false;  // with a size, or taken away
};

class Jpeg2000 : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        FileBlocks blocks;
        if (IsBare(*file)) {
            return blocks;
        }
        const PagedSource paged(*file);
        const Jpeg2000File found = ReadFile(paged);
        if (!found.mDamage.empty()) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = found.mDamage;
        }
        blocks.mXMP = Contents(paged, found.mXMP);
        blocks.mIIM = Contents(paged, found.mIIM);
        if (found.mExif != nullptr) {
            if (auto exif = ExifInPayload(std::make_shared<WindowSource>(file, found.mExif->Contents()))) {
                blocks.mExif.push_back(*std::move(exif));
            }
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        if (IsBare(*file)) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "a bare codestream has no place for metadata");
        }
        const PagedSource paged(*file);
        const Jpeg2000File found = ReadFile(paged);
        if (!found.mDamage.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, found.mDamage);
        }
        return Jpeg2000Editor(paged, found).Edit(changes);
    }

    std::vector<Range> References(const ByteSource& file) const override {
        const PagedSource paged(file);
        std::vector<Range> ranges;
        if (IsBare(file)) {
            return ranges;
        }
        // Motion JPEG 2000 (ISO/IEC 15444-3) has the tables of films.
        for (const OffsetTable& table : ReadOffsetTables(paged, ReadBoxes(paged, {0, paged.Size()})).mTables) {
            for (const std::uint64_t offset : table.mOffsets) {
                ranges.push_back({offset, offset < file.Size() ? std::uint64_t{1} : 0});
            }
        }
        return ranges;
    }
};

}  // namespace

bool IsJpeg2000(std::string_view head) {
    return head.substr(0, kSignature.size()) == kSignature || head.substr(0, kCodestream.size()) == kCodestream;
}

const Container& Jpeg2000Container() {
    static const Jpeg2000 container;
    return container;
}

}  // namespace zephmetadata::media
