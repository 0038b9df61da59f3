#include "media/containers/boxes/heif_edit.h"

#include <algorithm>
#include <array>

#include "media/bytes.h"
#include "media/containers/boxes/heif_blocks.h"
#include "media/containers/boxes/item_table_edit.h"
#include "media/containers/exif_payload.h"

namespace zephmetadata::media {

namespace {

/// A metadata item with what becomes of it.
struct Target {
    const MetadataItem* mWhere = nullptr;
    ItemChange mChange;
    std::uint32_t mNumber = 0;    // of the item, a new one if there is none
    std::optional<Range> mPlace;  // in the tail, when it goes there
};

class HeifEditor {
public:
    HeifEditor(const ByteSource& file, const HeifFile& heif, const BlockChanges& changes)
        : mFile(file), mHeif(heif), mChanges(changes), mLayout(file, heif) {
        mTargets[0].mWhere = &mLayout.mXMP;
        mTargets[1].mWhere = &mLayout.mExif;
    }

    PlannedEdit Edit() {
        if (!CanBeEdited() || !Prepare() || !PrepareTables()) {
            return mRefusal;
        }
        // The first plan has the sizes of the second and tells where everything comes to lie.
        Plan sizes;
        Plan plan;
        if (!Build(sizes) || !Locate(sizes) || !Build(plan)) {
            Refuse("the boxes cannot hold the change");
            return mRefusal;
        }
        if (!FollowPlan(mFile, mLayout.mTables, plan)) {
            Refuse("offsets of samples cannot follow the change");
            return mRefusal;
        }
        return {FileStatus::kFileStatus_Success, {}, std::move(plan)};
    }

private:
    bool Refuse(const char* why, FileStatus status = FileStatus::kFileStatus_CannotCarryXMP) {
        mRefusal = RefusedEdit(status, why);
        return false;
    }

    /// Only a table that is understood to the last byte is written anew.
    bool IsKnown(const ItemTable& table) const {
        constexpr std::size_t kHeader = 8;
        const Box* const box = table.mTree.FindIn(kNoBox, "iloc");
        return table.mDamage.empty() && (box == nullptr || ReadRange(mFile, box->Contents()) ==
                                                               ItemLocationsBox(table.mLocations).substr(kHeader));
    }

    bool CanBeEdited() {
        if (!mHeif.mDamage.empty() || !mLayout.mTables.mIsWhole) {
            return Refuse("the boxes of the file are damaged", FileStatus::kFileStatus_DamagedFile);
        }
        if (mChanges.mIIM) {
            return Refuse("the format has no place for IPTC-IIM");
        }
        if (!OnlyRemove(mChanges.mExif) && !mHeif.mTable) {
            return Refuse("the file has no items, of which Exif would be one");
        }
        bool areKnown = !mHeif.mTable || IsKnown(*mHeif.mTable);
        for (const ItemTable& table : mLayout.mTrackTables) {
            areKnown = areKnown && IsKnown(table);
        }
        return areKnown || Refuse("a table of item locations is of an unknown form");
    }

    /// XMP stays in a box of its own if it lies there, and goes there if there are no items.
    bool IsXMPInBox() const { return !mHeif.mXMP && (mHeif.mXMPBox != nullptr || !mHeif.mTable); }

    bool Prepare() {
        if (mChanges.mXMP && !IsXMPInBox() &&
            !Take(PrepareXMPItem(mFile, *mHeif.mTable, mLayout, *mChanges.mXMP), mTargets[0])) {
            return false;
        }
        return mChanges.mExif.empty() || !mHeif.mTable ||
               Take(PrepareExifItem(mFile, *mHeif.mTable, mLayout, mChanges.mExif), mTargets[1]);
    }

    bool Take(PreparedChange prepared, Target& target) {
        target.mChange = std::move(prepared.mChange);
        return prepared.mStatus == FileStatus::kFileStatus_Success || Refuse(prepared.mWhy, prepared.mStatus);
    }

    bool PrepareTables() {
        if (mHeif.mTable) {
            mTableEdit.mLocations = mHeif.mTable->mLocations;
        }
        for (const ItemTable& table : mLayout.mTrackTables) {
            mTrackEdits.push_back({table.mLocations, {}, {}});
        }
        std::vector<std::uint32_t> used = mLayout.mTables.mTracks;
        for (Target& target : mTargets) {
            if (target.mWhere->mItem) {
                target.mNumber = *target.mWhere->mItem;
            } else if (target.mChange.mData) {
                const std::optional<std::uint32_t> number = UnusedItemNumber(*mHeif.mTable, used);
                if (!number) {
                    return Refuse("the file has no number left for an item");
                }
                target.mNumber = *number;
                used.push_back(*number);
                mTableEdit.mAdded.push_back({*number, &target == mTargets.data()});
            }
            if (target.mChange.mIsRemoved && !Remove(target)) {
                return Refuse("other items depend on the XMP item of a track");
            }
        }
        MakeTail();
        return !mHeif.mTable || SetTailLocations(0) || Refuse("the table of item locations cannot hold the change");
    }

    static void RemoveItem(std::uint32_t item, ItemTableEdit& edit) {
        edit.mRemoved.push_back(item);
        std::erase_if(edit.mLocations.mItems, [item](const ItemLocation& location) { return location.mItem == item; });
    }

    bool Remove(const Target& target) {
        bool areUnbound = true;
        RemoveItem(target.mNumber, mTableEdit);
        for (const TwinItem& twin : target.mWhere->mTwins) {
            areUnbound = areUnbound && mLayout.mTrackTables[twin.mTable].IsUnbound(twin.mItem);
            RemoveItem(twin.mItem, mTrackEdits[twin.mTable]);
        }
        return areUnbound;
    }

    // The tail: what comes instead of the end of the data, from the first item there that does not keep its size on, and
    // what has no place elsewhere.

    std::vector<Target*> TailTargets(std::uint64_t& start) {
        std::vector<Target*> tail;
        for (const MetadataItem* const item : mLayout.mAtEnd) {
            Target& target = mTargets[item == &mLayout.mXMP ? 0 : 1];
            if (!tail.empty() || target.mChange.IsMoved()) {
                start = tail.empty() ? item->mPieces[0].mOffset : start;
                tail.push_back(&target);
            }
        }
        for (Target& target : mTargets) {
            if (target.mChange.mData && target.mChange.IsMoved() && !mLayout.IsAtEnd(*target.mWhere)) {
                tail.push_back(&target);
            }
        }
        return tail;
    }

    void MakeTail() {
        const std::uint64_t end = mLayout.mLast == nullptr ? 0 : mLayout.mLast->mWhole.End();
        std::uint64_t start = end;
        const std::vector<Target*> tail = TailTargets(start);
        std::string data;
        for (Target* const target : tail) {
            if (!target->mChange.mIsRemoved) {
                const ItemChange& change = target->mChange;
                const std::string bytes =
                    change.mData ? *change.mData : ReadRange(mFile, target->mWhere->mPieces[0]).value_or("");
                target->mPlace = Range{data.size(), bytes.size()};
                data += bytes;
            }
        }
        mTailRange = {start, end - start};
        const Box* const box = mLayout.mData;
        mIsNewBox = box == nullptr && !data.empty();
        if (mIsNewBox) {
            mTailHeader = BoxHeader("mdat", data.size());
        } else if (box != nullptr && !tail.empty() && data.empty() && start == box->Contents().mOffset) {
            mTailRange = box->mWhole;  // nothing is left in it
        }
        mHasTail = !tail.empty();
        mTail = mTailHeader + data;
    }

    bool SetTailLocations(std::uint64_t tailPlace) {
        bool fits = true;
        for (const Target& target : mTargets) {
            if (target.mPlace) {
                const Range place{tailPlace + mTailHeader.size() + target.mPlace->mOffset, target.mPlace->mSize};
                fits = fits && SetLocation(target.mNumber, place, mTableEdit.mLocations);
                for (const TwinItem& twin : target.mWhere->mTwins) {
                    fits = fits && SetLocation(twin.mItem, place, mTrackEdits[twin.mTable].mLocations);
                }
            }
        }
        return fits;
    }

    /// Gives all items the places that they have after the plan.
    bool Locate(const Plan& plan) {
        bool fits = !mHeif.mTable || Follow(plan, *mHeif.mTable, kFileTable, mTableEdit.mLocations);
        for (std::size_t i = 0; i < mTrackEdits.size(); ++i) {
            fits = fits && Follow(plan, mLayout.mTrackTables[i], i, mTrackEdits[i].mLocations);
        }
        return fits && SetTailLocations(PlaceOfTail(plan));
    }

    bool Follow(const Plan& plan, const ItemTable& table, std::size_t number, ItemLocations& locations) const {
        return FollowPlan(mFile, table, plan, locations, [&](std::uint32_t item) { return IsInTail(number, item); });
    }

    bool IsInTail(std::size_t table, std::uint32_t item) const {
        return std::any_of(mTargets.begin(), mTargets.end(), [&](const Target& target) {
            const std::vector<TwinItem>& twins = target.mWhere->mTwins;
            const bool isTwin = std::any_of(twins.begin(), twins.end(), [&](const TwinItem& twin) {
                return twin.mTable == table && twin.mItem == item;
            });
            return target.mPlace && (isTwin || (table == kFileTable && target.mNumber == item));
        });
    }

    std::uint64_t PlaceOfTail(const Plan& plan) const {
        // It comes behind everything else that is inserted at its place.
        const std::uint64_t place = PlaceOf(plan, mTailRange.mOffset).value_or(0);
        return mHasTail && mTailRange.mSize == 0 ? place - mTail.size() : place;
    }

    // The plan.

    bool Build(Plan& plan) {
        std::uint64_t metaSize = 0;
        if (mHeif.mTable) {
            const auto size = PlanItemTable(mFile, *mHeif.mTable, mTableEdit, plan);
            if (!size) {
                return false;
            }
            metaSize = *size;
            mLayout.KeepPlaces(plan, metaSize);
            WriteInPlace(plan);
        }
        for (std::size_t i = 0; i < mTrackEdits.size(); ++i) {
            if (!EditTrack(plan, mLayout.mTrackTables[i], mTrackEdits[i])) {
                return false;
            }
        }
        const bool isAppended = EditXMPBox(plan);
        const bool isWritten = mLayout.mLast == mHeif.mXMPBox && mChanges.mXMP;
        if (mLayout.mLast != nullptr && (isAppended || mIsNewBox) && !isWritten) {
            EndBox(plan, *mLayout.mLast, metaSize);
        }
        return !mHasTail || WriteTail(plan);
    }

    /// The boxes around the table of a track keep their sizes.
    bool EditTrack(Plan& plan, const ItemTable& table, const ItemTableEdit& edit) const {
        constexpr std::uint64_t kHeader = 8;
        const Range& place = table.mMeta.mWhole;
        const std::optional<std::uint64_t> size = PlanItemTable(mFile, table, edit, plan);
        if (!size || *size > place.mSize || (*size < place.mSize && place.mSize - *size < kHeader)) {
            return false;
        }
        if (*size < place.mSize) {
            plan.Insert(place.End(), FreeBox(place.mSize - *size), Touch::kSpace);
        }
        return true;
    }

    /// Data that fits where it was, and zeros where data was that has gone elsewhere: what was taken out of it is not to
    /// be found there.
    void WriteInPlace(Plan& plan) const {
        for (const Target& target : mTargets) {
            const ItemChange& change = target.mChange;
            const bool isWritten = change.mIsInPlace && !target.mPlace;
            const bool isLeft = change.IsMoved() && target.mWhere->mIsSole && !mLayout.IsAtEnd(*target.mWhere);
            std::size_t at = 0;
            for (const Range& piece : target.mWhere->mPieces) {
                const auto size = static_cast<std::size_t>(piece.mSize);
                if (isWritten) {
                    plan.Replace(piece, change.mData->substr(at, size), Touch::kBlock);
                } else if (isLeft) {
                    plan.Replace(piece, std::string(size, '\0'), Touch::kSpace);
                }
                at += size;
            }
        }
    }

    bool WriteTail(Plan& plan) const {
        const Box* const box = mLayout.mData;
        plan.Replace(mTailRange, mTail, Touch::kBlock);
        const bool isGone = box != nullptr && mTailRange == box->mWhole;
        return box == nullptr || isGone || ResizeBox(plan, *box, box->mWhole.mSize - mTailRange.mSize + mTail.size());
    }

    /// Writes the packet into the box at the top. True when a new one is appended.
    bool EditXMPBox(Plan& plan) const {
        if (!mChanges.mXMP || (!IsXMPInBox() && !mChanges.mXMP->empty())) {
            return false;
        }
        if (mHeif.mXMPBox == nullptr) {
            const bool isNew = !mHeif.mTable && !mChanges.mXMP->empty() && mLayout.mLast != nullptr;
            if (isNew) {
                plan.Insert(mLayout.mLast->mWhole.End(), UuidBoxBytes(kXMPUuid, WrappedPacket(*mChanges.mXMP)),
                            Touch::kBlock);
            }
            return isNew;
        }
        PlanPacketBox(plan, *mHeif.mXMPBox, *mChanges.mXMP, mHeif.mXMPBox == mLayout.mLast);
        return false;
    }

    /// Gives the last box its size, so that something can follow it.
    void EndBox(Plan& plan, const Box& last, std::uint64_t metaSize) const {
        const bool isMeta = mHeif.mTable && last.mWhole == mHeif.mTable->mMeta.mWhole;
        MakeExplicit(plan, last, isMeta ? std::optional(metaSize) : std::nullopt);
    }

    const ByteSource& mFile;
    const HeifFile& mHeif;
    const BlockChanges& mChanges;
    const HeifLayout mLayout;
    std::array<Target, 2> mTargets;  // XMP, Exif
    ItemTableEdit mTableEdit;
    std::vector<ItemTableEdit> mTrackEdits;  // of HeifLayout::mTrackTables
    bool mHasTail = false;
    bool mIsNewBox = false;
    Range mTailRange;
    std::string mTailHeader;
    std::string mTail;  // with the header
    PlannedEdit mRefusal;
};

}  // namespace

PlannedEdit PlanHeifEdit(const ByteSource& file, const HeifFile& heif, const BlockChanges& changes) {
    return HeifEditor(file, heif, changes).Edit();
}

}  // namespace zephmetadata::media
