#include "xmp/tree/xmp_template.h"

#include <algorithm>
#include <set>

#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

/// As in "dc:title".
using TopProperty = Place;

/// The external top-level properties of a tree. Of a merged tree, a property may be marked that the tree does not hold.
struct TopProperties {
    std::set<TopProperty> mHeld;
    std::set<TopProperty> mMixed;  ///< those that are marked, or hold what is

    bool Contains(const TopProperty& property) const { return mHeld.contains(property) || mMixed.contains(property); }
};

TopProperties ExternalProperties(XMPMetaHandle tree, const IsInternalProperty& isInternal) {
    TopProperties properties;
    const auto insert = [&](std::set<TopProperty>& into, const UTF8String& schema, const UTF8String& path) {
        const std::size_t prefixEnd = path.find(':');
        if (!isInternal(schema, path.substr(prefixEnd + 1))) {
            into.insert({schema, path});
        }
    };
    for (const Node& schema : Nodes(tree, {}, {}, Walk::kJustChildren)) {
        for (const Node& node : Nodes(tree, schema.mSchema, {}, Walk::kJustChildren)) {
            insert(properties.mHeld, node.mSchema, node.mPath);
        }
    }
    for (const Place& mark : tree->mMixed) {
        insert(properties.mMixed, mark.mSchema, mark.mPath.substr(0, mark.mPath.find_first_of("/[")));
    }
    return properties;
}

void ClearUnnamed(XMPMetaHandle destination, const TopProperties& present, const TopProperties& named) {
    for (const std::set<TopProperty>* const properties : {&present.mHeld, &present.mMixed}) {
        for (const TopProperty& property : *properties) {
            if (!named.Contains(property)) {
                DeleteProperty(destination, property.mSchema, property.mPath);
                ClearMixed(destination, property.mSchema, property.mPath);
            }
        }
    }
}

}  // namespace

void ApplyTemplate(XMPMetaHandle destination, XMPMetaHandle source, std::uint32_t flags,
                   const IsInternalProperty& isInternal) {
    const TopProperties present = ExternalProperties(destination, isInternal);
    const TopProperties named = ExternalProperties(source, isInternal);
    if ((flags & kTemplateClearUnnamedProperties) != 0) {
        ClearUnnamed(destination, present, named);
    }
    const bool replace = (flags & kTemplateReplaceExistingProperties) != 0;
    const bool add = replace || (flags & kTemplateAddNewProperties) != 0;
    for (const TopProperty& property : named.mHeld) {
        if (!named.mMixed.contains(property) && (present.Contains(property) ? replace : add)) {
            DuplicateSubtree(source, destination, property.mSchema, property.mPath);
        }
    }
}

}  // namespace zephmetadata::toolkit
