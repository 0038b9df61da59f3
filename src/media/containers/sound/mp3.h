#pragma once

#include <string_view>

#include "media/containers/container.h"

/// MPEG audio with an ID3v2 tag (id3v2.3.0 and id3v2.4.0, informal standards of id3.org).
namespace zephmetadata::media {

bool IsMP3(std::string_view head);
const Container& MP3Container();

}  // namespace zephmetadata::media
