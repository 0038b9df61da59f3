#pragma once

#include <string_view>

#include "media/containers/container.h"

/// GIF (Graphics Interchange Format 89a). The packet stands in an application extension "XMP DataXMP", outside of
/// sub-blocks and followed by bytes that lead those who skip sub-blocks to its end; some writers cut it into sub-blocks.
namespace zephmetadata::media {

bool IsGif(std::string_view head);
const Container& GifContainer();

}  // namespace zephmetadata::media
