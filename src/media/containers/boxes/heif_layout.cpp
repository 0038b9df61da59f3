#include "media/containers/boxes/heif_layout.h"

#include <algorithm>

#include "media/containers/container.h"

namespace zephmetadata::media {

namespace {

bool Overlap(const Range& left, const Range& right) {
    return left.mOffset < right.End() && right.mOffset < left.End();
}

/// A random access index, and the film of a motion photo.
bool IsLookedForFromTheEnd(const Box& box) {
    return box.mType == "mfra" || box.mType == "mpvd";
}

/// Whether all metadata that there could be still fits the size field.
bool CanGrow(const Box& box) {
    return box.mSize != BoxSize::kShort || box.mWhole.mSize < 0xFFFFFFFFU - 2 * kMaxBlockBytes;
}

/// The pieces of all items but metadata.
void AppendPieces(const ByteSource& file, const ItemTable& table, std::vector<Range>& ranges) {
    for (const ItemLocation& location : table.mLocations.mItems) {
        const ItemInfo* const info = table.Find(location.mItem);
        const bool isMetadata = info != nullptr && (info->IsXMP() || info->IsExif());
        // Those of items that are made of others are those of others.
        const auto pieces = isMetadata || location.IsIn(ItemSource::kOtherItem)
                                ? std::nullopt
                                : ItemPieces(file, table, location.mItem);
        if (pieces) {
            ranges.insert(ranges.end(), pieces->begin(), pieces->end());
        }
    }
}

}  // namespace

std::uint64_t MetadataItem::Size() const {
    std::uint64_t size = 0;
    for (const Range& piece : mPieces) {
        size += piece.mSize;
    }
    return size;
}

HeifLayout::HeifLayout(const ByteSource& file, const HeifFile& heif)
    : mTables(ReadOffsetTables(file, heif.mTop)), mHeif(heif) {
    const std::vector<Box>& boxes = heif.mTop.mBoxes;
    const auto last = std::find_if_not(boxes.rbegin(), boxes.rend(), &IsLookedForFromTheEnd);
    mLast = last == boxes.rend() ? nullptr : &*last;
    mData = mLast != nullptr && mLast->mType == "mdat" && CanGrow(*mLast) ? mLast : nullptr;
    for (const Box& meta : mTables.mMetas) {
        mTrackTables.push_back(ReadItemTable(file, meta));
        Own(file, mTrackTables.back(), mTrackTables.size() - 1);
    }
    if (!heif.mTable) {
        return;
    }
    Own(file, *heif.mTable, kFileTable);
    mXMP = Found(file, heif.mXMP);
    mExif = Found(file, heif.mExif);
    FindEnd();
}

/// Notes what each item has a part in.
void HeifLayout::Own(const ByteSource& file, const ItemTable& table, std::size_t number) {
    for (const ItemLocation& location : table.mLocations.mItems) {
        // The pieces of items that are made of others are those of others.
        const auto pieces =
            location.IsIn(ItemSource::kOtherItem) ? std::nullopt : ItemPieces(file, table, location.mItem);
        for (const Range& piece : pieces.value_or(std::vector<Range>())) {
            mOwned.push_back({{number, location.mItem}, piece});
        }
    }
}

bool HeifLayout::IsFree(const Range& range, const MetadataItem& item) const {
    const auto isItself = [&item](const TwinItem& other) {
        return other.mTable == kFileTable
                   ? other.mItem == item.mItem
                   : std::any_of(item.mTwins.begin(), item.mTwins.end(), [&other](const TwinItem& twin) {
                         return twin.mTable == other.mTable && twin.mItem == other.mItem;
                     });
    };
    const auto isInside = [&range](std::uint64_t offset) { return offset >= range.mOffset && offset < range.End(); };
    const bool hasItems = std::any_of(mOwned.begin(), mOwned.end(), [&](const Owned& owned) {
        return Overlap(owned.mRange, range) && !isItself(owned.mItem);
    });
    const bool hasSamples = std::any_of(mTables.mTables.begin(), mTables.mTables.end(), [&](const OffsetTable& table) {
        return std::any_of(table.mOffsets.begin(), table.mOffsets.end(), isInside);
    });
    return !hasItems && !hasSamples;
}

bool HeifLayout::IsAtEnd(const MetadataItem& item) const {
    return std::find(mAtEnd.begin(), mAtEnd.end(), &item) != mAtEnd.end();
}

MetadataItem HeifLayout::Found(const ByteSource& file, std::optional<std::uint32_t> item) const {
    MetadataItem found{item, {}, {}, false};
    const ItemLocation* const location = item ? mHeif.mTable->mLocations.Find(*item) : nullptr;
    if (location == nullptr) {
        return found;
    }
    found.mPieces = ItemPieces(file, *mHeif.mTable, *item).value_or(std::vector<Range>());
    found.mTwins = Twins(file, found);
    found.mIsSole = !found.mPieces.empty() && !location->IsIn(ItemSource::kOtherItem);
    for (auto piece = found.mPieces.begin(); found.mIsSole && piece != found.mPieces.end(); ++piece) {
        const bool isTwice =
            std::any_of(found.mPieces.begin(), piece, [&piece](const Range& other) { return Overlap(other, *piece); });
        found.mIsSole = !isTwice && IsData(*piece) && IsFree(*piece, found);
    }
    return found;
}

std::vector<TwinItem> HeifLayout::Twins(const ByteSource& file, const MetadataItem& item) const {
    std::vector<TwinItem> twins;
    // Only what is one piece can be told to lie elsewhere without the table of the track growing.
    for (std::size_t i = 0; item.mPieces.size() == 1 && i < mTrackTables.size(); ++i) {
        for (const ItemInfo& info : mTrackTables[i].mItems) {
            if ((info.IsXMP() || info.IsExif()) && ItemPieces(file, mTrackTables[i], info.mItem) == item.mPieces) {
                twins.push_back({i, info.mItem});
            }
        }
    }
    return twins;
}

bool HeifLayout::IsData(const Range& piece) const {
    const auto holds = [&piece](const Box& box) {
        const Range contents = box.Contents();
        return (box.mType == "mdat" || box.mType == "idat") && piece.mOffset >= contents.mOffset &&
               piece.End() <= contents.End();
    };
    const std::vector<Box>& parts = mHeif.mTable->mTree.mBoxes;
    return std::any_of(mHeif.mTop.mBoxes.begin(), mHeif.mTop.mBoxes.end(), holds) ||
           std::any_of(parts.begin(), parts.end(), holds);
}

void HeifLayout::FindEnd() {
    if (mData == nullptr) {
        return;
    }
    std::uint64_t end = mData->mWhole.End();
    const std::array<const MetadataItem*, 2> items = {&mXMP, &mExif};
    for (std::size_t round = 0; round < items.size(); ++round) {
        for (const MetadataItem* const item : items) {
            if (item->mIsSole && item->mPieces.size() == 1 && item->mPieces[0].End() == end &&
                item->mPieces[0].mOffset >= mData->Contents().mOffset) {
                end = item->mPieces[0].mOffset;
                mAtEnd.insert(mAtEnd.begin(), item);
            }
        }
    }
}

void HeifLayout::KeepPlaces(Plan& plan, std::uint64_t metaSize) const {
    const Box& meta = mHeif.mTable->mMeta;
    const std::size_t index = mHeif.mTop.IndexOf(*mHeif.mTop.Find("meta"));
    if (index + 1 == mHeif.mTop.mBoxes.size() || metaSize == meta.mWhole.mSize) {
        return;
    }
    constexpr std::uint64_t kHeader = 8;
    const Box& next = mHeif.mTop.mBoxes[index + 1];
    const bool isSpace = (next.mType == "free" || next.mType == "skip") && next.mSize == BoxSize::kShort;
    const Range& place = next.mWhole;
    if (metaSize < meta.mWhole.mSize) {
        const std::uint64_t freed = meta.mWhole.mSize - metaSize;
        if (isSpace && place.mSize + freed <= 0xFFFFFFFFU) {
            const std::string zeros(static_cast<std::size_t>(freed), '\0');
            plan.Replace({place.mOffset, kHeader}, BoxHeader(next.mType, place.mSize + freed - kHeader) + zeros,
                         Touch::kSpace);
        } else if (freed >= kHeader) {
            plan.Insert(meta.mWhole.End(), FreeBox(freed), Touch::kSpace);
        }
        return;
    }
    const std::uint64_t wanted = metaSize - meta.mWhole.mSize;
    const Range taken{place.mOffset, wanted == place.mSize ? wanted : wanted + kHeader};
    if (isSpace && taken.mSize <= place.mSize && IsFree(taken)) {
        const bool isAll = wanted == place.mSize;
        plan.Replace(taken, isAll ? "" : BoxHeader(next.mType, place.mSize - wanted - kHeader), Touch::kSpace);
    }
}

std::vector<Range> HeifReferences(const ByteSource& file, const HeifFile& heif) {
    std::vector<Range> ranges;
    const OffsetTables tables = ReadOffsetTables(file, heif.mTop);
    if (heif.mTable) {
        AppendPieces(file, *heif.mTable, ranges);
    }
    for (const Box& meta : tables.mMetas) {
        AppendPieces(file, ReadItemTable(file, meta), ranges);
    }
    for (const OffsetTable& table : tables.mTables) {
        for (const std::uint64_t offset : table.mOffsets) {
            ranges.push_back({offset, offset < file.Size() ? std::uint64_t{1} : 0});
        }
    }
    return ranges;
}

}  // namespace zephmetadata::media
