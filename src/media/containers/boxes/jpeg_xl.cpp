#include "media/containers/boxes/jpeg_xl.h"

#include <algorithm>

#include "media/containers/block_compression.h"
#include "media/containers/boxes/boxes.h"
#include "media/containers/exif_payload.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kSignature = "\0\0\0\x0CJXL \r\n\x87\n"sv;
constexpr std::string_view kFileType =
    "\0\0\0\x14"
    "ftypjxl \0\0\0\0jxl "sv;
constexpr std::string_view kCodestream = "\xFF\x0A"sv;

/// A metadata box, perhaps compressed within a "brob" box.
struct Block {
    Box mBox;
    bool mIsCompressed = false;
    std::string mBytes;  ///< without the compression
};

struct Blocks {
    BoxList mBoxes;
    std::optional<Block> mXMP;
    std::optional<Block> mExif;
    std::string mDamage;  ///< empty for a sound file
};

/// "xml " boxes may hold other documents, too. Texts of two bytes a character are known by their ASCII.
bool IsXMP(std::string text) {
    std::erase(text, '\0');
    return text.find("adobe:ns:meta/") != std::string::npos ||
           text.find("http://www.w3.org/1999/02/22-rdf-syntax-ns#") != std::string::npos;
}

/// The type of the box, or of the one that is compressed in it.
std::string TypeOf(const ByteSource& file, const Box& box) {
    const bool isCompressed = box.mType == "brob" && box.Contents().mSize >= 4;
    return isCompressed ? ReadRange(file, {box.Contents().mOffset, 4}).value_or("") : box.mType;
}

/// Absent for a block that cannot be read.
std::optional<Block> ReadBlock(const ByteSource& file, const Box& box) {
    const Range contents = box.Contents();
    const bool isCompressed = box.mType == "brob";
    if (contents.mSize > kMaxBlockBytes) {
        return std::nullopt;
    }
    std::optional<std::string> bytes = ReadRange(file, contents);
    if (bytes && isCompressed) {
        bytes = Decompressed(std::string_view(*bytes).substr(4), Compression::kBrotli, kMaxDecompressedBytes);
    }
    return bytes ? std::optional(Block{box, isCompressed, *std::move(bytes)}) : std::nullopt;
}

bool IsBare(const ByteSource& file) {
    return ReadUpTo(file, 0, kCodestream.size()) == kCodestream;
}

/// Parts of a picture begin with their number, the last with its highest bit set.
bool IsLastPart(const ByteSource& file, const Box& box) {
    const std::string number = box.mType == "jxlp" ? ReadUpTo(file, box.Contents().mOffset, 1) : std::string();
    return !number.empty() && (static_cast<unsigned char>(number[0]) & 0x80U) != 0;
}

void TakeBlock(const ByteSource& file, const Box& box, Blocks& blocks) {
    const std::string type = TypeOf(file, box);
    const bool isXMP = type == "xml " && !blocks.mXMP;
    if (!isXMP && (type != "Exif" || blocks.mExif)) {
        return;
    }
    std::optional<Block> block = ReadBlock(file, box);
    if (!block) {
        blocks.mDamage = "a compressed block is damaged";
    } else if (!isXMP) {
        blocks.mExif = std::move(block);
    } else if (IsXMP(block->mBytes)) {
        blocks.mXMP = std::move(block);
    }
}

Blocks ReadBlocks(const ByteSource& file) {
    Blocks blocks;
    if (IsBare(file)) {
        return blocks;
    }
    blocks.mBoxes = ReadBoxes(file, {0, file.Size()});
    bool hasPicture = false;
    for (const Box& box : blocks.mBoxes.mBoxes) {
        hasPicture = hasPicture || box.mType == "jxlc" || IsLastPart(file, box);
        TakeBlock(file, box, blocks);
    }
    if (!hasPicture) {
        blocks.mDamage = "the picture is missing or cut off";
    } else if (IsCutBox(file, blocks.mBoxes.mRest)) {
        blocks.mDamage = "the file is cut off";
    }
    return blocks;
}

/// The bytes of a box that holds the block as the old one did.
std::string BlockBox(std::string_view type, const std::string& bytes, bool isCompressed) {
    const std::optional<std::string> compressed = isCompressed ? Compressed(bytes, Compression::kBrotli) : std::nullopt;
    return compressed ? BoxBytes("brob", std::string(type) + *compressed) : BoxBytes(type, bytes);
}

class BlockEditor {
public:
    BlockEditor(const Blocks& blocks, const BlockChanges& changes) : mBlocks(blocks), mChanges(changes) {}

    PlannedEdit Edit(std::uint64_t bareBytes) {
        if (mChanges.mIIM) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "the format has no place for IPTC-IIM");
        }
        if (!mChanges.mExif.empty() && !EditExif()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, "the Exif block is damaged");
        }
        if (mChanges.mXMP) {
            EditXMP();
        }
        if (!mNewBoxes.empty()) {
            InsertNew(bareBytes);
        }
        return {FileStatus::kFileStatus_Success, {}, std::move(mPlan)};
    }

private:
    void Put(std::string_view type, const std::optional<Block>& old, const std::string& bytes) {
        if (!old) {
            mNewBoxes += BlockBox(type, bytes, false);
        } else if (!old->mIsCompressed && old->mBox.mSize != BoxSize::kToEnd &&
                   bytes.size() == old->mBox.Contents().mSize) {
            mPlan.Replace(old->mBox.Contents(), bytes, Touch::kBlock);
        } else {
            mPlan.Replace(old->mBox.mWhole, BlockBox(type, bytes, old->mIsCompressed), Touch::kBlock);
        }
    }

    bool EditExif() {
        const std::optional<Block>& old = mBlocks.mExif;
        if (!old && OnlyRemove(mChanges.mExif)) {
            return true;
        }
        const std::optional<std::string> bytes =
            EditedExifPayload(old ? old->mBytes : std::string(), mChanges.mExif, kNoTiffOffset);
        if (bytes) {
            Put("Exif", old, *bytes);
        }
        return bytes.has_value();
    }

    void EditXMP() {
        const std::optional<Block>& old = mBlocks.mXMP;
        if (mChanges.mXMP->empty()) {
            if (old) {
                mPlan.Remove(old->mBox.mWhole, Touch::kBlock);
            }
            return;
        }
        // The JPEG file that a picture was made from is put together again with the packet, whose size is in "jbrd".
        const bool isPartOfJPEG = mBlocks.mBoxes.Find("jbrd") != nullptr;
        const bool isShort = old && old->mIsCompressed && !isPartOfJPEG;
        Put("xml ", old,
            isShort ? ShortPacket(*mChanges.mXMP)
                    : FittingPacket(*mChanges.mXMP, old ? old->mBytes.size() : 0, !isPartOfJPEG));
    }

    /// New boxes come before the picture, so that who reads a stream has them in time, and an end without a size stays.
    void InsertNew(std::uint64_t bareBytes) {
        if (bareBytes > 0) {
            mPlan.Insert(0, std::string(kSignature).append(kFileType) + mNewBoxes + BoxHeader("jxlc", bareBytes),
                         Touch::kBlock);
            return;
        }
        const auto isHead = [](const Box& box) {
            return box.mType == "JXL " || box.mType == "ftyp" || box.mType == "jxll";
        };
        const std::vector<Box>& boxes = mBlocks.mBoxes.mBoxes;
        const auto place = std::find_if_not(boxes.begin(), boxes.end(), isHead);
        mPlan.Insert(place->mWhole.mOffset, mNewBoxes, Touch::kBlock);
    }

    const Blocks& mBlocks;
    const BlockChanges& mChanges;
    Plan mPlan;
    std::string mNewBoxes;
};

class JpegXL : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const PagedSource paged(*file);
        Blocks blocks = ReadBlocks(paged);
        FileBlocks found;
        if (!blocks.mDamage.empty()) {
            found.mStatus = FileStatus::kFileStatus_DamagedFile;
            found.mDetail = blocks.mDamage;
        }
        if (blocks.mXMP) {
            found.mXMP = std::move(blocks.mXMP->mBytes);
        }
        if (blocks.mExif) {
            if (auto exif = ExifInPayload(std::make_shared<MemorySource>(std::move(blocks.mExif->mBytes)))) {
                found.mExif.push_back(*std::move(exif));
            }
        }
        return found;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const PagedSource paged(*file);
        const Blocks blocks = ReadBlocks(paged);
        if (!blocks.mDamage.empty()) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, blocks.mDamage);
        }
        return BlockEditor(blocks, changes).Edit(IsBare(paged) ? file->Size() : 0);
    }
};

}  // namespace

bool IsJpegXL(std::string_view head) {
    return head.substr(0, kSignature.size()) == kSignature || head.substr(0, kCodestream.size()) == kCodestream;
}

const Container& JpegXLContainer() {
    static const JpegXL container;
    return container;
}

}  // namespace zephmetadata::media
