#pragma once

#include <map>
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
/// The same where the tree does not hold the property.
void AddValue(XMPMetaHandle tree, const NativeValue& value);

/// The property as a value; absent when the tree does not hold it. The value refers to @p schema and @p property, which
/// are to outlive it.
std::optional<NativeValue> ValueIn(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property);

/// What a tree held when this was made. Walking a tree is what costs: one that is compared several times is walked once.
class TreeContent {
public:
    TreeContent() = default;  ///< of a tree that holds nothing
    explicit TreeContent(XMPMetaHandle tree);

    /// The top-level properties in which the two differ, each once, in the order of their places; the path of each has its
    /// prefix.
    friend std::vector<toolkit::Place> ChangedProperties(const TreeContent& before, const TreeContent& after);

private:
    using Nodes = std::vector<toolkit::Node>;
    using Properties = std::map<toolkit::Place, std::vector<std::size_t>>;  ///< with the numbers of their nodes

    bool HoldsTheSame(const std::vector<std::size_t>& nodes, const TreeContent& other,
                      const std::vector<std::size_t>& otherNodes) const;

    Nodes mNodes;
    Properties mProperties;
};

std::vector<toolkit::Place> ChangedProperties(const TreeContent& before, const TreeContent& after);

/// Makes a property of one tree what it is in another, whether that holds it or not.
void CopyProperty(XMPMetaHandle from, XMPMetaHandle to, const toolkit::Place& property);

}  // namespace zephmetadata::media
