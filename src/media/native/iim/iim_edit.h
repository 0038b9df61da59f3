#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "media/native/mirror_change.h"

namespace zephmetadata::media {

/// The datasets after properties have changed; absent when they are damaged or cannot be made to say it. Changes of properties that IIM has no place
/// for, and those that say what the datasets say already (IIMAgrees), change nothing.
///
/// Every other dataset stays byte for byte and in its place; padding at the end goes. New datasets are written in the
/// character set of the stream. One that cannot hold them becomes UTF-8 as a whole, with all its texts and dataset 1:90,
/// provided that every text can be carried over. Where it cannot, an undeclared stream gets that one text in UTF-8, as
/// which it will be read, and one in Latin-1 question marks for what it cannot hold: the XMP has all of it. One in a
/// character set that is not known here takes texts beyond ASCII, and becomes UTF-8, only where all others are ASCII. A new
/// stream is in UTF-8.
std::optional<std::string> EditedIIM(std::string_view datasets, std::span<const MirrorChange> changes);

}  // namespace zephmetadata::media
