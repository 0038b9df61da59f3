#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/bytes.h"
#include "media/files/byte_sources.h"

/// Files that are sequences of chunks, each with a type of four characters and the size of its data: PNG, RIFF, AIFF.
namespace zephmetadata::media {

/// What differs between such formats.
struct ChunkLayout {
    ByteOrder mOrder = ByteOrder::kBig;
    bool mIsSizeFirst = false;  ///< the size stands before the type
    bool mIsPadded = false;     ///< a zero byte follows data of an odd size
    bool mHasCRC = false;       ///< the CRC-32 of type and data follows them
};

inline constexpr std::size_t kChunkHeaderBytes = 8;
/// Several times what image data in the smallest customary chunks comes to; more is taken for damage.
inline constexpr std::size_t kMaxChunks = 1'000'000;

struct Chunk {
    std::array<char, 4> mName{};
    Range mWhole;  ///< with header, padding and CRC
    Range mData;

    std::string_view Type() const { return {mName.data(), mName.size()}; }
};

/// The size of a chunk of the type that the four bytes for it cannot hold; those are all ones then (EBU Tech 3306).
struct LongChunkSize {
    std::string mType;
    std::uint64_t mBytes = 0;
};

struct Chunks {
    std::vector<Chunk> mChunks;  ///< in their order
    bool mIsWhole = true;        ///< false when the last one reaches beyond the end, or bytes follow that are no chunk

    /// The first of the type, or null.
    const Chunk* Find(std::string_view type) const;
};

/// The chunks in a range of a file, of which only the headers are read. Ends at the end of the range, behind the first
/// chunk of the type @p last, or at what is no whole chunk. Padding that is missing at the end is forgiven.
Chunks ReadChunks(const ByteSource& file, Range within, const ChunkLayout& layout, std::string_view last = {},
                  const std::vector<LongChunkSize>& longSizes = {});

/// A whole chunk.
std::string ChunkBytes(const ChunkLayout& layout, std::string_view type, std::string_view data);

/// The data of a chunk; absent when it is larger than any metadata block or cannot be read.
std::optional<std::string> ReadChunk(const ByteSource& file, const Chunk& chunk);

/// @p element as a packet where a change of size moves nothing worth sparing: as large as the old one of @p oldBytes
/// where it fits and is not far smaller, else without room.
std::string FittingPacket(std::string_view element, std::size_t oldBytes);

}  // namespace zephmetadata::media
