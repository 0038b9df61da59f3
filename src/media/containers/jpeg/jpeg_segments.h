#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "media/files/byte_sources.h"
#include "zephmetadata/types.h"

/// JPEG streams (ITU-T T.81, annex B): what stands before the first scan of a picture. A stream may lie in a larger file,
/// and nothing is said of where it ends.
namespace zephmetadata::media {

/// Markers of T.81, table B.1.
inline constexpr std::uint8_t kMarkerSOI = 0xD8;
inline constexpr std::uint8_t kMarkerEOI = 0xD9;
inline constexpr std::uint8_t kMarkerSOS = 0xDA;
inline constexpr std::uint8_t kMarkerAPP0 = 0xE0;
inline constexpr std::uint8_t kMarkerAPP1 = 0xE1;
inline constexpr std::uint8_t kMarkerAPP2 = 0xE2;
inline constexpr std::uint8_t kMarkerAPP13 = 0xED;

/// The size in a segment has 16 bits and counts itself.
inline constexpr std::size_t kMaxSegmentBytes = 65533;

struct JPEGSegment {
    std::uint8_t mMarker = 0;
    Range mWhole;  ///< from its marker on, without the fill bytes before it
    Range mData;   ///< behind its size
};

struct JPEGHeaders {
    UTF8String mDetail;  ///< in English: how they are damaged or cut off; empty when they are sound
    std::vector<JPEGSegment> mSegments;
    std::uint64_t mEnd = 0;  ///< of the headers: where the first scan begins
};

/// Reads as far as it goes: bytes between segments are passed over as decoders do, and told of.
JPEGHeaders ReadJPEGHeaders(const ByteSource& stream);

/// A segment; @p data is at most kMaxSegmentBytes.
std::string SegmentBytes(std::uint8_t marker, std::string_view data);

}  // namespace zephmetadata::media
