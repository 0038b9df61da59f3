#pragma once

#include <string_view>

#include "media/containers/container.h"

/// TIFF 6.0 and BigTIFF, DNG among them. A write leaves all that the file refers to by offset where it is.
namespace zephmetadata::media {

/// By its signature alone: raw formats that have the same are to be asked for first (IsRawTiff).
bool IsTIFF(std::string_view head);
const Container& TIFFContainer();

}  // namespace zephmetadata::media
