#pragma once

#include <map>

#include "zephmetadata/values.h"

namespace zephmetadata {

/// Makes the text of a display-only property from other properties of the tree.
using Constructor = bool (*)(XMPMetaHandle tree, UTF8String& value, GetValueResult* result);

/// The properties of the aggregate schema, which no file holds, with their constructors.
std::map<Path, Constructor> AggregateConstructors();

}  // namespace zephmetadata
