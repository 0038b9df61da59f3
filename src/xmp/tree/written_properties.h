#pragma once

#include <memory>

#include "xmp/tree/place.h"
#include "xmp/tree/xmp_tree.h"

/// What a tree holds, property by property, in a form that can be compared. Walking a tree is what costs: what was walked
/// once can be kept.
namespace zephmetadata::toolkit {

/// A top-level property.
struct WrittenProperty {
    std::vector<Node> mNodes;  ///< in document order, itself first; never empty. Paths have their prefix
    bool mIsChanged = false;   ///< whether the toolkit would change it in writing the tree
    std::size_t mPosition =
        0;  ///< among those of its tree, in document order; means nothing for one that was asked for

    const UTF8String& Schema() const { return mNodes.front().mSchema; }
    const UTF8String& Path() const { return mNodes.front().mPath; }
    toolkit::Place Place() const { return {Schema(), Path()}; }

    /// Two that say the same: with the same nodes in a written packet, whatever the order of fields.
    friend bool operator==(const WrittenProperty& left, const WrittenProperty& right);
    // By namespace and path alone, as places are.
    friend bool operator<(const WrittenProperty& left, const WrittenProperty& right);
    friend bool operator<(const WrittenProperty& left, const toolkit::Place& right);
    friend bool operator<(const toolkit::Place& left, const WrittenProperty& right);
};

/// Those of a tree, in document order.
std::vector<WrittenProperty> WrittenProperties(XMPMetaHandle tree);
/// The one at @p place; absent where the tree holds none. Not for a name that stands for another property.
std::optional<WrittenProperty> WrittenPropertyAt(XMPMetaHandle tree, const Place& place);

/// Makes the property in a tree that lacks it.
void AddProperty(XMPMetaHandle tree, const WrittenProperty& property);

}  // namespace zephmetadata::toolkit
