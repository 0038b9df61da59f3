#include "media/containers/chunks/chunks.h"

#include <zlib.h>

#include <algorithm>

#include "media/containers/container.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kFieldBytes = 4;
constexpr std::size_t kCRCBytes = 4;
constexpr std::uint32_t kSizeElsewhere = 0xFFFFFFFF;
/// Room that is kept: several times what writers of packets leave.
constexpr std::size_t kMaxKeptRoom = 4 * kPacketPadding;

std::size_t TypePlace(const ChunkLayout& layout) {
    return layout.mIsSizeFirst ? kFieldBytes : 0;
}
std::size_t SizePlace(const ChunkLayout& layout) {
    return kFieldBytes - TypePlace(layout);
}

std::uint64_t SizeOf(std::string_view type, std::uint32_t written, const std::vector<LongChunkSize>& longSizes) {
    const auto found =
        std::find_if(longSizes.begin(), longSizes.end(), [&](const LongChunkSize& size) { return size.mType == type; });
    return written == kSizeElsewhere && found != longSizes.end() ? found->mBytes : written;
}

/// What follows the data of a chunk.
std::uint64_t TailBytes(const ChunkLayout& layout, std::uint64_t dataBytes) {
    return (layout.mHasCRC ? kCRCBytes : 0) + (layout.mIsPadded ? dataBytes % 2 : 0);
}

/// The chunk that begins at @p at; absent when it does not lie within @p end.
std::optional<Chunk> ChunkAt(const ByteSource& file, std::uint64_t at, std::uint64_t end, const ChunkLayout& layout,
                             const std::vector<LongChunkSize>& longSizes) {
    const auto header = ReadRange(file, {at, kChunkHeaderBytes});
    if (!header || !IsWithin({at, kChunkHeaderBytes}, end)) {
        return std::nullopt;
    }
    Chunk chunk;
    header->copy(chunk.mName.data(), chunk.mName.size(), TypePlace(layout));
    const std::uint64_t size = SizeOf(chunk.Type(), Get32(*header, SizePlace(layout), layout.mOrder), longSizes);
    chunk.mData = {at + kChunkHeaderBytes, size};
    if (!IsWithin(chunk.mData, end)) {
        return std::nullopt;
    }
    const std::uint64_t tail = TailBytes(layout, size);
    if (layout.mHasCRC && !IsWithin({chunk.mData.End(), tail}, end)) {
        return std::nullopt;
    }
    chunk.mWhole = {at, kChunkHeaderBytes + size + std::min(tail, end - chunk.mData.End())};
    return chunk;
}

}  // namespace

const Chunk* Chunks::Find(std::string_view type) const {
    const auto found =
        std::find_if(mChunks.begin(), mChunks.end(), [&](const Chunk& chunk) { return chunk.Type() == type; });
    return found != mChunks.end() ? &*found : nullptr;
}

Chunks ReadChunks(const ByteSource& file, Range within, const ChunkLayout& layout, std::string_view last,
                  const std::vector<LongChunkSize>& longSizes) {
    Chunks chunks;
    std::uint64_t at = within.mOffset;
    while (at < within.End()) {
        const auto chunk =
            chunks.mChunks.size() < kMaxChunks ? ChunkAt(file, at, within.End(), layout, longSizes) : std::nullopt;
        if (!chunk) {
            chunks.mIsWhole = false;
            break;
        }
        chunks.mChunks.push_back(*chunk);
        if (chunk->Type() == last) {
            break;
        }
        at = chunk->mWhole.End();
    }
    return chunks;
}

std::string ChunkBytes(const ChunkLayout& layout, std::string_view type, std::string_view data) {
    const std::string size = NumberBytes(data.size(), kFieldBytes, layout.mOrder);
    std::string bytes = layout.mIsSizeFirst ? size + std::string(type) : std::string(type) + size;
    bytes.append(data);
    if (layout.mHasCRC) {
        uLong sum = crc32_z(0, reinterpret_cast<const Bytef*>(type.data()), type.size());
        sum = crc32_z(sum, reinterpret_cast<const Bytef*>(data.data()), data.size());
        bytes += NumberBytes(sum, kCRCBytes, layout.mOrder);
    }
    if (layout.mIsPadded && data.size() % 2 != 0) {
        bytes += '\0';
    }
    return bytes;
}

std::optional<std::string> ReadChunk(const ByteSource& file, const Chunk& chunk) {
    return chunk.mData.mSize <= kMaxBlockBytes ? ReadRange(file, chunk.mData) : std::nullopt;
}

std::string FittingPacket(std::string_view element, std::size_t oldBytes) {
    std::string packet = ShortPacket(element);
    const bool fits = packet.size() <= oldBytes && oldBytes - packet.size() <= kMaxKeptRoom;
    return fits ? WrappedPacket(element, oldBytes) : packet;
}

}  // namespace zephmetadata::media
