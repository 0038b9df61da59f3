#include "providers/merging/property_units.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "providers/merging/array_items.h"
#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"

namespace zephmetadata {

using toolkit::Node;
using toolkit::Place;

namespace {

bool IsStructureNode(const Node& node) {
    return (node.mOptions & toolkit::kPropValueIsStruct) != 0;
}

/// The path of the structure that holds @p path; empty for a top-level property.
UTF8String ParentPath(const UTF8String& path) {
    const std::size_t step = path.rfind('/');
    return step == UTF8String::npos ? UTF8String() : path.substr(0, step);
}

void ReadMarks(XMPMetaHandle tree, PropertyUnit& unit) {
    const auto isMixed = [&](const Node& node) { return toolkit::IsMixed(tree, node.mSchema, node.mPath); };
    unit.mMixed = isMixed(unit.mNodes.front());
    if (unit.mMixed) {
        return;
    }
    for (const Node& node : unit.mNodes) {
        if (node.mPath.ends_with(']') && isMixed(node)) {
            unit.mMixedItems.insert(node.mPath);
        }
    }
}

/// Splits nodes in document order into units.
PropertyUnits Split(XMPMetaHandle tree, std::vector<Node> nodes) {
    PropertyUnits units;
    for (auto node = nodes.begin(); node != nodes.end();) {
        auto end = std::next(node);
        if ((node->mOptions & toolkit::kSchemaNode) == 0) {
            if (!IsStructureNode(*node)) {
                end = std::find_if(end, nodes.end(),
                                   [&](const Node& next) { return !toolkit::IsAtOrBelow(next.mPath, node->mPath); });
            }
            Place place{node->mSchema, node->mPath};
            PropertyUnit unit{{std::make_move_iterator(node), std::make_move_iterator(end)}, false, {}};
            ReadMarks(tree, unit);
            units.emplace(std::move(place), std::move(unit));
        }
        node = end;
    }
    return units;
}

}  // namespace

bool PropertyUnit::IsStructure() const {
    return IsStructureNode(mNodes.front());
}

bool PropertyUnit::IsLanguageAlternative() const {
    const std::uint32_t options = mNodes.front().mOptions;
    const bool lostItsLast = (options & toolkit::kPropArrayIsAlternate) != 0 && mNodes.size() == 1;
    return lostItsLast || (options & toolkit::kPropArrayIsAltText) != 0;
}

bool PropertyUnit::IsArray() const {
    return (mNodes.front().mOptions & toolkit::kPropValueIsArray) != 0;
}

bool SameContent(const PropertyUnit& left, const PropertyUnit& right) {
    return std::equal(left.mNodes.begin(), left.mNodes.end(), right.mNodes.begin(), right.mNodes.end(),
                      &toolkit::SameNode);
}

PropertyUnits UnitsOf(XMPMetaHandle tree) {
    return Split(tree, toolkit::Nodes(tree, {}, {}, toolkit::Walk::kSubtree));
}

PropertyUnits UnitsAt(XMPMetaHandle tree, const Place& place) {
    const auto property = toolkit::GetProperty(tree, place.mSchema, place.mPath);
    if (!property) {
        return {};
    }
    std::vector<Node> nodes = toolkit::Nodes(tree, place.mSchema, place.mPath, toolkit::Walk::kSubtree);
    nodes.insert(nodes.begin(), {place.mSchema, place.mPath, property->mValue, property->mOptions});
    return Split(tree, std::move(nodes));
}

PropertyUnits UnitsAt(const PropertyUnits& units, const Place& place) {
    PropertyUnits found;
    for (auto unit = units.lower_bound(place);
         unit != units.end() && unit->first.mSchema == place.mSchema && unit->first.mPath.starts_with(place.mPath);
         ++unit) {
        if (toolkit::IsAtOrBelow(unit->first.mPath, place.mPath)) {
            found.insert(*unit);
        }
    }
    return found;
}

void CopyUnit(XMPMetaHandle tree, const PropertyUnit& unit) {
    for (const Node& node : unit.mNodes) {
        toolkit::CopyNode(tree, node, node.mPath);
    }
}

namespace {

/// Adds the languages that an alternative lacks, so that no text of any source is out of reach of an edit.
void AddLanguages(PropertyUnit& alternative, const PropertyUnit& other) {
    const UTF8String path = alternative.Path();
    const toolkit::Alternative own = toolkit::Alternatives(alternative.mNodes).front();
    std::unordered_set<UTF8String> languages;
    for (const toolkit::AlternativeItem& ownItem : own.mItems) {
        languages.insert(toolkit::LanguageKey(ownItem.mLanguage));
    }
    const toolkit::Alternative others = toolkit::Alternatives(other.mNodes).front();
    std::size_t count = own.mItems.size();
    std::size_t item = 0;  // of the other alternative, from 1
    bool isNew = false;
    for (const Node& node : other.mNodes) {
        const UTF8String next = toolkit::ItemPath(path, item + 1);
        if (node.mPath == next) {
            isNew = !languages.contains(toolkit::LanguageKey(others.mItems[item++].mLanguage));
            count += isNew ? 1 : 0;
        }
        if (isNew) {
            alternative.mNodes.push_back(node);
            alternative.mNodes.back().mPath.replace(0, toolkit::ItemPath(path, item).size(),
                                                    toolkit::ItemPath(path, count));
        }
    }
}

bool TryToCopy(XMPMetaHandle tree, const PropertyUnit& unit) {
    try {
        CopyUnit(tree, unit);
        return true;
    } catch (const XMPError&) {
        return false;
    }
}

}  // namespace

void TreeMerge::Add(XMPMetaHandle source) {
    PropertyUnits units = UnitsOf(source);
    ++mSources;
    for (auto& [place, unit] : units) {
        const auto [known, isNew] = mUnits.try_emplace(place, std::move(unit));
        if (!isNew) {
            PropertyUnit& merged = known->second;
            ++merged.mSources;
            // Where some hold no structure, the fields are missing there, which marks each of them.
            const bool differs = !merged.IsStructure() && !SameContent(merged, unit);
            merged.mMixed = merged.mMixed || unit.mMixed || !unit.mMixedItems.empty() || differs;
            if (merged.IsLanguageAlternative() && unit.IsLanguageAlternative()) {
                AddLanguages(merged, unit);
            }
        }
    }
}

XMPMetaPtr TreeMerge::MergedTree() {
    XMPMetaPtr tree = toolkit::NewTree();
    for (auto unit = mUnits.begin(); unit != mUnits.end();) {
        auto& [place, content] = *unit;
        const UTF8String parent = ParentPath(place.mPath);
        const auto holder = mUnits.find({place.mSchema, parent});
        // Where the sources disagree whether something is a structure, the first source's kind stands for all.
        const bool fits = parent.empty() || (holder != mUnits.end() && holder->second.IsStructure());
        if (!fits || !TryToCopy(tree.get(), content)) {
            unit = mUnits.erase(unit);
            continue;
        }
        const bool missesSomewhere = !content.IsStructure() && content.mSources != mSources;
        content.mMixed = content.mMixed || !content.mMixedItems.empty() || missesSomewhere;
        content.mMixedItems.clear();
        if (content.mMixed) {
            toolkit::MarkMixed(tree.get(), place.mSchema, place.mPath);
        }
        ++unit;
    }
    return tree;
}

}  // namespace zephmetadata
