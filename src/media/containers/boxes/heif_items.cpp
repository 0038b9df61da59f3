#include "media/containers/boxes/heif_items.h"

#include <algorithm>
#include <set>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

/// Tables of a meta box larger than this are not read; ten thousand items take less than 1 MiB.
constexpr std::uint64_t kMaxTableBytes = std::uint64_t{16} << 20U;
/// How often items may be made of one another.
constexpr int kMaxItemDepth = 4;
constexpr std::size_t kMaxPieces = 100000;
/// Extents looked at for one item: items that are made of many pieces of items with many pieces multiply.
constexpr std::size_t kMaxSteps = 1000000;

std::optional<std::uint64_t> MetaBoxesAt(const ByteSource& file, const Box& box, const BoxList& parents) {
    if (box.mParent != kNoBox) {
        return parents.mBoxes[box.mParent].mType == "dinf" && box.mType == "dref" ? std::optional<std::uint64_t>(8)
                                                                                  : std::nullopt;
    }
    if (box.mType == "iref") {
        return 4;
    }
    if (box.mType == "dinf" || box.mType == "grpl" || box.mType == "iprp") {
        return 0;
    }
    const std::optional<FullBoxHead> head = box.mType == "iinf" ? ReadFullBoxHead(file, box) : std::nullopt;
    return head ? std::optional<std::uint64_t>(head->mVersion == 0 ? 6 : 8) : std::nullopt;
}

/// The text up to the next NUL, which is taken with it.
std::string TakeText(std::string_view& bytes) {
    const std::size_t end = std::min(bytes.find('\0'), bytes.size());
    std::string text(bytes.substr(0, end));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
    return text;
}

std::uint32_t TakeNumber(std::string_view& bytes, std::size_t size) {
    if (bytes.size() < size) {
        bytes = {};
        return 0;
    }
    const std::uint64_t value = GetNumber(bytes, 0, size, ByteOrder::kBig);
    bytes.remove_prefix(size);
    return static_cast<std::uint32_t>(value);
}

std::optional<ItemInfo> ReadItemInfo(const ByteSource& file, const Box& box) {
    constexpr std::size_t kMostBytes = 4096;  // names and types; a longer one is cut
    const std::string contents =
        ReadUpTo(file, box.Contents().mOffset,
                 static_cast<std::size_t>(std::min<std::uint64_t>(box.Contents().mSize, kMostBytes)));
    std::string_view bytes = contents;
    const std::uint32_t version = TakeNumber(bytes, 4) >> 24U;
    const std::size_t numberBytes = version < 3 ? 2 : 4;
    if (bytes.size() < numberBytes + 2 || version > 3) {
        return std::nullopt;
    }
    ItemInfo info;
    info.mBox = box;
    info.mItem = TakeNumber(bytes, numberBytes);
    info.mIsProtected = TakeNumber(bytes, 2) != 0;
    info.mType = "mime";
    if (version >= 2) {
        info.mType = bytes.substr(0, 4);
        bytes.remove_prefix(std::min<std::size_t>(4, bytes.size()));
    }
    TakeText(bytes);  // the name
    if (info.mType == "mime") {
        info.mContentType = TakeText(bytes);
        info.mContentEncoding = TakeText(bytes);
    }
    return info;
}

std::optional<ItemReference> ReadItemReference(const ByteSource& file, const Box& box, std::size_t numberBytes) {
    const Range place = box.Contents();
    const std::optional<std::string> contents = place.mSize <= kMaxTableBytes ? ReadRange(file, place) : std::nullopt;
    if (!contents || contents->size() < numberBytes + 2) {
        return std::nullopt;
    }
    std::string_view bytes = *contents;
    ItemReference reference{box.mType, TakeNumber(bytes, numberBytes), {}, box};
    const std::uint32_t count = TakeNumber(bytes, 2);
    if (count * numberBytes > bytes.size()) {
        return std::nullopt;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        reference.mTo.push_back(TakeNumber(bytes, numberBytes));
    }
    return reference;
}

class TableReader {
public:
    TableReader(const ByteSource& file, const Box& meta) : mFile(file) { mTable.mMeta = meta; }

    ItemTable Read() {
        const Range contents = mTable.mMeta.Contents();
        const std::uint64_t before = std::min(MetaChildrenAt(mFile, mTable.mMeta), contents.mSize);
        mTable.mTree = ReadBoxTree(mFile, {contents.mOffset + before, contents.mSize - before}, &MetaBoxesAt);
        const Range& rest = mTable.mTree.mRest;
        Check(mTable.mTree.mIsWhole && (rest.mSize == 0 || IsZeroRest(mFile, rest)),
              "boxes in the meta box are cut off");
        for (const Box& box : mTable.mTree.mBoxes) {
            ReadPart(box);
        }
        const auto isOpen = [](const Box& box) { return box.mSize == BoxSize::kToEnd; };
        const std::vector<Box>& boxes = mTable.mTree.mBoxes;
        Check(std::none_of(boxes.begin(), boxes.end(), isOpen), "a box within the meta box has no size");
        std::set<std::uint32_t> listed;
        for (const ItemInfo& info : mTable.mItems) {
            Check(listed.insert(info.mItem).second, "an item is listed twice");
        }
        std::set<std::uint32_t> located;
        for (const ItemLocation& location : mTable.mLocations.mItems) {
            mTable.mUsedNumbers.push_back(location.mItem);
            Check(located.insert(location.mItem).second, "an item has two locations");
        }
        return std::move(mTable);
    }

private:
    void Check(bool isSound, const char* damage) {
        if (!isSound && mTable.mDamage.empty()) {
            mTable.mDamage = damage;
        }
    }

    std::string Contents(const Box& box) {
        const Range place = box.Contents();
        Check(place.mSize <= kMaxTableBytes, "a table in the meta box is too large");
        return place.mSize <= kMaxTableBytes ? ReadRange(mFile, place).value_or("") : std::string();
    }

    void ReadPart(const Box& box) {
        const std::string parent = box.mParent == kNoBox ? "" : mTable.mTree.mBoxes[box.mParent].mType;
        if (parent == "iref") {
            const std::optional<FullBoxHead> head = ReadFullBoxHead(mFile, mTable.mTree.mBoxes[box.mParent]);
            std::optional<ItemReference> reference = ReadItemReference(mFile, box, head && head->mVersion > 0 ? 4 : 2);
            Check(reference.has_value(), "a reference between items is cut off");
            if (reference) {
                mTable.mReferences.push_back(*std::move(reference));
            }
        } else if (parent == "grpl") {
            ReadGroup(box);
        } else if (parent == "iprp" && box.mType == "ipma") {
            ReadAssociations(box);
        } else if (parent == "iinf" && box.mType == "infe") {
            AddItem(box);
        } else if (box.mParent == kNoBox && box.mType == "iloc") {
            ReadLocations(box);
        } else if (box.mParent == kNoBox && box.mType == "pitm") {
            ReadPrimary(box);
        }
    }

    void AddItem(const Box& box) {
        std::optional<ItemInfo> info = ReadItemInfo(mFile, box);
        Check(info.has_value(), "the description of an item is cut off");
        if (info) {
            mTable.mUsedNumbers.push_back(info->mItem);
            mTable.mItems.push_back(*std::move(info));
        }
    }

    /// A group of entities (8.18.3): its number, then those of its members.
    void ReadGroup(const Box& box) {
        const std::string contents = Contents(box);
        std::string_view bytes = contents;
        TakeNumber(bytes, 4);
        mTable.mUsedNumbers.push_back(TakeNumber(bytes, 4));
        std::uint32_t count = TakeNumber(bytes, 4);
        for (; count > 0 && bytes.size() >= 4; --count) {
            mTable.mBoundItems.push_back(TakeNumber(bytes, 4));
        }
        Check(count == 0, "a group of items is cut off");
    }

    /// Which properties items have (ISO/IEC 23008-12, 9.3): of each the number and a list of one or two bytes an entry.
    void ReadAssociations(const Box& box) {
        const std::string contents = Contents(box);
        std::string_view bytes = contents;
        const std::uint32_t head = TakeNumber(bytes, 4);
        const std::size_t numberBytes = head >> 24U == 0 ? 2 : 4;
        const std::size_t entryBytes = (head & 1U) == 0 ? 1 : 2;
        std::uint32_t count = TakeNumber(bytes, 4);
        for (; count > 0 && bytes.size() > numberBytes; --count) {
            mTable.mBoundItems.push_back(TakeNumber(bytes, numberBytes));
            const std::size_t size = TakeNumber(bytes, 1) * entryBytes;
            Check(size <= bytes.size(), "the properties of an item are cut off");
            bytes.remove_prefix(std::min(size, bytes.size()));
        }
        Check(count == 0, "the properties of items are cut off");
    }

    void ReadLocations(const Box& box) {
        std::optional<ItemLocations> locations = ReadItemLocations(Contents(box));
        Check(locations.has_value(), "the table of item locations is damaged");
        Check(!mHasLocations, "there are two tables of item locations");
        if (locations && !mHasLocations) {
            mTable.mLocations = *std::move(locations);
        }
        mHasLocations = true;
    }

    void ReadPrimary(const Box& box) {
        const std::string contents = Contents(box);
        std::string_view bytes = contents;
        const std::uint32_t version = TakeNumber(bytes, 4) >> 24U;
        const std::size_t size = version == 0 ? 2 : 4;
        Check(bytes.size() >= size, "the number of the primary item is cut off");
        if (bytes.size() >= size && !mTable.mPrimary) {
            mTable.mPrimary = TakeNumber(bytes, size);
        }
    }

    const ByteSource& mFile;
    ItemTable mTable;
    bool mHasLocations = false;
};

/// Collects the pieces of an item, and of items that it is made of.
class PieceCollector {
public:
    PieceCollector(const ByteSource& file, const ItemTable& table) : mFile(file), mTable(table) {}

    std::optional<std::vector<Range>> Of(std::uint32_t item, int depth) const {
        const ItemLocation* const location = mTable.mLocations.Find(item);
        if (location == nullptr || depth > kMaxItemDepth || location->mExtents.size() > kMaxPieces) {
            return std::nullopt;
        }
        std::vector<Range> pieces;
        for (const ItemExtent& extent : location->mExtents) {
            const std::optional<Range> range = ++mSteps <= kMaxSteps ? ExtentRange(*location, extent) : std::nullopt;
            const std::optional<std::vector<Range>> source = range ? Source(*location, extent, depth) : std::nullopt;
            if (!source || !Append(*source, *range, pieces)) {
                return std::nullopt;
            }
        }
        return pieces;
    }

private:
    /// What the offsets of an extent count in.
    std::optional<std::vector<Range>> Source(const ItemLocation& location, const ItemExtent& extent, int depth) const {
        if (location.IsIn(ItemSource::kFile) && mTable.IsInThisFile(mFile, location)) {
            return std::vector<Range>{{0, mFile.Size()}};
        }
        if (location.IsIn(ItemSource::kItemData)) {
            const Box* const data = mTable.mTree.FindIn(kNoBox, "idat");
            return data != nullptr ? std::optional(std::vector<Range>{data->Contents()}) : std::nullopt;
        }
        if (!location.IsIn(ItemSource::kOtherItem)) {
            return std::nullopt;
        }
        // Item references of type "iloc" are counted from one; without an index the first is meant.
        std::uint64_t index = std::max<std::uint64_t>(extent.mIndex, 1);
        for (const ItemReference& reference : mTable.mReferences) {
            if (reference.mType != "iloc" || reference.mFrom != location.mItem) {
                continue;
            }
            if (index <= reference.mTo.size()) {
                return Of(reference.mTo[static_cast<std::size_t>(index - 1)], depth + 1);
            }
            index -= reference.mTo.size();
        }
        return std::nullopt;
    }

    /// The part @p wanted of what the pieces of @p source are together.
    bool Append(const std::vector<Range>& source, Range wanted, std::vector<Range>& pieces) const {
        const bool isWhole = mTable.mLocations.mLengthBytes == 0;
        mSteps += source.size();
        for (const Range& piece : source) {
            if (wanted.mOffset >= piece.mSize) {
                wanted.mOffset -= piece.mSize;
                continue;
            }
            const std::uint64_t there = piece.mSize - wanted.mOffset;
            const std::uint64_t taken = isWhole ? there : std::min(there, wanted.mSize);
            if (taken > 0) {
                pieces.push_back({piece.mOffset + wanted.mOffset, taken});
            }
            wanted = {0, isWhole ? 0 : wanted.mSize - taken};
        }
        return wanted.mSize == 0 && pieces.size() <= kMaxPieces;
    }

    const ByteSource& mFile;
    const ItemTable& mTable;
    mutable std::size_t mSteps = 0;
};

}  // namespace

const ItemInfo* ItemTable::Find(std::uint32_t item) const {
    const auto found =
        std::find_if(mItems.begin(), mItems.end(), [item](const ItemInfo& info) { return info.mItem == item; });
    return found == mItems.end() ? nullptr : &*found;
}

bool ItemTable::Refers(std::string_view type, std::uint32_t from, std::uint32_t to) const {
    return std::any_of(mReferences.begin(), mReferences.end(), [&](const ItemReference& reference) {
        return reference.mType == type && reference.mFrom == from &&
               std::find(reference.mTo.begin(), reference.mTo.end(), to) != reference.mTo.end();
    });
}

bool ItemTable::HasReference(std::string_view type, std::uint32_t from) const {
    return std::any_of(mReferences.begin(), mReferences.end(), [&](const ItemReference& reference) {
        return reference.mType == type && reference.mFrom == from;
    });
}

bool ItemTable::IsUnbound(std::uint32_t item) const {
    const bool isReferred = std::any_of(mReferences.begin(), mReferences.end(), [item](const ItemReference& reference) {
        return std::find(reference.mTo.begin(), reference.mTo.end(), item) != reference.mTo.end();
    });
    return !isReferred && std::find(mBoundItems.begin(), mBoundItems.end(), item) == mBoundItems.end();
}

bool ItemTable::IsInThisFile(const ByteSource& file, const ItemLocation& location) const {
    if (location.mDataReference == 0) {
        return true;
    }
    std::size_t number = 0;
    for (const Box& box : mTree.mBoxes) {
        if (box.mParent != kNoBox && mTree.mBoxes[box.mParent].mType == "dref" && ++number == location.mDataReference) {
            const std::optional<FullBoxHead> head = ReadFullBoxHead(file, box);
            return head && (head->mFlags & 1U) != 0;
        }
    }
    return false;
}

ItemTable ReadItemTable(const ByteSource& file, const Box& meta) {
    return TableReader(file, meta).Read();
}

std::optional<std::vector<Range>> ItemPieces(const ByteSource& file, const ItemTable& table, std::uint32_t item) {
    return PieceCollector(file, table).Of(item, 0);
}

}  // namespace zephmetadata::media
