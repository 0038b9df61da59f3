#include "media/containers/boxes/item_table_edit.h"

#include <algorithm>
#include <set>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr std::uint32_t kMaxShortNumber = 0xFFFF;

bool Fits(std::uint64_t value, std::size_t bytes) {
    return bytes >= 8 || value >> (8 * bytes) == 0;
}

std::string InfoBox(const NewItem& item) {
    // Version 2 is what all readers know; its numbers have 16 bits.
    std::string contents = NumberBytes(item.mItem, 2) + NumberBytes(0, 2);
    contents += item.mIsXMP ? "mime" : "Exif";
    contents += '\0';
    if (item.mIsXMP) {
        contents.append("application/rdf+xml").push_back('\0');
    }
    return FullBoxBytes("infe", {2, 0}, contents);
}

/// Whether the range stays in one piece.
std::optional<std::uint64_t> PlaceOf(const Plan& plan, const Range& range) {
    const std::optional<std::uint64_t> place = PlaceOf(plan, range.mOffset);
    if (!place || range.mSize == 0) {
        return place;
    }
    for (const Replacement& replacement : plan.Replacements()) {
        const Range& other = replacement.mRange;
        const bool isInside = other.mOffset < range.End() && range.mOffset < other.End();
        const bool isInserted = other.mSize == 0 && other.mOffset > range.mOffset && other.mOffset < range.End();
        const bool isInPlace = replacement.mTouch == Touch::kBlock && replacement.mBytes.size() == other.mSize;
        if (isInserted || (isInside && other.mSize > 0 && !isInPlace)) {
            return std::nullopt;
        }
    }
    return place;
}

class TableEditor {
public:
    TableEditor(const ByteSource& file, const ItemTable& table, const ItemTableEdit& edit, Plan& plan)
        : mFile(file), mTable(table), mEdit(edit), mPlan(plan) {}

    std::optional<std::uint64_t> Edit() {
        if (!ListItems() || !Refer()) {
            return std::nullopt;
        }
        Locate();
        if (!mNewBoxes.empty()) {
            mPlan.Insert(mTable.mTree.mRest.mOffset, mNewBoxes, Touch::kBlock);
        }
        mGrowth += static_cast<std::int64_t>(mNewBoxes.size());
        const std::uint64_t size = Grown(mTable.mMeta, mGrowth);
        const bool isSame = size == mTable.mMeta.mWhole.mSize;
        return isSame || ResizeBox(mPlan, mTable.mMeta, size) ? std::optional(size) : std::nullopt;
    }

private:
    static std::uint64_t Grown(const Box& box, std::int64_t growth) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(box.mWhole.mSize) + growth);
    }

    bool IsRemoved(std::uint32_t item) const {
        return std::find(mEdit.mRemoved.begin(), mEdit.mRemoved.end(), item) != mEdit.mRemoved.end();
    }

    /// Resizes a box in the table.
    bool Grow(const Box& box, std::int64_t growth) {
        mGrowth += growth;
        return growth == 0 || ResizeBox(mPlan, box, Grown(box, growth));
    }

    bool ListItems() {
        std::string added;
        for (const NewItem& item : mEdit.mAdded) {
            added += InfoBox(item);
        }
        const Box* const list = mTable.mTree.FindIn(kNoBox, "iinf");
        if (list == nullptr) {
            if (!added.empty()) {
                mNewBoxes += FullBoxBytes("iinf", {}, NumberBytes(mEdit.mAdded.size(), 2) + added);
            }
            return true;
        }
        std::int64_t removed = 0;
        auto growth = static_cast<std::int64_t>(added.size());
        for (const ItemInfo& info : mTable.mItems) {
            if (IsRemoved(info.mItem)) {
                mPlan.Remove(info.mBox.mWhole, Touch::kBlock);
                growth -= static_cast<std::int64_t>(info.mBox.mWhole.mSize);
                ++removed;
            }
        }
        if (!added.empty()) {
            mPlan.Insert(list->mWhole.End(), added, Touch::kBlock);
        }
        return Count(*list, static_cast<std::int64_t>(mEdit.mAdded.size()) - removed) && Grow(*list, growth);
    }

    /// Adds to the number of items that a list says it has.
    bool Count(const Box& list, std::int64_t change) {
        const std::optional<FullBoxHead> head = ReadFullBoxHead(mFile, list);
        const std::size_t size = head && head->mVersion == 0 ? 2 : 4;
        const Range place{list.Contents().mOffset + 4, size};
        const std::optional<std::string> bytes = ReadRange(mFile, place);
        if (!bytes || change == 0) {
            return bytes.has_value();
        }
        const std::int64_t count = static_cast<std::int64_t>(GetNumber(*bytes, 0, size, ByteOrder::kBig)) + change;
        if (count < 0 || !Fits(static_cast<std::uint64_t>(count), size)) {
            return false;
        }
        mPlan.Replace(place, NumberBytes(static_cast<std::uint64_t>(count), size), Touch::kStructure);
        return true;
    }

    bool Refer() {
        // A new item describes the primary one.
        std::vector<std::uint32_t> added;
        for (const NewItem& item : mEdit.mAdded) {
            if (mTable.mPrimary) {
                added.push_back(item.mItem);
            }
        }
        bool isFirst = true;
        for (std::size_t i = 0; i < mTable.mTree.mBoxes.size(); ++i) {
            const Box& box = mTable.mTree.mBoxes[i];
            if (box.mParent == kNoBox && box.mType == "iref") {
                if (!EditReferences(i, isFirst ? added : std::vector<std::uint32_t>())) {
                    return false;
                }
                isFirst = false;
            }
        }
        if (isFirst && !added.empty()) {
            const bool isLong = *mTable.mPrimary > kMaxShortNumber;
            const FullBoxHead head{static_cast<std::uint8_t>(isLong ? 1 : 0), 0};
            mNewBoxes += FullBoxBytes("iref", head, References(added, isLong));
        }
        return true;
    }

    std::string References(const std::vector<std::uint32_t>& added, bool isLong) const {
        const std::size_t size = isLong ? 4 : 2;
        std::string boxes;
        for (const std::uint32_t item : added) {
            boxes +=
                BoxBytes("cdsc", NumberBytes(item, size) + NumberBytes(1, 2) + NumberBytes(*mTable.mPrimary, size));
        }
        return boxes;
    }

    bool EditReferences(std::size_t index, const std::vector<std::uint32_t>& added) {
        const Box& list = mTable.mTree.mBoxes[index];
        std::vector<Range> removed;
        bool isEmpty = added.empty();
        std::int64_t growth = 0;
        for (const ItemReference& reference : mTable.mReferences) {
            if (reference.mBox.mParent != index) {
                continue;
            }
            isEmpty = isEmpty && IsRemoved(reference.mFrom);
            if (IsRemoved(reference.mFrom)) {
                removed.push_back(reference.mBox.mWhole);
                growth -= static_cast<std::int64_t>(reference.mBox.mWhole.mSize);
            }
        }
        if (isEmpty && !removed.empty()) {
            mPlan.Remove(list.mWhole, Touch::kBlock);
            mGrowth -= static_cast<std::int64_t>(list.mWhole.mSize);
            return true;
        }
        for (const Range& range : removed) {
            mPlan.Remove(range, Touch::kBlock);
        }
        return AddReferences(list, added, growth);
    }

    bool AddReferences(const Box& list, const std::vector<std::uint32_t>& added, std::int64_t growth) {
        const std::optional<FullBoxHead> head = ReadFullBoxHead(mFile, list);
        const bool isLong = head && head->mVersion > 0;
        if (!added.empty()) {
            if (!isLong && *mTable.mPrimary > kMaxShortNumber) {
                return false;
            }
            const std::string boxes = References(added, isLong);
            mPlan.Insert(list.mWhole.End(), boxes, Touch::kBlock);
            growth += static_cast<std::int64_t>(boxes.size());
        }
        return Grow(list, growth);
    }

    void Locate() {
        const Box* const box = mTable.mTree.FindIn(kNoBox, "iloc");
        const std::string bytes = ItemLocationsBox(mEdit.mLocations);
        if (box == nullptr) {
            if (!mEdit.mLocations.mItems.empty()) {
                mNewBoxes += bytes;
            }
        } else if (ReadRange(mFile, box->mWhole) != bytes) {
            mPlan.Replace(box->mWhole, bytes, Touch::kStructure);
            mGrowth += static_cast<std::int64_t>(bytes.size()) - static_cast<std::int64_t>(box->mWhole.mSize);
        }
    }

    const ByteSource& mFile;
    const ItemTable& mTable;
    const ItemTableEdit& mEdit;
    Plan& mPlan;
    std::string mNewBoxes;
    std::int64_t mGrowth = 0;
};

}  // namespace

std::optional<std::uint64_t> PlanItemTable(const ByteSource& file, const ItemTable& table, const ItemTableEdit& edit,
                                           Plan& plan) {
    return TableEditor(file, table, edit, plan).Edit();
}

std::optional<std::uint64_t> PlaceOf(const Plan& plan, std::uint64_t offset) {
    std::uint64_t place = offset;
    for (const Replacement& replacement : plan.Replacements()) {
        const Range& range = replacement.mRange;
        if (range.mOffset > offset || (range.mOffset == offset && range.mSize > 0)) {
            break;
        }
        if (offset < range.End()) {
            return std::nullopt;
        }
        place += replacement.mBytes.size();
        place -= range.mSize;
    }
    return place;
}

bool FollowPlan(const ByteSource& file, const ItemTable& table, const Plan& plan, ItemLocations& locations,
                const std::function<bool(std::uint32_t)>& isLeft) {
    for (ItemLocation& location : locations.mItems) {
        if (!location.IsIn(ItemSource::kFile) || isLeft(location.mItem) || !table.IsInThisFile(file, location)) {
            continue;
        }
        std::vector<std::uint64_t> places;
        for (const ItemExtent& extent : location.mExtents) {
            const std::optional<Range> range = ExtentRange(location, extent);
            const std::optional<std::uint64_t> place = range ? PlaceOf(plan, *range) : std::nullopt;
            if (!place) {
                return false;
            }
            places.push_back(*place);
        }
        if (!MoveLocation(locations, places, location)) {
            return false;
        }
    }
    return true;
}

std::optional<std::uint32_t> UnusedItemNumber(const ItemTable& table, const std::vector<std::uint32_t>& alsoUsed) {
    std::set<std::uint32_t> used(table.mUsedNumbers.begin(), table.mUsedNumbers.end());
    used.insert(alsoUsed.begin(), alsoUsed.end());
    used.insert({0, table.mPrimary.value_or(0)});
    if (*used.rbegin() < kMaxShortNumber) {
        return *used.rbegin() + 1;
    }
    for (std::uint32_t number = 1; number <= kMaxShortNumber; ++number) {
        if (!used.contains(number)) {
            return number;
        }
    }
    return std::nullopt;
}

bool MoveLocation(const ItemLocations& fields, const std::vector<std::uint64_t>& places, ItemLocation& location) {
    if (places.empty()) {
        return true;
    }
    // The base takes a common shift as long as there is one.
    std::uint64_t base = 0;
    if (location.mBase != 0 && places.front() >= location.mExtents.front().mOffset) {
        base = places.front() - location.mExtents.front().mOffset;
        for (std::size_t i = 0; i < places.size(); ++i) {
            base = base + location.mExtents[i].mOffset == places[i] ? base : 0;
        }
    }
    if (fields.mOffsetBytes == 0) {
        base = places.front();
    }
    location.mBase = base;
    bool fits = Fits(base, fields.mBaseBytes);
    for (std::size_t i = 0; i < places.size(); ++i) {
        location.mExtents[i].mOffset = places[i] - base;
        fits = fits && Fits(places[i] - base, fields.mOffsetBytes);
    }
    return fits;
}

bool SetLocation(std::uint32_t item, const Range& place, ItemLocations& locations) {
    constexpr std::uint8_t kShort = 4;
    // A table without widths says nothing, so that wider ones lose nothing; but a missing length is one to the end.
    if (locations.mOffsetBytes == 0 && locations.mBaseBytes == 0) {
        locations.mOffsetBytes = kShort;
    }
    if (locations.mLengthBytes == 0) {
        if (!locations.mItems.empty()) {
            return false;
        }
        locations.mLengthBytes = kShort;
    }
    auto found = std::find_if(locations.mItems.begin(), locations.mItems.end(),
                              [item](const ItemLocation& location) { return location.mItem == item; });
    if (found == locations.mItems.end()) {
        if (locations.mItems.size() >= kMaxShortNumber || (locations.mVersion < 2 && item > kMaxShortNumber)) {
            return false;
        }
        found = locations.mItems.insert(locations.mItems.end(), ItemLocation{item, 0, 0, 0, {}});
    }
    found->mMethod = static_cast<std::uint16_t>(found->mMethod & 0xFFF0U);
    found->mDataReference = 0;
    found->mBase = 0;
    found->mExtents = {ItemExtent{0, 0, place.mSize}};
    return Fits(place.mSize, locations.mLengthBytes) && MoveLocation(locations, {place.mOffset}, *found);
}

}  // namespace zephmetadata::media
