#pragma once

#include <cstdint>
#include <vector>

#include "media/native/tiff/tiff_layout.h"

/// Who uses which bytes of a TIFF stream.
namespace zephmetadata::media {

class TiffSpace {
public:
    /// Absent when there is more than could lie side by side: then nobody knows what is free.
    static std::optional<TiffSpace> Of(const ByteSource& stream, const TiffHeader& header);
    /// Whether the bytes of something that is there are used by it alone. Writers share values (one resolution for both
    /// axes), and a wrong count makes things overlap.
    bool IsExclusive(const Range& range) const;
    /// Whether a directory that is not one of the three ends with the stream, without the pointer to the next one: what is
    /// put behind it must not look like one.
    bool EndsWithoutPointer() const { return mEndsWithoutPointer; }

private:
    bool mEndsWithoutPointer = false;
    std::vector<Range> mRanges;        // by offset
    std::vector<std::uint64_t> mEnds;  // the furthest end of each range and those before it
};

}  // namespace zephmetadata::media
