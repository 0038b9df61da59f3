#include "xmp/tree/xmp_tree.h"

#include <algorithm>
#include <memory>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_about.h"
#include "xmp/packet/packet_scan.h"
#include "xmp/packet/packet_text.h"
#include "xmp/tree/node_copy.h"
#include "xmp/tree/written_properties.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

TreeHandle NewNative() {
    if (!IsRunning()) {
        ThrowError(XMPErr_BadObject, "new tree");
    }
    TreeHandle tree(xmp_new_empty());
    if (!tree) {
        ThrowToolkitError("new tree");
    }
    return tree;
}

/// For packets that the toolkit does not read as they are meant; the tree is empty when there is no other way.
bool ParseOtherwise(XMPMetaHandle tree, std::string_view text, const UTF8String& about) {
    tree->mTree = NewNative();
    try {
        if (ParseByNames(tree, text)) {
            tree->mAliases = AliasesOf(tree, text);
            tree->mAbout = about;
            return true;
        }
    } catch (const XMPError&) {
        // as little to be read in this way
    }
    tree->mTree = NewNative();
    tree->mAbout.clear();
    return false;
}

void CopyWhatIsNoNode(XMPMetaHandle from, XMPMetaHandle to) {
    to->mAbout = from->mAbout;
    to->mAliases = from->mAliases;
    to->mMixed = from->mMixed;
    to->mNative = from->mNative;
}

/// @p isCopied tells whether the tree itself would not stay as it is, or is not what goes into the packet.
UTF8String Serialized(XMPMetaHandle tree, PacketForm form, bool isCopied) {
    const XMPMetaPtr wide = isCopied ? CloneTree(tree) : tree;
    if (tree->mAliases) {
        PutAliases(*tree->mAliases, wide.get());
    }
    if (isCopied) {
        WidenTree(wide.get());
    }
    const QuietToolkit quiet;
    const ToolkitString written;
    const std::uint32_t options =
        form == PacketForm::kBareRDF ? XMP_SERIAL_OMITPACKETWRAPPER | XMP_SERIAL_USECOMPACTFORMAT : 0U;
    if (!xmp_serialize(Native(wide.get()), written.Get(), options, 0)) {
        ThrowToolkitError("packet");
    }
    UTF8String packet = written.Text();
    if (form == PacketForm::kBareRDF) {
        packet.resize(packet.find_last_of('>') + 1);
    }
    if (tree->mAliases) {
        NameAliases(packet);
    }
    PutAbout(packet, tree->mAbout);
    return packet;
}

}  // namespace

XMPMetaPtr NewTree() {
    return {std::make_unique<XMPMeta>(NewNative()).release()};
}

bool ParsePacket(XMPMetaHandle tree, std::string_view packet) {
    Native(tree);
    TreeHandle parsed = NewNative();
    tree->mMixed.clear();
    tree->mNative.clear();
    tree->mJournal = nullptr;
    tree->mAbout.clear();
    tree->mAliases = nullptr;
    tree->mTree = NewNative();
    const bool isUsual = !MayNeedWidening(packet);
    UTF8String about;
    UTF8String widened;
    try {
        widened = isUsual ? UTF8String() : WidenPacket(packet, &about);
        const std::string_view text = isUsual ? packet : widened;
        const QuietToolkit quiet;
        if (!xmp_parse(parsed.get(), text.data(), text.size())) {
            return ParseOtherwise(tree, text, about);
        }
        tree->mTree = std::move(parsed);
        tree->mAbout = about;
        MendAlternatives(tree, text);
    } catch (const XMPError&) {
        tree->mTree = NewNative();
        return false;
    }
    const std::string_view text = isUsual ? packet : widened;
    try {
        tree->mAliases = AliasesOf(tree, text);
        return true;
    } catch (const XMPError&) {
        return ParseOtherwise(tree, text, about);
    }
}

UTF8String SerializePacket(XMPMetaHandle tree, PacketForm form) {
    UTF8String packet = Serialized(tree, form, tree->mAliases || IsChangedByWriting(tree));
    CheckPacket(packet);
    return packet;
}

UTF8String SerializeUnchecked(XMPMetaHandle tree, bool isChanged) {
    return Serialized(tree, PacketForm::kBareRDF, tree->mAliases || (isChanged && IsChangedByWriting(tree)));
}

XMPMetaPtr CloneTree(XMPMetaHandle tree) {
    XMPMetaPtr clone = NewTree();
    for (const Node& node : Nodes(tree, {}, {}, Walk::kSubtree)) {
        if ((node.mOptions & kSchemaNode) == 0) {
            CopyNode(clone.get(), node, node.mPath);
        }
    }
    CopyWhatIsNoNode(tree, clone.get());
    return clone;
}

XMPMetaPtr ClonePart(XMPMetaHandle tree, const std::set<Place>& places) {
    XMPMetaPtr part = NewTree();
    for (const Place& place : places) {
        if (const std::optional<WrittenProperty> property = WrittenPropertyAt(tree, place)) {
            AddProperty(part.get(), *property);
        }
    }
    CopyWhatIsNoNode(tree, part.get());
    return part;
}

void CopyAbout(XMPMetaHandle from, XMPMetaHandle to) {
    to->mAbout = from->mAbout;
}

std::uint32_t KindOf(const Node& node) {
    return node.mOptions & ((kPropCompositeMask & ~kPropArrayIsAltText) | XMP_PROP_VALUE_IS_URI);
}

bool SameNode(const Node& left, const Node& right) {
    return left.mSchema == right.mSchema && left.mPath == right.mPath && left.mValue == right.mValue &&
           KindOf(left) == KindOf(right);
}

bool TreesEqual(XMPMetaHandle left, XMPMetaHandle right) {
    std::vector<WrittenProperty> leftProperties = WrittenProperties(left);
    std::vector<WrittenProperty> rightProperties = WrittenProperties(right);
    std::sort(leftProperties.begin(), leftProperties.end());
    std::sort(rightProperties.begin(), rightProperties.end());
    return left->mAbout == right->mAbout && leftProperties == rightProperties;
}

}  // namespace zephmetadata::toolkit
