#pragma once

#include <set>

#include "xmp/tree/place.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

/// Whether a path, in normal form, is that of a property itself.
bool IsTopLevel(std::string_view path);

/// As IsNative, of a property that a walk came to.
bool IsNativeProperty(XMPMetaHandle tree, const Node& property);

/// Called at every change of what is at or below @p path, in normal form or not.
void ClearNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

/// Makes the top-level properties at @p places the marked ones and no others.
void SetNative(XMPMetaHandle tree, std::set<Place> places);

/// The marks at and below a path, and those of what the path is part of.
void CopyMarks(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema, const UTF8String& path);

}  // namespace zephmetadata::toolkit
