#pragma once

#include <optional>
#include <vector>

#include "media/native/native_value.h"
#include "xmp/tree/place.h"
#include "xmp/tree/xmp_tree.h"

/// Between trees and the values that native metadata has.
namespace zephmetadata::media {

/// Makes the property what the value says, in place of what was there. Of an alternative that is there only the given
/// languages change. Throws XMPError when the toolkit refuses.
void PutValue(XMPMetaHandle tree, const NativeValue& value);

/// The property as a value; absent when the tree does not hold it. The value refers to @p schema and @p property, which
/// are to outlive it.
std::optional<NativeValue> ValueIn(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property);

/// The top-level properties in which two trees differ, each once; the path of each has its prefix.
std::vector<toolkit::Place> ChangedProperties(XMPMetaHandle before, XMPMetaHandle after);

/// Makes a property of one tree what it is in another, whether that holds it or not.
void CopyProperty(XMPMetaHandle from, XMPMetaHandle to, const toolkit::Place& property);

}  // namespace zephmetadata::media
