#pragma once

#include <vector>

#include "zephmetadata/types.h"

/// What was probably meant by a name that is not known, for messages to people. Nothing here changes or throws anything.
namespace zephmetadata {

/// The one of @p known that a mistyped @p word most likely stands for, whatever the letter case; of several as near the
/// first, and empty when none is near. Cost: linear in @p known.
ZEPHMETADATA_EXPORT UTF8String NearestName(const UTF8String& word, const std::vector<UTF8String>& known);

/// The expression (paths.h) that a mistyped one most likely stands for: "dc:title" for "dc:titel", "cd:title" and "title",
/// which may be the label of the property as well, and "tiff:Model" for "exif:Model", whose name is known elsewhere. What
/// is below the property stays as it is. Empty when the property is defined, and when nothing is near. Cost: linear in
/// the registered properties.
ZEPHMETADATA_EXPORT UTF8String NearestExpression(const UTF8String& expression);

}  // namespace zephmetadata
