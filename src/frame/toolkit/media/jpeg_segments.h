#pragma once

#include <string>
#include <vector>

namespace zephmetadata::toolkit {

/// The parts of the extended XMP of a JPEG file (XMP specification part 3, 1.1.3.1: packets over 64 KB are split), put
/// together, one packet for each identifier. Empty for other files and for files without any.
struct ExtendedPackets {
    std::vector<std::string> mTexts;
    bool mIsComplete = true;  ///< false when one is left out: parts of it overlap, are missing or lie outside of it
};
ExtendedPackets ExtendedJpegPackets(const std::string& nativePath);

/// Whether two JPEG files hold the same image: everything from the first scan to the end, byte for byte.
bool SameJpegImage(const std::string& left, const std::string& right);

}  // namespace zephmetadata::toolkit
