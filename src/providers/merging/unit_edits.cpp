#include "providers/merging/unit_edits.h"

#include <algorithm>

#include "providers/merging/array_edits.h"
#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"

namespace zephmetadata {

using toolkit::Node;
using toolkit::Place;

namespace {

bool IsQualifier(const Node& node) {
    return node.mPath.find("/?") != UTF8String::npos;
}

bool Holds(const PropertyUnit& unit, const Node& node) {
    return std::any_of(unit.mNodes.begin(), unit.mNodes.end(),
                       [&](const Node& own) { return toolkit::SameNode(own, node); });
}

void SetSimple(XMPMetaHandle source, const PropertyUnit& before, const PropertyUnit& after) {
    const Node& root = after.mNodes.front();
    const auto present = toolkit::GetProperty(source, root.mSchema, root.mPath);
    if (present && (present->mOptions & toolkit::kPropCompositeMask) != 0) {
        toolkit::DeleteProperty(source, root.mSchema, root.mPath);
    }
    toolkit::SetProperty(source, root.mSchema, root.mPath, root.mValue);
    EditQualifiers(source, before, after);
}

const toolkit::AlternativeItem* FindLanguage(const toolkit::Alternative& alternative, std::string_view language) {
    const auto found = std::find_if(
        alternative.mItems.begin(), alternative.mItems.end(),
        [&](const toolkit::AlternativeItem& item) { return toolkit::SameLanguage(item.mLanguage, language); });
    return found == alternative.mItems.end() ? nullptr : &*found;
}

bool IsItemMixed(const PropertyUnit& unit, const toolkit::Alternative& alternative,
                 const toolkit::AlternativeItem& item) {
    const auto index = static_cast<std::size_t>(&item - alternative.mItems.data()) + 1;
    return unit.mMixed || unit.mMixedItems.contains(toolkit::ItemPath(unit.Path(), index));
}

/// Sets and removes the languages that were, and no other.
void EditLanguages(XMPMetaHandle source, const UnitEdit& edit) {
    const PropertyUnits present = UnitsAt(source, edit.mPlace);
    const bool isAlike = !present.empty() && SameContent(present.begin()->second, *edit.mBefore);
    if (isAlike && !edit.mBefore->mMixed && edit.mBefore->mMixedItems.empty()) {
        ReplaceUnit(source, *edit.mAfter);
        return;
    }
    const toolkit::Alternative before = toolkit::Alternatives(edit.mBefore->mNodes).front();
    const toolkit::Alternative after = toolkit::Alternatives(edit.mAfter->mNodes).front();
    for (const toolkit::AlternativeItem& item : before.mItems) {
        if (FindLanguage(after, item.mLanguage) == nullptr) {
            toolkit::DeleteLocalizedText(source, edit.mPlace.mSchema, edit.mPlace.mPath, item.mLanguage);
        }
    }
    for (const toolkit::AlternativeItem& item : after.mItems) {
        const toolkit::AlternativeItem* const old = FindLanguage(before, item.mLanguage);
        const bool settled =
            old != nullptr && IsItemMixed(*edit.mBefore, before, *old) && !IsItemMixed(*edit.mAfter, after, item);
        if (old == nullptr || old->mValue != item.mValue || settled) {
            toolkit::SetLocalizedText(source, edit.mPlace.mSchema, edit.mPlace.mPath, {}, item.mLanguage, item.mValue);
        }
    }
}

}  // namespace

void RemoveUnit(XMPMetaHandle source, const Place& place) {
    toolkit::DeleteProperty(source, place.mSchema, place.mPath);
    UTF8String parent = place.mPath;
    for (std::size_t step = parent.rfind('/'); step != UTF8String::npos; step = parent.rfind('/')) {
        parent.resize(step);
        if (!toolkit::PropertyExists(source, place.mSchema, parent) ||
            !toolkit::Nodes(source, place.mSchema, parent, toolkit::Walk::kJustChildren).empty()) {
            return;
        }
        toolkit::DeleteProperty(source, place.mSchema, parent);
    }
}

void ReplaceUnit(XMPMetaHandle source, const PropertyUnit& unit) {
    toolkit::DeleteProperty(source, unit.mNodes.front().mSchema, unit.Path());
    CopyUnit(source, unit);
}

void EditQualifiers(XMPMetaHandle source, const PropertyUnit& before, const PropertyUnit& after) {
    for (const Node& node : before.mNodes) {
        if (IsQualifier(node) && !Holds(after, node)) {
            toolkit::DeleteProperty(source, node.mSchema, node.mPath);
        }
    }
    for (const Node& node : after.mNodes) {
        if (IsQualifier(node) && !Holds(before, node)) {
            toolkit::CopyNode(source, node, node.mPath);
        }
    }
}

void ApplyUnitEdit(XMPMetaHandle source, const UnitEdit& edit) {
    if (!edit.mAfter) {
        RemoveUnit(source, edit.mPlace);
        return;
    }
    const PropertyUnit& after = *edit.mAfter;
    if (after.IsStructure()) {
        // Its fields are edits of their own.
        const PropertyUnits present = UnitsAt(source, edit.mPlace);
        if (present.empty() || !present.begin()->second.IsStructure()) {
            ReplaceUnit(source, after);
        }
        return;
    }
    const bool isSameShape = edit.mBefore && edit.mBefore->IsArray() == after.IsArray() &&
                             edit.mBefore->IsLanguageAlternative() == after.IsLanguageAlternative();
    if (isSameShape && after.IsLanguageAlternative()) {
        EditLanguages(source, edit);
    } else if (isSameShape && after.IsArray() && after.mMixed) {
        EditItems(source, edit);
    } else if (isSameShape && after.IsArray() && edit.mBefore->mMixed) {
        SettleArray(source, edit);
    } else if (isSameShape && !after.IsArray()) {
        SetSimple(source, *edit.mBefore, after);
    } else {
        ReplaceUnit(source, after);
    }
}

}  // namespace zephmetadata
