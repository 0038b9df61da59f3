#pragma once

#include <string>

#include "zephmetadata/types.h"

namespace zephmeta {

/// The small JPEG picture that a photo carries in its Exif or XMP metadata; empty when it has none.
std::string Thumbnail(const std::string& file, zephmetadata::XMPMetaHandle tree);

}  // namespace zephmeta
