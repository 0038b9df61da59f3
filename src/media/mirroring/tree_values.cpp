#include "media/mirroring/tree_values.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"

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
        toolkit::CopyNode(tree, {schema, path, toolkit::CheckedValue(item.mText), 0}, path);
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

bool IsPlain(const NativeItem& item) {
    return std::all_of(item.mText.begin(), item.mText.end(), [](char c) { return c >= ' ' && c <= '~'; });
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

}  // namespace

TreeContent::TreeContent(XMPMetaHandle tree) {
    for (toolkit::WrittenProperty& property : toolkit::WrittenProperties(tree)) {
        mProperties.insert(std::make_shared<const toolkit::WrittenProperty>(std::move(property)));
    }
}

bool TreeContent::IsChangedByWriting() const {
    return std::any_of(mProperties.begin(), mProperties.end(),
                       [](const Property& property) { return property->mIsChanged; });
}

void TreeContent::Put(const Place& place, Property property) {
    if (const auto old = mProperties.find(place); old != mProperties.end()) {
        mProperties.erase(old);
    }
    if (property) {
        mProperties.insert(std::move(property));
    }
}

TreeContent::Property TreeContent::At(const Place& place) const {
    const auto found = mProperties.find(place);
    return found == mProperties.end() ? nullptr : *found;
}

TreeContent::Property PropertyAt(XMPMetaHandle tree, const Place& place) {
    std::optional<toolkit::WrittenProperty> held = toolkit::WrittenPropertyAt(tree, place);
    return held ? std::make_shared<const toolkit::WrittenProperty>(*std::move(held)) : nullptr;
}

XMPMetaPtr TreeContent::Tree() const {
    std::vector<const toolkit::WrittenProperty*> ordered;
    std::transform(mProperties.begin(), mProperties.end(), std::back_inserter(ordered),
                   [](const Property& property) { return property.get(); });
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const auto* left, const auto* right) { return left->mPosition < right->mPosition; });
    XMPMetaPtr tree = toolkit::NewTree();
    for (const toolkit::WrittenProperty* const property : ordered) {
        toolkit::AddProperty(tree.get(), *property);
    }
    return tree;
}

void PutValue(XMPMetaHandle tree, const NativeValue& value) {
    if (value.mForm != ValueForm::kLangAlt) {
        toolkit::DeleteProperty(tree, UTF8String(value.mNamespace), UTF8String(value.mProperty));
    }
    AddValue(tree, value);
}

void AddValue(XMPMetaHandle tree, const NativeValue& value) {
    const UTF8String schema(value.mNamespace);
    const UTF8String property(value.mProperty);
    const auto* const array = std::find_if(kArrayForms.begin(), kArrayForms.end(),
                                           [&](const FormRow& candidate) { return candidate.mForm == value.mForm; });
    if (array != kArrayForms.end() && !value.mItems.empty()) {
        toolkit::CopyNode(tree, {schema, property, {}, array->mOptions}, property);
    }
    for (const NativeItem& item : value.mItems) {
        if (value.mForm == ValueForm::kLangAlt) {
            toolkit::SetLocalizedText(tree, schema, property, {}, item.mName, item.mText);
        } else if (value.mForm == ValueForm::kStruct) {
            PutField(tree, schema, property, item);
        } else {
            const bool isItem = array != kArrayForms.end();
            toolkit::CopyNode(tree, {schema, property, toolkit::CheckedValue(item.mText), 0},
                              isItem ? toolkit::ItemPath(property, 1) : property);
        }
    }
}

std::optional<toolkit::WrittenProperty> PlainProperty(const NativeValue& value, const Place& place) {
    const auto* const array = std::find_if(kArrayForms.begin(), kArrayForms.end(),
                                           [&](const FormRow& candidate) { return candidate.mForm == value.mForm; });
    const bool isArray = array != kArrayForms.end();
    const bool isItself = place.mSchema == value.mNamespace && place.mPath.ends_with(value.mProperty);
    if ((!isArray && value.mForm != ValueForm::kSimple) || !isItself || value.mItems.empty() ||
        !std::all_of(value.mItems.begin(), value.mItems.end(), &IsPlain)) {
        return std::nullopt;
    }
    toolkit::WrittenProperty property;
    if (!isArray) {
        property.mNodes.push_back({place.mSchema, place.mPath, value.mItems.front().mText, 0});
        return property;
    }
    property.mNodes.push_back({place.mSchema, place.mPath, {}, array->mOptions});
    for (std::size_t i = 0; i < value.mItems.size(); ++i) {
        property.mNodes.push_back({place.mSchema, toolkit::ItemPath(place.mPath, i + 1), value.mItems[i].mText, 0});
    }
    return property;
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

std::vector<Place> ChangedProperties(const TreeContent& before, const TreeContent& after) {
    std::vector<Place> changed;
    auto old = before.mProperties.begin();
    auto now = after.mProperties.begin();
    while (old != before.mProperties.end() || now != after.mProperties.end()) {
        const bool isGone = now == after.mProperties.end() || (old != before.mProperties.end() && **old < **now);
        const bool isNew = old == before.mProperties.end() || (now != after.mProperties.end() && **now < **old);
        if (isGone) {
            changed.push_back((*old++)->Place());
        } else if (isNew) {
            changed.push_back((*now++)->Place());
        } else {
            if (*old != *now && !(**old == **now)) {
                changed.push_back((*now)->Place());
            }
            ++old;
            ++now;
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
