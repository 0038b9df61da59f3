#pragma once

#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// JPEG 2000 (ISO/IEC 15444-1, 15444-2, 15444-6): JP2, JPX and JPM files, and bare codestreams, which cannot carry
/// metadata.
bool IsJpeg2000(std::string_view head);
const Container& Jpeg2000Container();

}  // namespace zephmetadata::media
