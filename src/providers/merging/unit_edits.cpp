#include "providers/merging/unit_edits.h"

#include <unordered_set>

#include "providers/merging/array_edits.h"
#include "providers/merging/language_edits.h"
#include "xmp/tree/node_copy.h"

namespace zephmetadata {

using toolkit::Node;
using toolkit::Place;

namespace {

bool IsQualifier(const Node& node) {
    return node.mPath.find("/?") != UTF8String::npos;
}

std::unordered_set<UTF8String> QualifierKeys(const PropertyUnit& unit) {
    std::unordered_set<UTF8String> keys;
    for (const Node& node : unit.mNodes) {
        if (IsQualifier(node)) {
            keys.insert(KeyOf(node));
        }
    }
    return keys;
}

void SetSimple(XMPMetaHandle source, const UnitEdit& edit) {
    const Node& root = edit.mAfter->mNodes.front();
    const auto present = toolkit::GetProperty(source, root.mSchema, root.mPath);
    if (!present && !edit.mBefore) {
        CopyUnit(source, *edit.mAfter);
        return;
    }
    if (present && (present->mOptions & toolkit::kPropCompositeMask) != 0) {
        toolkit::DeleteProperty(source, root.mSchema, root.mPath);
    }
    toolkit::SetProperty(source, root.mSchema, root.mPath, root.mValue);
    EditQualifiers(source, edit.mBefore.value_or(PropertyUnit()), *edit.mAfter);
}

bool IsText(const PropertyUnit& unit) {
    return IsSimple(unit.mNodes.front());
}

/// Whether it is what it was, or new, so that a source may have something of its own there to be kept.
bool HasKeptItsShape(const UnitEdit& edit) {
    return !edit.mBefore || (edit.mBefore->IsArray() == edit.mAfter->IsArray() &&
                             edit.mBefore->IsStructure() == edit.mAfter->IsStructure() &&
                             edit.mBefore->IsLanguageAlternative() == edit.mAfter->IsLanguageAlternative());
}

/// Its fields are edits of their own.
void MakeStructure(XMPMetaHandle source, const UnitEdit& edit) {
    const auto present = toolkit::GetProperty(source, edit.mPlace.mSchema, edit.mPlace.mPath);
    if (!present || (present->mOptions & toolkit::kPropValueIsStruct) == 0) {
        ReplaceUnit(source, *edit.mAfter);
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

void PutItems(XMPMetaHandle source, const PropertyUnit& own, const std::vector<ArrayItem>& items) {
    const Place place{own.mNodes.front().mSchema, own.Path()};
    if (items.empty() && !own.mMixed) {
        RemoveUnit(source, place);
        return;
    }
    ReplaceUnit(source, WithItems(own, items));
    if (own.mMixed) {
        toolkit::MarkMixed(source, place.mSchema, place.mPath);
    }
}

void EditQualifiers(XMPMetaHandle source, const PropertyUnit& before, const PropertyUnit& after) {
    const std::unordered_set<UTF8String> old = QualifierKeys(before);
    const std::unordered_set<UTF8String> present = QualifierKeys(after);
    for (const Node& node : before.mNodes) {
        if (IsQualifier(node) && !present.contains(KeyOf(node))) {
            toolkit::DeleteProperty(source, node.mSchema, node.mPath);
        }
    }
    for (const Node& node : after.mNodes) {
        if (IsQualifier(node) && !old.contains(KeyOf(node))) {
            toolkit::CopyNode(source, node, node.mPath);
        }
    }
}

void ApplyUnitEdit(XMPMetaHandle source, const UnitEdit& edit) {
    if (!edit.mAfter || (IsText(*edit.mAfter) && edit.mAfter->mNodes.front().mValue.empty())) {
        RemoveUnit(source, edit.mPlace);
        return;
    }
    const PropertyUnit& after = *edit.mAfter;
    if (after.IsStructure()) {
        MakeStructure(source, edit);
    } else if (!HasKeptItsShape(edit)) {
        ReplaceUnit(source, after);
    } else if (after.IsLanguageAlternative()) {
        EditLanguages(source, edit);
    } else if (!after.IsArray()) {
        SetSimple(source, edit);
    } else if (edit.mBefore && edit.mBefore->mMixed && !after.mMixed) {
        SettleArray(source, edit);
    } else {
        EditItems(source, edit);
    }
}

}  // namespace zephmetadata
