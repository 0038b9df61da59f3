#pragma once

#include <string_view>

#include "media/containers/container.h"

/// Films and sound in ISO base media files (ISO/IEC 14496-12) and QuickTime files, and raw pictures of Canon's CR3 format.
namespace zephmetadata::media {

/// Whether a file begins like one of any kind; other formats of the same structure are asked first.
bool IsFilm(std::string_view head);
bool IsCR3(std::string_view head);

const Container& FilmContainer();
const Container& CR3Container();

}  // namespace zephmetadata::media
