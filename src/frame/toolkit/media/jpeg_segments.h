#pragma once

#include <string>
#include <vector>

namespace zephmetadata::toolkit {

/// The parts of the extended XMP of a JPEG file (XMP specification part 3, 1.1.3.1: packets over 64 KB are split), put
/// together, one packet for each identifier. Parts that overlap, are missing or lie outside their packet make it left
/// out. Empty for other files and for files without any.
std::vector<std::string> ExtendedJpegPackets(const std::string& nativePath);

/// Whether two JPEG files hold the same image: everything from the first scan to the end, byte for byte.
bool SameJpegImage(const std::string& left, const std::string& right);

}  // namespace zephmetadata::toolkit
