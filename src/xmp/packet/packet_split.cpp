#include <algorithm>
#include <set>
#include <tuple>

#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_aliases.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_tree.h"

/// Extended XMP (XMP specification, part 3, JPEG): what does not fit into the one segment of the packet goes into
/// a second packet, to which the first one refers.
namespace zephmetadata::toolkit {
namespace {

const UTF8String kNoteNamespace = "http://ns.adobe.com/xmp/note/";
const UTF8String kReference = "HasExtendedXMP";

struct TopProperty {
    Place mPlace;
    std::size_t mSize = 0;   ///< in bytes, about what it takes in a packet
    bool mIsWanted = false;  ///< where programs look that read the first packet alone
};

bool IsWantedFirst(const UTF8String& schema) {
    return schema == "http://purl.org/dc/elements/1.1/" || schema == "http://ns.adobe.com/xap/1.0/mm/";
}

/// In the order in which they are to leave the first packet.
std::vector<TopProperty> TopProperties(XMPMetaHandle tree) {
    constexpr std::size_t kMarkup = 30;  // tags and indentation of one node
    std::vector<TopProperty> properties;
    for (const Node& node : Nodes(tree, {}, {}, Walk::kSubtree)) {
        if ((node.mOptions & kSchemaNode) != 0) {
            continue;
        }
        const std::size_t step = node.mPath.find_first_of("/[");
        if (step == UTF8String::npos) {
            properties.push_back({{node.mSchema, node.mPath}, 0, IsWantedFirst(node.mSchema)});
        }
        properties.back().mSize += node.mValue.size() + kMarkup;
    }
    std::stable_sort(properties.begin(), properties.end(), [](const TopProperty& left, const TopProperty& right) {
        return std::tuple(left.mIsWanted, right.mSize) < std::tuple(right.mIsWanted, left.mSize);
    });
    return properties;
}

void MoveProperty(XMPMetaHandle from, XMPMetaHandle to, const Place& place) {
    DuplicateSubtree(from, to, place.mSchema, place.mPath);
    DeleteProperty(from, place.mSchema, place.mPath);
}

void DropReference(XMPMetaHandle tree) {
    RegisterNamespace(kNoteNamespace, "xmpNote");
    DeleteProperty(tree, kNoteNamespace, kReference);
}

}  // namespace

SplitPacket SerializeSplit(XMPMetaHandle tree, std::size_t maxMainBytes,
                           const std::function<UTF8String(std::string_view extended)>& identifierOf, bool isChanged) {
    RegisterNamespace(kNoteNamespace, "xmpNote");
    const bool hasReference = PropertyExists(tree, kNoteNamespace, kReference);
    XMPMetaPtr main = hasReference ? CloneTree(tree) : XMPMetaPtr(tree);
    DropReference(main.get());
    SplitPacket packet{SerializeUnchecked(main.get(), isChanged), {}};
    if (packet.mMain.size() <= maxMainBytes) {
        return packet;
    }
    main = hasReference ? main : CloneTree(tree);
    const XMPMetaPtr extended = NewTree();
    extended->mAbout = tree->mAbout;
    extended->mAliases = main->mAliases;  // each goes where what it is taken for goes
    const std::vector<TopProperty> properties = TopProperties(main.get());
    for (auto next = properties.begin(); packet.mMain.size() > maxMainBytes;) {
        if (next == properties.end()) {
            ThrowError(XMPErr_BadSerialize, "packet of " + std::to_string(maxMainBytes) + " bytes");
        }
        for (std::size_t left = packet.mMain.size(); next != properties.end() && left > maxMainBytes; ++next) {
            left -= std::min(left, next->mSize);
            MoveProperty(main.get(), extended.get(), next->mPlace);
        }
        packet.mExtended = SerializeUnchecked(extended.get(), isChanged);
        SetProperty(main.get(), kNoteNamespace, kReference, identifierOf(packet.mExtended));
        packet.mMain = SerializeUnchecked(main.get(), isChanged);
    }
    return packet;
}

bool MergeExtended(XMPMetaHandle tree, const std::vector<std::string>& packets) {
    std::vector<XMPMetaPtr> parts;
    for (const std::string& packet : packets) {
        parts.push_back(NewTree());
        if (!ParsePacket(parts.back().get(), packet)) {
            return false;
        }
    }
    for (const XMPMetaPtr& part : parts) {
        tree->mAbout = tree->mAbout.empty() ? part->mAbout : tree->mAbout;
        std::set<Place> taken;
        for (const TopProperty& property : TopProperties(part.get())) {
            const auto& [schema, path] = property.mPlace;
            if (!PropertyExists(tree, schema, path)) {
                DuplicateSubtree(part.get(), tree, schema, path);
                taken.insert(property.mPlace);
            }
        }
        MergeAliases(tree, part.get(), taken);
    }
    DropReference(tree);
    return true;
}

}  // namespace zephmetadata::toolkit
