#pragma once

#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// HEIF (ISO/IEC 23008-12): HEIC, AVIF and what else is kept in items, images and sequences. Ask before film formats: the
/// brands tell, of which sequences have those of films too.
bool IsHeif(std::string_view head);
const Container& HeifContainer();

}  // namespace zephmetadata::media
