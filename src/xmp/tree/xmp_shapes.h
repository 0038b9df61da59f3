#pragma once

#include "xmp/tree/xmp_tree.h"

/// Nodes of a shape that they should not have: files hold texts where arrays are due, alternatives where seqs are.
namespace zephmetadata::toolkit {

/// Has a tree as it was when the object was made, unless it is told that the change went well.
class TreeUndo {
public:
    explicit TreeUndo(XMPMetaHandle tree) : mTree(tree), mBefore(CloneTree(tree)) {}
    ~TreeUndo();
    TreeUndo(const TreeUndo&) = delete;
    TreeUndo& operator=(const TreeUndo&) = delete;

    XMPMetaHandle Before() const { return mBefore.get(); }
    void Keep() noexcept { mBefore.reset(); }

private:
    XMPMetaPtr mTree;
    XMPMetaPtr mBefore;
};

/// Whether a node of the kind that @p present tells can hold what one of the kind @p wanted can. Whether an alternative
/// is one of languages follows from its items.
bool HasShape(std::uint32_t present, std::uint32_t wanted);

/// Makes the node at @p path (in normal form) an empty one of the kind that @p options tell, at the same place in its
/// array. It keeps its qualifiers: an item of an alternative without its language makes a packet that cannot be read
/// back. Throws XMPError, with the tree as it was, for a path that stands for another property.
void Reshape(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t options);

/// Makes an item before @p index, or past the end, of the array at @p path (in normal form); also in an alternative of
/// languages, where the item then has none yet.
void InsertArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index,
                     std::string_view value, std::uint32_t options = 0);

}  // namespace zephmetadata::toolkit
