#pragma once

#include <cstdint>
#include <string>

namespace zephmetadata::toolkit {

/// What the library knows of a media format beyond what the toolkit does.
struct MediaFormat {
    std::uint32_t mCode;  ///< the toolkit's four-letter code
    bool mCanWrite;       ///< a packet written by the toolkit reads back and leaves a sound file
    bool (*mPrepare)(const std::string& workingCopy);                         ///< before writing; may be null
    bool (*mSameImage)(const std::string& before, const std::string& after);  ///< may be null
};

/// The row of a format; null for one that the library does not know, which is read only.
const MediaFormat* FindMediaFormat(std::uint32_t code);

/// Whether the file at a native path begins like a medium that the toolkit cannot open as such but that carries XMP: HEIF and AVIF, JPEG 2000,
/// JPEG XL. A packet in it is found by looking for it; it cannot be written.
bool IsReadOnlyMedium(const std::string& nativePath);

}  // namespace zephmetadata::toolkit
