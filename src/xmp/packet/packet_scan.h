#pragma once

#include <string_view>

namespace zephmetadata::toolkit {

/// Whether WidenPacket could refuse or change a packet that the toolkit has parsed: a look at its tags, much cheaper
/// than reading it. True when in doubt; false for most packets of photos.
bool MayNeedWidening(std::string_view packet);

/// Whether an item may have the language "und"; character references aside.
bool MayNameUndetermined(std::string_view packet);

}  // namespace zephmetadata::toolkit
