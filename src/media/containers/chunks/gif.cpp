#include "media/containers/chunks/gif.h"

#include <algorithm>

#include "media/bytes.h"
#include "media/containers/chunks/chunks.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kOldVersion = "GIF87a";
constexpr std::string_view kVersion = "GIF89a";
constexpr std::uint64_t kVersionDigitPlace = 4;
constexpr std::uint64_t kScreenBytes = 13;  // signature and logical screen descriptor
constexpr std::uint64_t kImageBytes = 10;   // image descriptor
/// An extension for an application: introducer, label, and the size of the name.
constexpr std::string_view kPacketHead = "\x21\xFF\x0BXMP DataXMP";
constexpr const char* kDamaged = "The GIF file is cut off or damaged.";

constexpr char kExtension = '\x21';
constexpr char kImage = '\x2C';
constexpr char kTrailer = '\x3B';
constexpr char kPictureControl = '\xF9';
constexpr char kPictureText = '\x01';

/// Wherever in it a reader of sub-blocks arrives, the size that it finds leads to the last byte.
std::string MagicTrailer() {
    std::string bytes = "\x01";
    for (int size = 255; size >= 0; --size) {
        bytes += static_cast<char>(size);
    }
    return bytes + '\0';
}

struct Structure {
    bool mIsWhole = false;
    std::uint64_t mNewPlace = 0;      // for an extension: before the first picture and what belongs to it
    std::optional<Range> mExtension;  // the first with a packet
};

/// Goes through the blocks of a file.
class Walk {
public:
    explicit Walk(const ByteSource& file) : mFile(file) {}

    Structure Structured() {
        Structure structure;
        const std::string screen = ReadUpTo(mFile, 0, kScreenBytes);
        mAt = kScreenBytes;
        mIsSound = screen.size() == kScreenBytes;
        if (mIsSound) {
            SkipColors(screen[10]);
        }
        while (mIsSound) {
            const std::uint64_t begin = mAt;
            const std::string head = ReadUpTo(mFile, begin, kPacketHead.size());
            if (structure.mNewPlace == 0 && BelongsToPicture(head)) {
                structure.mNewPlace = begin;
            }
            if (head.starts_with(kTrailer)) {
                structure.mIsWhole = true;
                break;
            }
            SkipBlock(head);
            if (mIsSound && head == kPacketHead && !structure.mExtension) {
                structure.mExtension = Range{begin, mAt - begin};
            }
        }
        return structure;
    }

private:
    static bool BelongsToPicture(std::string_view head) {
        const char label = head.size() > 1 ? head[1] : '\0';
        return !head.starts_with(kExtension) || label == kPictureControl || label == kPictureText;
    }
    /// The table of colors that the flags of a screen or an image announce.
    void SkipColors(char flags) {
        const auto bits = static_cast<unsigned char>(flags);
        Skip((bits & 0x80U) != 0 ? std::uint64_t{3} << ((bits & 7U) + 1) : 0);
    }
    void Skip(std::uint64_t size) {
        mAt += size;
        mIsSound = mIsSound && mAt <= mFile.Size();
    }
    void SkipBlock(std::string_view head) {
        if (head.starts_with(kExtension)) {
            Skip(2);
        } else if (head.starts_with(kImage) && head.size() >= kImageBytes) {
            Skip(kImageBytes);
            SkipColors(head[kImageBytes - 1]);
            Skip(1);  // the size of the first codes
        } else {
            mIsSound = false;
        }
        SkipSubBlocks();
    }
    void SkipSubBlocks() {
        while (mIsSound) {
            const std::string size = ReadUpTo(mFile, mAt, 1);
            mIsSound = !size.empty();
            Skip(1 + (mIsSound ? Get8(size, 0) : 0));
            if (mIsSound && size.front() == '\0') {
                break;
            }
        }
    }

    PagedSource mFile;
    std::uint64_t mAt = 0;
    bool mIsSound = true;
};

/// The packet of an extension; absent when that is too large or cannot be read.
std::optional<std::string> ReadPacket(const ByteSource& file, const Range& extension) {
    const Range payload = {extension.mOffset + kPacketHead.size(), extension.mSize - kPacketHead.size()};
    auto bytes = payload.mSize <= kMaxBlockBytes ? ReadRange(file, payload) : std::nullopt;
    const std::string magic = MagicTrailer();
    if (!bytes || bytes->ends_with(magic)) {
        if (bytes) {
            bytes->resize(bytes->size() - magic.size());
        }
        return bytes;
    }
    std::string packet;
    for (std::size_t at = 0; at < bytes->size(); at += 1U + Get8(*bytes, at)) {
        packet.append(*bytes, at + 1, Get8(*bytes, at));
    }
    return packet;
}

class Gif : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const Structure structure = Walk(*file).Structured();
        FileBlocks blocks;
        bool isWhole = structure.mIsWhole;
        if (structure.mExtension) {
            blocks.mXMP = ReadPacket(*file, *structure.mExtension);
            isWhole = isWhole && blocks.mXMP;
        }
        if (blocks.mXMP && blocks.mXMP->empty()) {
            blocks.mXMP.reset();
        }
        if (!isWhole) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = kDamaged;
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Structure structure = Walk(*file).Structured();
        const auto old = structure.mExtension ? ReadPacket(*file, *structure.mExtension) : std::string();
        if (!structure.mIsWhole || !old) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, kDamaged);
        }
        PlannedEdit edit;
        if (!changes.mXMP) {
            return edit;
        }
        const std::string packet = FittingPacket(*changes.mXMP, old->size());
        edit.mPlan.Replace(structure.mExtension.value_or(Range{structure.mNewPlace, 0}),
                           std::string(kPacketHead) + packet + MagicTrailer(), Touch::kBlock);
        if (ReadUpTo(*file, 0, kOldVersion.size()) == kOldVersion) {
            edit.mPlan.Replace({kVersionDigitPlace, 1}, std::string(kVersion.substr(kVersionDigitPlace, 1)),
                               Touch::kStructure);
        }
        return edit;
    }
};

}  // namespace

bool IsGif(std::string_view head) {
    return head.starts_with(kVersion) || head.starts_with(kOldVersion);
}

const Container& GifContainer() {
    static const Gif container;
    return container;
}

}  // namespace zephmetadata::media
