#pragma once

#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

/// Whether a path, in normal form, is that of a property itself.
bool IsTopLevel(std::string_view path);

/// As IsNative, of a property that a walk came to.
bool IsNativeProperty(XMPMetaHandle tree, const Node& property);

/// Called at every change of what is at or below @p path, in normal form or not.
void ClearNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

/// The marks at and below a path, and those of what the path is part of.
void CopyMarks(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema, const UTF8String& path);

}  // namespace zephmetadata::toolkit
