#include "media/containers/chunks/webp.h"

#include <algorithm>

#include "media/containers/chunks/riff_form.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kPacketType = "XMP ";
/// Of some writers.
constexpr std::string_view kOtherPacketType{"XMP\0", 4};
constexpr std::string_view kExifType = "EXIF";
/// Some writers leave it before the TIFF stream, as JPEG has it.
constexpr std::string_view kExifSignature{"Exif\0\0", 6};
constexpr const char* kDamaged = "The WebP file is cut off or damaged.";

/// RFC 9649, 2.7.1: the bits of the first byte of a VP8X chunk.
constexpr std::uint8_t kHasPacket = 0x04;
constexpr std::uint8_t kHasExif = 0x08;
constexpr std::uint8_t kHasAlpha = 0x10;

struct Canvas {
    std::uint32_t mWidth = 0;
    std::uint32_t mHeight = 0;
    bool mHasAlpha = false;
};

const Chunk* PacketChunk(const Form& form) {
    const std::vector<Chunk>& chunks = form.mChunks.mChunks;
    const auto found = std::find_if(chunks.begin(), chunks.end(), [](const Chunk& chunk) {
        return chunk.Type() == kPacketType || chunk.Type() == kOtherPacketType;
    });
    return found != chunks.end() ? &*found : nullptr;
}

struct ExifBlock {
    std::string mSignature;
    std::string mStream;
};
std::optional<ExifBlock> ReadExif(const ByteSource& file, const Chunk& chunk) {
    auto data = ReadChunk(file, chunk);
    if (!data) {
        return std::nullopt;
    }
    const std::size_t signature = data->starts_with(kExifSignature) ? kExifSignature.size() : 0;
    return ExifBlock{data->substr(0, signature), data->substr(signature)};
}

/// The header of a key frame (RFC 6386, 9.1).
std::optional<Canvas> LossyCanvas(std::string_view data) {
    constexpr std::size_t kStartCode = 3;
    constexpr std::uint32_t kSizeBits = 0x3FFF;  // two more say how to scale
    if (data.size() < 10 || data.substr(kStartCode, 3) != "\x9D\x01\x2A") {
        return std::nullopt;
    }
    return Canvas{Get16(data, 6, ByteOrder::kLittle) & kSizeBits, Get16(data, 8, ByteOrder::kLittle) & kSizeBits,
                  false};
}

/// RFC 9649, 3.4: a signature, then width and height less one in 14 bits each, and one bit for alpha.
std::optional<Canvas> LosslessCanvas(std::string_view data) {
    constexpr std::uint32_t kSizeBits = 0x3FFF;
    if (data.size() < 5 || data.front() != '\x2F') {
        return std::nullopt;
    }
    const std::uint32_t bits = Get32(data, 1, ByteOrder::kLittle);
    return Canvas{(bits & kSizeBits) + 1, (bits >> 14U & kSizeBits) + 1, (bits >> 28U & 1U) != 0};
}

/// What the picture of a file without VP8X says of itself.
std::optional<Canvas> CanvasOf(const ByteSource& file, const Form& form) {
    constexpr std::size_t kHeaderBytes = 10;
    for (const Chunk& chunk : form.mChunks.mChunks) {
        const std::string data =
            ReadUpTo(file, chunk.mData.mOffset, std::min<std::uint64_t>(chunk.mData.mSize, kHeaderBytes));
        if (chunk.Type() == "VP8 ") {
            return LossyCanvas(data);
        }
        if (chunk.Type() == "VP8L") {
            return LosslessCanvas(data);
        }
    }
    return std::nullopt;
}

/// Sets the features in the VP8X chunk, or makes one before all others; false when the picture cannot be understood.
bool PlanFeatures(Plan& plan, const ByteSource& file, const Form& form, std::uint8_t features) {
    constexpr std::size_t kDataBytes = 10;
    if (const Chunk* const chunk = form.mChunks.Find("VP8X")) {
        const auto data = ReadRange(file, {chunk->mData.mOffset, 1});
        if (!data || chunk->mData.mSize < kDataBytes) {
            return false;
        }
        const auto flags = static_cast<std::uint8_t>(Get8(*data, 0) | features);
        if (flags != Get8(*data, 0)) {
            plan.Replace({chunk->mData.mOffset, 1}, NumberBytes(flags, 1), Touch::kStructure);
        }
        return true;
    }
    const auto canvas = CanvasOf(file, form);
    if (!canvas || canvas->mWidth == 0 || canvas->mHeight == 0) {
        return false;
    }
    const std::string data = NumberBytes(features | (canvas->mHasAlpha ? kHasAlpha : 0U), 4, ByteOrder::kLittle) +
                             NumberBytes(canvas->mWidth - 1, 3, ByteOrder::kLittle) +
                             NumberBytes(canvas->mHeight - 1, 3, ByteOrder::kLittle);
    plan.Insert(form.mWhole.mOffset + kFormHeaderBytes, ChunkBytes(kRiffLayout, "VP8X", data), Touch::kStructure);
    return true;
}

/// False when the Exif block is damaged.
bool PlanExif(Plan& plan, const ByteSource& file, const Form& form, std::span<const TiffEdit> edits) {
    const Chunk* const chunk = form.mChunks.Find(kExifType);
    const auto old = chunk != nullptr ? ReadExif(file, *chunk) : ExifBlock{};
    if (!old) {
        return false;
    }
    const auto stream = EditedExif(old->mStream.empty() ? std::nullopt : std::optional(old->mStream), edits);
    if (!stream) {
        return false;
    }
    const std::string data = old->mSignature + *stream;
    const Chunk* const packet = PacketChunk(form);
    if (chunk != nullptr) {
        plan.Replace(chunk->mWhole, ChunkBytes(kRiffLayout, kExifType, data), Touch::kBlock);
    } else if (packet != nullptr && packet == &form.mChunks.mChunks.back()) {
        plan.Insert(packet->mWhole.mOffset, ChunkBytes(kRiffLayout, kExifType, data), Touch::kBlock);
    } else {
        PlanAppend(plan, form, kExifType, data);
    }
    return true;
}

void PlanPacket(Plan& plan, const Form& form, std::string_view element) {
    const Chunk* const chunk = PacketChunk(form);
    if (chunk == nullptr) {
        return PlanAppend(plan, form, kPacketType, ShortPacket(element));
    }
    const std::string packet = FittingPacket(element, chunk->mData.mSize);
    plan.Replace(chunk->mWhole, ChunkBytes(kRiffLayout, kPacketType, packet), Touch::kBlock);
}

class WebP : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const Form form = ReadForm(*file, 0, kRiffLayout);
        FileBlocks blocks;
        bool isWhole = form.mIsWhole;
        if (const Chunk* const chunk = PacketChunk(form); chunk != nullptr && chunk->mData.mSize > 0) {
            blocks.mXMP = ReadChunk(*file, *chunk);
            isWhole = isWhole && blocks.mXMP;
        }
        if (const Chunk* const chunk = form.mChunks.Find(kExifType)) {
            const auto exif = ReadExif(*file, *chunk);
            isWhole = isWhole && exif;
            if (exif && !exif->mStream.empty()) {
                blocks.mExif.push_back({std::make_shared<MemorySource>(exif->mStream), TiffDirectory::kMain});
            }
        }
        if (!isWhole) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = kDamaged;
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const Form form = ReadForm(*file, 0, kRiffLayout);
        const auto refused = [](const char* detail) {
            return RefusedEdit(FileStatus::kFileStatus_DamagedFile, detail);
        };
        if (!form.mIsWhole) {
            return refused(kDamaged);
        }
        PlannedEdit edit;
        const auto features =
            static_cast<std::uint8_t>((changes.mXMP ? kHasPacket : 0U) | (changes.mExif.empty() ? 0U : kHasExif));
        if (features != 0 && !PlanFeatures(edit.mPlan, *file, form, features)) {
            return refused("The picture of the WebP file is damaged.");
        }
        if (!changes.mExif.empty() && !PlanExif(edit.mPlan, *file, form, changes.mExif)) {
            return refused("The Exif chunk of the WebP file is damaged.");
        }
        if (changes.mXMP) {
            PlanPacket(edit.mPlan, form, *changes.mXMP);
        }
        if (!PlanFormSize(edit.mPlan, form)) {
            return RefusedEdit(FileStatus::kFileStatus_CannotCarryXMP, "The WebP file would be too large.");
        }
        return edit;
    }
};

}  // namespace

bool IsWebP(std::string_view head) {
    return head.size() >= kFormHeaderBytes && head.starts_with("RIFF") && head.substr(8, 4) == "WEBP";
}

const Container& WebPContainer() {
    static const WebP container;
    return container;
}

}  // namespace zephmetadata::media
