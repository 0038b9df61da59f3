#pragma once

#include <string_view>

#include "media/containers/container.h"

/// AVI (with OpenDML parts) and WAVE (with RF64 and BW64). The packet stands in a chunk "_PMX" beside the film or the sound,
/// neither of which is ever moved.
namespace zephmetadata::media {

bool IsRiff(std::string_view head);
const Container& RiffContainer();

}  // namespace zephmetadata::media
