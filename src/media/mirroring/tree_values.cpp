#include "media/mirroring/tree_values.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>

namespace zephmetadata::media {

namespace {

using toolkit::Node;
using toolkit::Place;

struct FormRow {
    ValueForm mForm;
    std::uint32_t mOptions;
};

constexpr auto kArrayForms = std::to_array<FormRow>({
    {ValueForm::kBag, toolkit::kPropValueIsArray},
    {ValueForm::kSeq, toolkit::kPropValueIsArray | toolkit::kPropArrayIsOrdered},
});

/// A field may be an item of an array within the structure, "exif:Values[2]", which is made in its order.
void PutField(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& structure, const NativeItem& item) {
    const UTF8String path = structure + "/" + item.mName;
    const std::size_t bracket = path.rfind('[');
    if (bracket == UTF8String::npos) {
        toolkit::SetProperty(tree, schema, path, item.mText);
        return;
    }
    constexpr std::uint32_t kSeq = toolkit::kPropValueIsArray | toolkit::kPropArrayIsOrdered;
    const UTF8String array = path.substr(0, bracket);
    if (!toolkit::PropertyExists(tree, schema, structure)) {
        toolkit::SetProperty(tree, schema, structure, {}, toolkit::kPropValueIsStruct);
    }
    toolkit::AppendArrayItem(tree, schema, array, kSeq, item.mText);
}

ValueForm FormOf(std::uint32_t options) {
    if ((options & toolkit::kPropValueIsStruct) != 0) {
        return ValueForm::kStruct;
    }
    if ((options & toolkit::kPropArrayIsAlternate) != 0) {
        return ValueForm::kLangAlt;
    }
    if ((options & toolkit::kPropArrayIsOrdered) != 0) {
        return ValueForm::kSeq;
    }
    return (options & toolkit::kPropValueIsArray) != 0 ? ValueForm::kBag : ValueForm::kSimple;
}

bool IsQualifier(const Node& node) {
    return node.mPath.find('?') != UTF8String::npos;
}

std::vector<NativeItem> LanguageItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property) {
    std::vector<NativeItem> items;
    for (toolkit::LanguageText& text : toolkit::LanguageTexts(tree, schema, property)) {
        items.push_back({std::move(text.mLanguage), std::move(text.mText)});
    }
    return items;
}

/// The leaves below a property: the items of an array without names, the fields of a structure with their paths in it.
std::vector<NativeItem> Leaves(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property,
                               ValueForm form) {
    std::vector<NativeItem> items;
    for (Node& node : toolkit::Nodes(tree, schema, property, toolkit::Walk::kSubtree)) {
        if ((node.mOptions & toolkit::kPropCompositeMask) == 0 && !IsQualifier(node)) {
            const std::size_t step = node.mPath.find('/');
            const bool isField = form == ValueForm::kStruct && step != UTF8String::npos;
            items.push_back({isField ? node.mPath.substr(step + 1) : UTF8String(), std::move(node.mValue)});
        }
    }
    return items;
}

using Properties = std::map<Place, std::vector<const Node*>>;

Properties ByProperty(const std::vector<Node>& nodes) {
    Properties properties;
    for (const Node& node : nodes) {
        properties[{node.mSchema, node.mPath.substr(0, node.mPath.find_first_of("/["))}].push_back(&node);
    }
    return properties;
}

bool SameNodes(const std::vector<const Node*>& left, const std::vector<const Node*>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Node* l, const Node* r) { return toolkit::SameNode(*l, *r); });
}

}  // namespace

void PutValue(XMPMetaHandle tree, const NativeValue& value) {
    const UTF8String schema(value.mNamespace);
    const UTF8String property(value.mProperty);
    if (value.mForm == ValueForm::kLangAlt) {
        for (const NativeItem& item : value.mItems) {
            toolkit::SetLocalizedText(tree, schema, property, {}, item.mName, item.mText);
        }
        return;
    }
    toolkit::DeleteProperty(tree, schema, property);
    const auto* const array = std::find_if(kArrayForms.begin(), kArrayForms.end(),
                                           [&](const FormRow& candidate) { return candidate.mForm == value.mForm; });
    for (const NativeItem& item : value.mItems) {
        if (array != kArrayForms.end()) {
            toolkit::AppendArrayItem(tree, schema, property, array->mOptions, item.mText);
        } else if (value.mForm == ValueForm::kStruct) {
            PutField(tree, schema, property, item);
        } else {
            toolkit::SetProperty(tree, schema, property, item.mText);
        }
    }
}

std::optional<NativeValue> ValueIn(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& property) {
    const std::optional<toolkit::Property> found = toolkit::GetProperty(tree, schema, property);
    if (!found) {
        return std::nullopt;
    }
    NativeValue value{schema, property, FormOf(found->mOptions), {}};
    if (value.mForm == ValueForm::kSimple) {
        value.mItems.push_back({{}, found->mValue});
    } else if ((found->mOptions & toolkit::kPropArrayIsAltText) != 0) {
        value.mItems = LanguageItems(tree, schema, property);
    } else {
        value.mItems = Leaves(tree, schema, property, value.mForm);
    }
    return value;
}

std::vector<Place> ChangedProperties(XMPMetaHandle before, XMPMetaHandle after) {
    const std::vector<Node> oldNodes = toolkit::ComparableNodes(before);
    const std::vector<Node> newNodes = toolkit::ComparableNodes(after);
    const Properties oldOnes = ByProperty(oldNodes);
    const Properties newOnes = ByProperty(newNodes);
    std::vector<Place> changed;
    for (const auto& [place, nodes] : newOnes) {
        const auto old = oldOnes.find(place);
        if (old == oldOnes.end() || !SameNodes(old->second, nodes)) {
            changed.push_back(place);
        }
    }
    for (const auto& [place, nodes] : oldOnes) {
        if (!newOnes.contains(place)) {
            changed.push_back(place);
        }
    }
    return changed;
}

void CopyProperty(XMPMetaHandle from, XMPMetaHandle to, const Place& property) {
    if (!toolkit::DuplicateSubtree(from, to, property.mSchema, property.mPath)) {
        toolkit::DeleteProperty(to, property.mSchema, property.mPath);
    }
}

}  // namespace zephmetadata::media
