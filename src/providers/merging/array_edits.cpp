#include "providers/merging/array_edits.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <set>
#include <unordered_map>

#include "providers/merging/array_items.h"
#include "providers/merging/unit_edits.h"

namespace zephmetadata {

namespace {

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
    std::unordered_map<UTF8String, std::deque<std::size_t>> unmatched;
    for (std::size_t i = 0; i < after.size(); ++i) {
        unmatched[KeyOf(after[i])].push_back(i);
    }
    std::vector<bool> isNew(after.size(), true);
    std::vector<std::size_t> gone;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto same = unmatched.find(KeyOf(before[i]));
        if (same == unmatched.end() || same->second.empty()) {
            gone.push_back(i);
        } else {
            isNew[same->second.front()] = false;
            same->second.pop_front();
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

/// The items of a source's own array, as edits of single items meet them.
class SourceItems {
public:
    explicit SourceItems(const PropertyUnit& unit)
        : mIsOrdered((unit.mNodes.front().mOptions & toolkit::kPropArrayIsOrdered) != 0) {
        for (ArrayItem& item : ItemsOf(unit)) {
            Append(std::move(item));
        }
    }

    /// False where there is no such item.
    bool Replace(const ArrayItem& old, const ArrayItem& item) {
        const auto index = Take(old);
        if (index) {
            mItems[*index] = item;
            mIndexes[KeyOf(item)].insert(*index);
        }
        return index.has_value();
    }

    bool Remove(const ArrayItem& item) {
        const auto index = Take(item);
        if (index) {
            mItems[*index].clear();
        }
        return index.has_value();
    }

    /// False for an unordered array that holds the item, which gains nothing from holding it twice.
    bool Add(const ArrayItem& item) {
        if (!mIsOrdered && mIndexes.contains(KeyOf(item))) {
            return false;
        }
        Append(item);
        return true;
    }

    std::vector<ArrayItem> Left() const {
        std::vector<ArrayItem> left;
        std::copy_if(mItems.begin(), mItems.end(), std::back_inserter(left),
                     [](const ArrayItem& item) { return !item.empty(); });
        return left;
    }

private:
    void Append(ArrayItem item) {
        mIndexes[KeyOf(item)].insert(mItems.size());
        mItems.push_back(std::move(item));
    }

    /// Forgets where the first such item stands.
    std::optional<std::size_t> Take(const ArrayItem& item) {
        const auto found = mIndexes.find(KeyOf(item));
        if (found == mIndexes.end()) {
            return std::nullopt;
        }
        const std::size_t index = *found->second.begin();
        found->second.erase(found->second.begin());
        if (found->second.empty()) {
            mIndexes.erase(found);
        }
        return index;
    }

    bool mIsOrdered;
    std::vector<ArrayItem> mItems;  // an empty one was removed
    std::unordered_map<UTF8String, std::set<std::size_t>> mIndexes;
};

/// Whether anything changed.
bool Apply(const ItemChanges& changes, bool wasCommon, SourceItems& items) {
    bool isChanged = false;
    for (const auto& [old, item] : changes.mReplaced) {
        // What all sources held is meant for all of them; of what only some held, the others have nothing to change.
        isChanged |= items.Replace(old, item) || (wasCommon && items.Add(item));
    }
    for (const ArrayItem& item : changes.mRemoved) {
        isChanged |= items.Remove(item);
    }
    for (const ArrayItem& item : changes.mAdded) {
        isChanged |= items.Add(item);
    }
    return isChanged;
}

}  // namespace

void EditItems(XMPMetaHandle source, const UnitEdit& edit) {
    const PropertyUnits present = UnitsAt(source, edit.mPlace);
    const PropertyUnit own =
        present.empty() ? PropertyUnit{{edit.mAfter->mNodes.front()}, false, {}} : present.begin()->second;
    if (!own.IsArray()) {
        throw XMPError(kOtherShape, "\"" + edit.mPlace.mPath + "\" is no array");
    }
    const std::vector<ArrayItem> after = ItemsOf(*edit.mAfter);
    const bool isAsBefore = !present.empty() && edit.mBefore && !own.mMixed && SameContent(own, *edit.mBefore);
    if (isAsBefore && !after.empty()) {
        ReplaceUnit(source, *edit.mAfter);  // in the order that the tree shows
        return;
    }
    const std::vector<ArrayItem> before = edit.mBefore ? ItemsOf(*edit.mBefore) : std::vector<ArrayItem>();
    const bool wasCommon = edit.mBefore && !edit.mBefore->mMixed;
    SourceItems items(own);
    if (Apply(Compare(before, after), wasCommon, items) || isAsBefore) {
        PutItems(source, own, items.Left());
    }
}

void SettleArray(XMPMetaHandle source, const UnitEdit& edit) {
    const PropertyUnit& after = *edit.mAfter;
    const std::vector<ArrayItem> items = ItemsOf(after);
    const auto present = toolkit::GetProperty(source, edit.mPlace.mSchema, edit.mPlace.mPath);
    const bool fits = present && (present->mOptions & toolkit::kPropValueIsArray) != 0;
    const auto isText = [](const ArrayItem& item) { return IsSimple(item.front()); };
    if (!fits || items.empty() || !std::all_of(items.begin(), items.end(), isText)) {
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
