#pragma once

#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

/// Makes @p node, without what is below it, at @p path of a tree that has its parent and has nothing at @p path. An
/// item of an array is appended, whatever its number.
void CopyNode(XMPMetaHandle destination, const Node& node, const UTF8String& path);

}  // namespace zephmetadata::toolkit
