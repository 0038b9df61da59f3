#include "media/containers/sound/mp3.h"

#include <algorithm>
#include <optional>

#include "media/bytes.h"
#include "media/containers/sound/id3_texts.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kHeaderBytes = 10;  // of the tag, and of each frame in it
constexpr std::string_view kPacketOwner("XMP\0", 4);
constexpr std::uint64_t kMostTagBytes = std::uint64_t{1} << 28U;  // what four bytes of seven bits hold

constexpr const char* kDamaged = "its ID3 tag is cut off or holds something else than frames";

constexpr const char* kTooLarge = "the ID3 tag would become too large";

constexpr unsigned kUnsynchronised = 0x80;
constexpr unsigned kExtendedHeader = 0x40;
constexpr unsigned kFooter = 0x10;

/// A number of four bytes of seven bits each, which cannot look like the beginning of a frame of sound.
std::uint32_t SyncSafe(std::string_view bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 7U | (Get8(bytes, at + i) & 0x7FU);
    }
    return value;
}

std::string SyncSafeBytes(std::uint64_t value) {
    std::string bytes(4, '\0');
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[3 - i] = static_cast<char>(value >> 7 * i & 0x7FU);
    }
    return bytes;
}

bool IsKnown(unsigned version) {
    return version == 3 || version == 4;
}

struct Frame {
    std::string mId;
    Range mWhole;  ///< in the tag's own bytes, as is mData
    Range mData;
    std::uint16_t mFlags = 0;
};

struct Tag {
    bool mIsThere = false;
    unsigned mVersion = 0;  ///< 3 for ID3v2.3
    unsigned mFlags = 0;
    std::string mBytes;  ///< with its header, without a footer
    std::vector<Frame> mFrames;
    std::size_t mFramesEnd = kHeaderBytes;  ///< where the padding begins
    bool mIsWhole = true;

    const Frame* Packet() const {
        const auto found = std::find_if(mFrames.begin(), mFrames.end(), [this](const Frame& frame) {
            return frame.mId == "PRIV" && Data(frame).starts_with(kPacketOwner);
        });
        return found == mFrames.end() ? nullptr : &*found;
    }
    std::string_view Data(const Frame& frame) const {
        return std::string_view(mBytes).substr(frame.mData.mOffset, frame.mData.mSize);
    }
};

/// Frames of ID3v2.4 have sizes of seven-bit bytes; some writers give plain ones there, which shows where the next frame
/// then begins.
std::optional<std::uint32_t> FrameBytes(const Tag& tag, std::size_t at) {
    const std::uint32_t plain = Get32(tag.mBytes, at + 4);
    const std::uint32_t safe = SyncSafe(tag.mBytes, at + 4);
    const auto fits = [&](std::uint32_t size) { return size <= tag.mBytes.size() - at - kHeaderBytes; };
    const auto leadsOn = [&](std::uint32_t size) {
        const std::size_t next = at + kHeaderBytes + size;
        if (!fits(size)) {
            return false;
        }
        const std::string_view there = std::string_view(tag.mBytes).substr(next, kHeaderBytes);
        return there.size() < 4 || IsFrameId(there.substr(0, 4)) ||
               there.find_first_not_of('\0') == std::string_view::npos;
    };
    const bool cannotBeSafe = (plain & 0x80808080U) != 0;
    if (tag.mVersion < 4 || cannotBeSafe || (!leadsOn(safe) && leadsOn(plain))) {
        return fits(plain) ? std::optional(plain) : std::nullopt;
    }
    return fits(safe) ? std::optional(safe) : std::nullopt;
}

void ReadFrames(Tag& tag) {
    constexpr std::size_t kMaxFrames = 10000;
    std::size_t at = tag.mFramesEnd;
    while (tag.mBytes.size() - at >= kHeaderBytes && IsFrameId(std::string_view(tag.mBytes).substr(at, 4)) &&
           tag.mFrames.size() < kMaxFrames) {
        const std::optional<std::uint32_t> size = FrameBytes(tag, at);
        if (!size) {
            tag.mIsWhole = false;
            break;
        }
        tag.mFrames.push_back({tag.mBytes.substr(at, 4),
                               {at, kHeaderBytes + *size},
                               {at + kHeaderBytes, *size},
                               Get16(tag.mBytes, at + 8)});
        at += kHeaderBytes + *size;
    }
    tag.mFramesEnd = at;
    tag.mIsWhole = tag.mIsWhole && tag.mBytes.find_first_not_of('\0', at) == std::string::npos;
}

/// The extended header comes before the frames: in ID3v2.3 its size leaves itself out, in ID3v2.4 it does not.
bool PassOverExtendedHeader(Tag& tag) {
    if (tag.mBytes.size() < kHeaderBytes + 4) {
        return false;
    }
    const std::uint64_t size =
        tag.mVersion < 4 ? std::uint64_t{Get32(tag.mBytes, kHeaderBytes)} + 4 : SyncSafe(tag.mBytes, kHeaderBytes);
    if (size > tag.mBytes.size() - kHeaderBytes) {
        return false;
    }
    tag.mFramesEnd += static_cast<std::size_t>(size);
    return true;
}

Tag ReadTag(const ByteSource& file) {
    Tag tag;
    const std::string head = ReadUpTo(file, 0, kHeaderBytes);
    if (!head.starts_with("ID3") || head.size() < kHeaderBytes) {
        tag.mIsWhole = !head.starts_with("ID3");
        return tag;
    }
    tag.mIsThere = true;
    tag.mVersion = Get8(head, 3);
    tag.mFlags = Get8(head, 5);
    const std::uint64_t size = kHeaderBytes + SyncSafe(head, 6);
    tag.mBytes = ReadUpTo(file, 0, static_cast<std::size_t>(size));
    tag.mIsWhole = tag.mBytes.size() == size;
    if (!IsKnown(tag.mVersion) || (tag.mFlags & kUnsynchronised) != 0) {
        return tag;  // frames of another form; WhyReadOnly says so
    }
    if ((tag.mFlags & kExtendedHeader) != 0 && !PassOverExtendedHeader(tag)) {
        tag.mIsWhole = false;
        return tag;
    }
    ReadFrames(tag);
    return tag;
}

const char* WhyReadOnly(const Tag& tag) {
    if (tag.mIsThere && !IsKnown(tag.mVersion)) {
        return "its ID3 tag is of a version that has no place for XMP";
    }
    if ((tag.mFlags & (kUnsynchronised | kExtendedHeader | kFooter)) != 0) {
        return "its ID3 tag is unsynchronised or has an extended header or a footer";
    }
    return "";
}

/// A frame of the packet, whose size both versions write alike.
std::string PacketFrame(unsigned version, std::string_view packet) {
    const std::size_t size = kPacketOwner.size() + packet.size();
    return std::string("PRIV")
        .append(version == 3 ? NumberBytes(size, 4) : SyncSafeBytes(size))
        .append(2, '\0')
        .append(kPacketOwner)
        .append(packet);
}

PlannedEdit PlanNewTag(std::string_view element) {
    const std::string frame = element.empty() ? "" : PacketFrame(3, WrappedPacket(element));
    if (frame.size() >= kMostTagBytes) {
        return RefusedEdit(FileStatus::kFileStatus_NotWritten, kTooLarge);
    }
    Plan plan;
    if (!frame.empty()) {
        plan.Insert(0, std::string("ID3\x03\0\0", 6).append(SyncSafeBytes(frame.size())).append(frame), Touch::kBlock);
    }
    return {FileStatus::kFileStatus_Success, {}, std::move(plan)};
}

class MP3 : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const Tag tag = ReadTag(*file);
        FileBlocks blocks;
        blocks.mWhyReadOnly = WhyReadOnly(tag);
        if (!tag.mIsWhole) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = kDamaged;
        }
        if (const Frame* const packet = tag.Packet()) {
            blocks.mXMP = std::string(tag.Data(*packet).substr(kPacketOwner.size()));
        }
        ID3Texts texts;
        for (const Frame& frame : tag.mFrames) {
            if ((frame.mFlags & 0xFFU) == 0) {  // neither compressed, encrypted nor of another form
                texts.Add(frame.mId, tag.Data(frame));
            }
        }
        blocks.mValues = texts.Values();
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Tag tag = ReadTag(*file);
        if (!tag.mIsWhole) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, kDamaged);
        }
        const std::string element = changes.mXMP.value_or(std::string());
        if (!tag.mIsThere) {
            return PlanNewTag(element);
        }
        const Frame* const old = tag.Packet();
        const Range place = old != nullptr ? old->mWhole : Range{tag.mFramesEnd, 0};
        const std::size_t oldPacket =
            old == nullptr ? 0 : static_cast<std::size_t>(old->mData.mSize) - kPacketOwner.size();
        std::string frame = element.empty() ? "" : PacketFrame(tag.mVersion, FittingPacket(element, oldPacket, true));
        return PlanFrame(tag, place, std::move(frame));
    }

private:
    /// Takes what the frame needs from the tag's padding, or moves the sound. Some padding stays: where a tag ends with
    /// a large frame other programs mistake its size.
    static PlannedEdit PlanFrame(const Tag& tag, Range place, std::string frame) {
        const std::uint64_t padding = tag.mBytes.size() - tag.mFramesEnd;
        const std::uint64_t more = frame.size() > place.mSize ? frame.size() - place.mSize : 0;
        const std::uint64_t taken = more + kHeaderBytes <= padding ? more : 0;
        const std::uint64_t newSize = tag.mBytes.size() - place.mSize + frame.size() - taken;
        if (newSize - kHeaderBytes >= kMostTagBytes) {
            return RefusedEdit(FileStatus::kFileStatus_NotWritten, kTooLarge);
        }
        Plan plan;
        plan.Replace({6, 4}, SyncSafeBytes(newSize - kHeaderBytes), Touch::kStructure);
        plan.Replace(place, std::move(frame), Touch::kBlock);
        plan.Remove({tag.mFramesEnd, taken}, Touch::kSpace);
        return {FileStatus::kFileStatus_Success, {}, std::move(plan)};
    }
};

}  // namespace

bool IsMP3(std::string_view head) {
    // A tag, or the first frame of sound: eleven bits set, MPEG-1 or 2, layer III.
    return head.starts_with("ID3") || (head.size() >= 2 && Get8(head, 0) == 0xFF && (Get8(head, 1) & 0xE6U) == 0xE2U);
}

const Container& MP3Container() {
    static const MP3 container;
    return container;
}

}  // namespace zephmetadata::media
