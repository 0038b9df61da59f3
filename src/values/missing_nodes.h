#pragma once

#include "zephmetadata/paths.h"

/// What has to be made before a value can be set.
namespace zephmetadata {

/// Makes an empty item before @p index, counted from 0, of the array at @p path, or the array with that item. Throws
/// XMPError where the tree holds something else.
void InsertEmptyItem(XMPMetaHandle tree, const Path& path, int index);

/// The nodes that are missing on the way to a path. A write that fails must leave none of them.
class MissingNodes {
public:
    /// Throws XMPError when the path does not fit the tree.
    MissingNodes(XMPMetaHandle tree, const Path& path);
    /// Takes away what was made, unless it is kept.
    ~MissingNodes();
    MissingNodes(const MissingNodes&) = delete;
    MissingNodes& operator=(const MissingNodes&) = delete;

    /// Makes the items that are one past the end of their arrays, which the toolkit does not do on the way. Anything
    /// further away stays missing and is refused by the toolkit. Throws XMPError where an array is something else.
    void MakeItems();
    void Keep() { mTop.clear(); }

private:
    XMPMetaHandle mTree;
    const Path& mPath;
    UTF8String mTop;  ///< of the missing nodes the uppermost; empty for none
    bool mWasNative;
};

}  // namespace zephmetadata
