#pragma once

#include <string_view>

#include "media/containers/container.h"

/// PNG (ISO/IEC 15948) and animated PNG. The packet stands in an iTXt chunk "XML:com.adobe.xmp", Exif in an eXIf chunk.
/// Older writers left blocks as hexadecimal texts ("Raw profile type ..."); these are read, and when such a block changes it
/// goes into its proper chunk. IIM datasets, which have no chunk of their own, are only read.
namespace zephmetadata::media {

bool IsPng(std::string_view head);
const Container& PngContainer();

}  // namespace zephmetadata::media
