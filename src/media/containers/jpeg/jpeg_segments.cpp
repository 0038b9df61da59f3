#include "media/containers/jpeg/jpeg_segments.h"

#include <cassert>
#include <optional>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kMarkerBytes = 2;
constexpr std::size_t kSizeBytes = 2;
constexpr std::size_t kMaxSegments = 65536;
/// No writer leaves more between two segments.
constexpr std::size_t kMaxGapBytes = std::size_t{1} << 16U;

struct Marker {
    std::uint8_t mCode = 0;
    std::uint64_t mOffset = 0;
    bool mIsExpected = true;  ///< nothing but fill bytes stands before it
};

std::optional<Marker> MarkerIn(std::string_view bytes, std::uint64_t offset) {
    std::size_t at = 0;
    while ((at = bytes.find('\xFF', at)) != std::string_view::npos) {
        const std::size_t begin = at;
        at = bytes.find_first_not_of('\xFF', at);
        if (at == std::string_view::npos) {
            return std::nullopt;
        }
        if (bytes[at] != '\0') {
            return Marker{Get8(bytes, at), offset + at - 1, begin == 0};
        }
    }
    return std::nullopt;
}

std::optional<Marker> NextMarker(const ByteSource& stream, std::uint64_t offset) {
    // Nearly always the next two bytes.
    for (std::size_t size = kMarkerBytes; size <= kMaxGapBytes; size *= 8) {
        const std::string bytes = ReadUpTo(stream, offset, size);
        const std::optional<Marker> marker = MarkerIn(bytes, offset);
        if (marker || bytes.size() < size) {
            return marker;
        }
    }
    return std::nullopt;
}

/// TEM and the restart markers have no size.
bool IsAlone(std::uint8_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7);
}

std::optional<JPEGSegment> SegmentAt(const ByteSource& stream, const Marker& marker) {
    const std::uint64_t sizeAt = marker.mOffset + kMarkerBytes;
    const std::optional<std::string> sizeBytes = ReadRange(stream, {sizeAt, kSizeBytes});
    const std::uint64_t size = sizeBytes ? Get16(*sizeBytes, 0) : 0;
    if (size < kSizeBytes || !IsWithin({sizeAt, size}, stream.Size())) {
        return std::nullopt;
    }
    return JPEGSegment{marker.mCode, {marker.mOffset, kMarkerBytes + size}, {sizeAt + kSizeBytes, size - kSizeBytes}};
}

/// Adds what stands at @p at and moves behind it; false at the end, and where it cannot go on.
bool ReadNext(const ByteSource& stream, std::uint64_t& at, JPEGHeaders& headers) {
    const std::optional<Marker> marker = NextMarker(stream, at);
    if (!marker) {
        headers.mDetail = "the file ends before the picture begins";
        return false;
    }
    if (!marker->mIsExpected) {
        headers.mDetail = "bytes between its segments belong to none of them";
    }
    headers.mEnd = marker->mOffset;
    if (marker->mCode == kMarkerEOI) {
        return false;
    }
    if (IsAlone(marker->mCode)) {
        at = marker->mOffset + kMarkerBytes;
        return true;
    }
    const std::optional<JPEGSegment> segment = SegmentAt(stream, *marker);
    if (!segment || marker->mCode == kMarkerSOI) {
        headers.mDetail = "a segment is damaged or cut off";
        return false;
    }
    if (marker->mCode == kMarkerSOS) {
        return false;
    }
    headers.mSegments.push_back(*segment);
    at = segment->mWhole.End();
    return true;
}

}  // namespace

JPEGHeaders ReadJPEGHeaders(const ByteSource& stream) {
    const PagedSource paged(stream);
    JPEGHeaders headers;
    std::uint64_t at = kMarkerBytes;
    if (ReadUpTo(paged, 0, kMarkerBytes) != "\xFF\xD8") {
        headers.mDetail = "it does not begin as a JPEG stream does";
        return headers;
    }
    while (ReadNext(paged, at, headers)) {
        if (headers.mSegments.size() > kMaxSegments) {
            headers.mDetail = "it has too many segments";
            break;
        }
    }
    return headers;
}

std::string SegmentBytes(std::uint8_t marker, std::string_view data) {
    assert(data.size() <= kMaxSegmentBytes);
    const std::string head = {'\xFF', static_cast<char>(marker)};
    return (head + NumberBytes(data.size() + kSizeBytes, kSizeBytes)).append(data);
}

}  // namespace zephmetadata::media
