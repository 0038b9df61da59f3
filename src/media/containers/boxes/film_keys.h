#pragma once

#include <string_view>
#include <vector>

#include "media/native/native_value.h"

namespace zephmetadata::media {

/// What cameras and telephones say in a movie's metadata by keys: when and where it was shot, and by what. @p meta is the
/// contents of the metadata box in the movie box, or empty; @p location those of the older box of the position.
std::vector<NativeValue> FilmKeys(std::string_view meta, std::string_view location);

}  // namespace zephmetadata::media
