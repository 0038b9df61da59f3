#pragma once

#include <cstdint>
#include <vector>

#include "zephmetadata/types.h"

/// XMP trees without the toolkit: make, read, write, walk.
namespace zephmetadata {

/// An empty tree.
ZEPHMETADATA_EXPORT XMPMetaPtr CreateXMPMeta();
/// The tree of an XMP packet (RDF/XML, ISO 16684-1), or null when @p packet is none.
ZEPHMETADATA_EXPORT XMPMetaPtr ParseXMPMeta(const UTF8String& packet);
/// A full packet in UTF-8, with wrapper and padding. Empty for a null tree and for one that no packet can hold, such as
/// one read from a packet whose namespace URIs the toolkit does not write back.
ZEPHMETADATA_EXPORT UTF8String SerializeXMPMeta(XMPMetaHandle tree);

/// A tree of its own with the same content; null for a null tree, and when there is no such tree to be made.
ZEPHMETADATA_EXPORT XMPMetaPtr CloneXMPMeta(XMPMetaHandle tree);

/// What a node of a tree holds.
enum NodeKind : std::int32_t {
    kNodeKind_Simple,
    kNodeKind_Struct,
    kNodeKind_Bag,
    kNodeKind_Seq,
    kNodeKind_Alt,
    kNodeKind_AltText
};

struct XMPNode {
    UTF8String mNamespace;  ///< of the schema
    UTF8String mPath;       ///< the expression with prefixes, as in "dc:title[1]/?xml:lang"
    UTF8String mValue;      ///< of a simple node
    NodeKind mKind = NodeKind::kNodeKind_Simple;
    bool mIsQualifier = false;
    bool mIsNative = false;  ///< of a property that was read from native metadata (OriginOf)
};

/// All nodes in document order, a node before what is below it. Cost: linear in the tree.
ZEPHMETADATA_EXPORT std::vector<XMPNode> XMPNodes(XMPMetaHandle tree);

}  // namespace zephmetadata
