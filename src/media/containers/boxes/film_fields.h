#pragma once

#include <vector>

#include "media/containers/boxes/boxes.h"
#include "media/containers/container.h"

namespace zephmetadata::media {

/// What the boxes of a movie say of it as XMP properties: dates and duration of its header, copyright notices, and
/// what cameras say by keys.
/// @p movie is the movie box with all that is in it.
std::vector<NativeValue> FilmFields(const ByteSource& file, const BoxList& movie);

/// Where the chunks of all tracks begin.
std::vector<Range> ChunkReferences(const ByteSource& file, const BoxList& movie);

}  // namespace zephmetadata::media
