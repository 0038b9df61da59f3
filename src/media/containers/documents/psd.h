#pragma once

#include <string_view>

#include "media/containers/container.h"

/// Photoshop documents, PSD and PSB: metadata stand in the section of image resources.
namespace zephmetadata::media {

bool IsPSD(std::string_view head);
const Container& PSDContainer();

}  // namespace zephmetadata::media
