#include "zephmetadata/xmp_meta.h"

#include "xmp/tree/xmp_marks.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {

namespace {

NodeKind KindOf(std::uint32_t options) {
    if ((options & toolkit::kPropValueIsStruct) != 0) {
        return NodeKind::kNodeKind_Struct;
    }
    if ((options & toolkit::kPropArrayIsAltText) != 0) {
        return NodeKind::kNodeKind_AltText;
    }
    if ((options & toolkit::kPropArrayIsAlternate) != 0) {
        return NodeKind::kNodeKind_Alt;
    }
    if ((options & toolkit::kPropArrayIsOrdered) != 0) {
        return NodeKind::kNodeKind_Seq;
    }
    return (options & toolkit::kPropValueIsArray) != 0 ? NodeKind::kNodeKind_Bag : NodeKind::kNodeKind_Simple;
}

}  // namespace

XMPMetaPtr CreateXMPMeta() {
    return toolkit::IsRunning() ? toolkit::NewTree() : nullptr;
}

XMPMetaPtr ParseXMPMeta(const UTF8String& packet) {
    XMPMetaPtr tree = CreateXMPMeta();
    return tree && toolkit::ParsePacket(tree.get(), packet) ? tree : nullptr;
}

UTF8String SerializeXMPMeta(XMPMetaHandle tree) {
    try {
        return tree == nullptr ? UTF8String() : toolkit::SerializePacket(tree);
    } catch (const XMPError&) {
        return {};
    }
}

XMPMetaPtr CloneXMPMeta(XMPMetaHandle tree) {
    try {
        return tree == nullptr || !toolkit::IsRunning() ? nullptr : toolkit::CloneTree(tree);
    } catch (const XMPError&) {
        return nullptr;
    }
}

std::vector<XMPNode> XMPNodes(XMPMetaHandle tree) {
    std::vector<XMPNode> nodes;
    if (tree == nullptr) {
        return nodes;
    }
    bool isNative = false;
    for (toolkit::Node& node : toolkit::Nodes(tree, {}, {}, toolkit::Walk::kSubtree)) {
        if ((node.mOptions & toolkit::kSchemaNode) != 0) {
            continue;
        }
        // What is below a property comes right behind it.
        isNative = toolkit::IsTopLevel(node.mPath) ? toolkit::IsNativeProperty(tree, node) : isNative;
        nodes.push_back({std::move(node.mSchema), std::move(node.mPath), std::move(node.mValue), KindOf(node.mOptions),
                         (node.mOptions & toolkit::kPropIsQualifier) != 0, isNative});
    }
    return nodes;
}

}  // namespace zephmetadata
