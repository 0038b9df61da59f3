#pragma once

#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// JPEG XL (ISO/IEC 18181-2), in boxes or as a bare codestream, which gets boxes when it gets metadata.
bool IsJpegXL(std::string_view head);
const Container& JpegXLContainer();

}  // namespace zephmetadata::media
