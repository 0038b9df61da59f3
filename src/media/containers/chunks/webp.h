#pragma once

#include <string_view>

#include "media/containers/container.h"

/// WebP (RFC 9649): the packet stands in a chunk "XMP ", Exif in a chunk "EXIF". A file that has either needs a VP8X chunk,
/// which is made for one that was written without.
namespace zephmetadata::media {

bool IsWebP(std::string_view head);
const Container& WebPContainer();

}  // namespace zephmetadata::media
