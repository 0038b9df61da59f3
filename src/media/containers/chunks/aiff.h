#pragma once

#include <string_view>

#include "media/containers/container.h"

/// AIFF and AIFF-C (Audio Interchange File Format 1.3). The packet stands in an APPL chunk of the signature "XMP ".
namespace zephmetadata::media {

bool IsAiff(std::string_view head);
const Container& AiffContainer();

}  // namespace zephmetadata::media
