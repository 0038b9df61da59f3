#include "providers/merging/array_edits.h"

#include <algorithm>

#include "providers/merging/unit_edits.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"

namespace zephmetadata {

using toolkit::Node;
using toolkit::Place;

namespace {

/// One item of an array: its nodes with paths relative to the item.
using ArrayItem = std::vector<Node>;

std::vector<ArrayItem> ItemsOf(const PropertyUnit& unit) {
    std::vector<ArrayItem> items;
    const std::size_t arrayLength = unit.Path().size();
    for (auto node = std::next(unit.mNodes.begin()); node != unit.mNodes.end(); ++node) {
        if (node->mPath[arrayLength] != '[') {
            continue;  // a qualifier of the array itself
        }
        const std::size_t itemLength = node->mPath.find(']', arrayLength) + 1;
        Node relative = *node;
        relative.mPath.erase(0, itemLength);
        if (relative.mPath.empty()) {
            items.emplace_back();
        }
        items.back().push_back(std::move(relative));
    }
    return items;
}

bool IsSimple(const ArrayItem& item) {
    return (item.front().mOptions & toolkit::kPropCompositeMask) == 0;
}

bool SameItem(const ArrayItem& left, const ArrayItem& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), &toolkit::SameNode);
}

std::size_t FindItem(const std::vector<ArrayItem>& items, const ArrayItem& wanted) {
    const auto found =
        std::find_if(items.begin(), items.end(), [&](const ArrayItem& item) { return SameItem(item, wanted); });
    return static_cast<std::size_t>(found - items.begin());
}

/// What turned one list of items into another.
struct ItemChanges {
    struct Replacement {
        ArrayItem mOld;
        ArrayItem mNew;
    };
    std::vector<Replacement> mReplaced;  // at their places
    std::vector<ArrayItem> mRemoved;
    std::vector<ArrayItem> mAdded;
};

ItemChanges Compare(const std::vector<ArrayItem>& before, const std::vector<ArrayItem>& after) {
    std::vector<bool> isNew(after.size(), true);
    std::vector<std::size_t> gone;
    std::size_t firstNew = 0;  // most items stand where they stood, so that most searches end where they begin
    for (std::size_t i = 0; i < before.size(); ++i) {
        while (firstNew < after.size() && !isNew[firstNew]) {
            ++firstNew;
        }
        std::size_t kept = firstNew;
        while (kept < after.size() && !(isNew[kept] && SameItem(before[i], after[kept]))) {
            ++kept;
        }
        if (kept < after.size()) {
            isNew[kept] = false;
        } else {
            gone.push_back(i);
        }
    }
    ItemChanges changes;
    for (const std::size_t i : gone) {
        if (i < after.size() && isNew[i]) {
            changes.mReplaced.push_back({before[i], after[i]});
            isNew[i] = false;
        } else {
            changes.mRemoved.push_back(before[i]);
        }
    }
    for (std::size_t i = 0; i < after.size(); ++i) {
        if (isNew[i]) {
            changes.mAdded.push_back(after[i]);
        }
    }
    return changes;
}

constexpr int kOtherShape = -102;  // what the toolkit answers for a path that does not fit a tree

/// The array of a source, as edits of single items meet it.
class SourceArray {
public:
    /// Makes the array, like @p model, where there is none.
    SourceArray(XMPMetaHandle source, const Place& place, const PropertyUnit& model) : mSource(source), mPlace(place) {
        PropertyUnits units = UnitsAt(source, place);
        if (units.empty()) {
            toolkit::CopyNode(source, model.mNodes.front(), place.mPath);
            units = UnitsAt(source, place);
        }
        mUnit = units.begin()->second;
        if (!mUnit.IsArray()) {
            throw XMPError(kOtherShape, "\"" + place.mPath + "\" is no array");
        }
        mItems = ItemsOf(mUnit);
        mIsOrdered = (mUnit.mNodes.front().mOptions & toolkit::kPropArrayIsOrdered) != 0;
    }

    const PropertyUnit& Unit() const { return mUnit; }

    /// Where there is no such item, the change has nothing to do with this source.
    void Replace(const ArrayItem& old, const ArrayItem& item) {
        const std::size_t index = FindItem(mItems, old);
        if (index == mItems.size()) {
            return;
        }
        if (IsSimple(old) && IsSimple(item)) {
            toolkit::SetProperty(mSource, mPlace.mSchema, PathOf(index), item.front().mValue);
            mItems[index] = item;
        } else {
            Remove(old);
            Add(item);
        }
    }

    void Remove(const ArrayItem& item) {
        const std::size_t index = FindItem(mItems, item);
        if (index < mItems.size()) {
            toolkit::DeleteProperty(mSource, mPlace.mSchema, PathOf(index));
            mItems.erase(mItems.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }

    void Add(const ArrayItem& item) {
        if (!mIsOrdered && FindItem(mItems, item) != mItems.size()) {
            return;  // an unordered list gains nothing from holding an item twice
        }
        mItems.push_back(item);
        for (const Node& node : item) {
            toolkit::CopyNode(mSource, node, PathOf(mItems.size() - 1) + node.mPath);
        }
    }

    bool IsEmpty() const { return mItems.empty(); }

private:
    UTF8String PathOf(std::size_t index) const { return toolkit::ItemPath(mPlace.mPath, index + 1); }

    XMPMetaHandle mSource;
    const Place& mPlace;
    PropertyUnit mUnit;
    std::vector<ArrayItem> mItems;
    bool mIsOrdered = false;
};

}  // namespace

void EditItems(XMPMetaHandle source, const UnitEdit& edit) {
    const ItemChanges changes = Compare(ItemsOf(*edit.mBefore), ItemsOf(*edit.mAfter));
    SourceArray array(source, edit.mPlace, *edit.mAfter);
    const bool hasItems = !ItemsOf(*edit.mAfter).empty();
    if (hasItems && !array.Unit().mMixed && SameContent(array.Unit(), *edit.mBefore)) {
        ReplaceUnit(source, *edit.mAfter);  // in the order that the tree shows
        return;
    }
    for (const auto& [old, item] : changes.mReplaced) {
        array.Replace(old, item);
    }
    for (const ArrayItem& item : changes.mRemoved) {
        array.Remove(item);
    }
    for (const ArrayItem& item : changes.mAdded) {
        array.Add(item);
    }
    if (array.IsEmpty()) {
        RemoveUnit(source, edit.mPlace);
    }
}

void SettleArray(XMPMetaHandle source, const UnitEdit& edit) {
    const PropertyUnit& after = *edit.mAfter;
    const std::vector<ArrayItem> items = ItemsOf(after);
    const auto present = toolkit::GetProperty(source, edit.mPlace.mSchema, edit.mPlace.mPath);
    const bool fits = present && (present->mOptions & toolkit::kPropValueIsArray) != 0;
    if (!fits || items.empty() || !std::all_of(items.begin(), items.end(), IsSimple)) {
        ReplaceUnit(source, after);
        return;
    }
    std::vector<UTF8String> texts;
    texts.reserve(items.size());
    for (const ArrayItem& item : items) {
        texts.push_back(item.front().mValue);
    }
    const std::uint32_t form = after.mNodes.front().mOptions & toolkit::kPropCompositeMask;
    toolkit::SeparateArrayItems(source, edit.mPlace.mSchema, edit.mPlace.mPath, form, toolkit::JoinItems(texts));
    EditQualifiers(source, *edit.mBefore, after);
}

}  // namespace zephmetadata
