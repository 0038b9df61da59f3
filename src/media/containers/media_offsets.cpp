#include "media/containers/media_offsets.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

/// Tables larger than this are not read: a day of film has some million chunks.
constexpr std::uint64_t kMaxTableBytes = std::uint64_t{256} << 20U;

constexpr std::array<std::string_view, 9> kHolders = {"moov", "trak", "mdia", "minf", "stbl",
                                                      "dinf", "moof", "traf", "mfra"};

std::optional<std::uint64_t> HolderAt(const ByteSource& /*file*/, const Box& box, const BoxList& /*parents*/) {
    if (box.mType == "dref") {
        return 8;
    }
    const bool isHolder = std::find(kHolders.begin(), kHolders.end(), box.mType) != kHolders.end();
    return isHolder ? std::optional<std::uint64_t>(0) : std::nullopt;
}

/// Where the offsets of a full box stand in its contents.
struct TableShape {
    std::size_t mAt = 0;
    std::uint64_t mCount = 0;
    std::size_t mBytes = 4;
    std::size_t mStride = 4;
};

/// "stco" and "co64" (8.7.5).
std::optional<TableShape> ChunkShape(std::string_view contents, std::size_t bytes) {
    if (contents.size() < 8) {
        return std::nullopt;
    }
    return TableShape{8, Get32(contents, 4), bytes, bytes};
}

/// "saio" (8.7.9): two fields more when the lowest flag is set.
std::optional<TableShape> AuxiliaryShape(std::string_view contents) {
    if (contents.size() < 4) {
        return std::nullopt;
    }
    const std::size_t at = (Get8(contents, 3) & 1U) != 0 ? 12 : 4;
    if (contents.size() < at + 4) {
        return std::nullopt;
    }
    const std::size_t bytes = Get8(contents, 0) == 0 ? 4 : 8;
    return TableShape{at + 4, Get32(contents, at), bytes, bytes};
}

/// "tfra" (8.8.10): time, offset of the fragment, and three numbers of one to four bytes.
std::optional<TableShape> RandomAccessShape(std::string_view contents) {
    if (contents.size() < 16) {
        return std::nullopt;
    }
    const std::size_t bytes = Get8(contents, 0) == 0 ? 4 : 8;
    const std::uint32_t sizes = Get32(contents, 8);
    const std::size_t numbers = (sizes >> 4U & 3U) + (sizes >> 2U & 3U) + (sizes & 3U) + 3;
    return TableShape{16 + bytes, Get32(contents, 12), bytes, 2 * bytes + numbers};
}

/// "tfhd" (8.8.7): a base offset behind the track number when the lowest flag is set.
std::optional<TableShape> FragmentShape(std::string_view contents) {
    if (contents.size() < 8) {
        return std::nullopt;
    }
    return TableShape{8, Get8(contents, 3) & 1U, 8, 8};
}

class TablesReader {
public:
    TablesReader(const ByteSource& file, OffsetTables& result) : mFile(file), mResult(result) {}

    void Read(const Box& box) {
        mTree = ReadBoxTree(mFile, box.mWhole, &HolderAt);
        mResult.mIsWhole = mResult.mIsWhole && mTree.mIsWhole && mTree.mRest.mSize == 0;
        for (const Box& part : mTree.mBoxes) {
            ReadTable(part);
        }
    }

private:
    void ReadTable(const Box& box) {
        if (box.mType == "tkhd") {
            ReadTrackNumber(box);
        } else if (box.mType == "meta") {
            mResult.mMetas.push_back(box);
        }
        const bool isTable = box.mType == "stco" || box.mType == "co64" || box.mType == "tfra" || box.mType == "tfhd" ||
                             (box.mType == "saio" && ParentType(box) == "stbl");
        if (!isTable || IsOfOtherFile(box)) {
            return;
        }
        const Range place = box.Contents();
        const std::optional<std::string> contents =
            place.mSize <= kMaxTableBytes ? ReadRange(mFile, place) : std::nullopt;
        const std::optional<TableShape> shape = contents ? Shape(box.mType, *contents) : std::nullopt;
        if (!shape || !Add(place, *contents, *shape)) {
            mResult.mIsWhole = false;
        }
    }

    /// A track's number comes behind two times of four or eight bytes (8.3.2).
    void ReadTrackNumber(const Box& box) {
        const std::string head = ReadUpTo(mFile, box.Contents().mOffset, 24);
        const std::size_t at = !head.empty() && Get8(head, 0) == 1 ? 20 : 12;
        if (head.size() >= at + 4) {
            mResult.mTracks.push_back(Get32(head, at));
        }
    }

    static std::optional<TableShape> Shape(std::string_view type, std::string_view contents) {
        if (type == "saio") {
            return AuxiliaryShape(contents);
        }
        if (type == "tfra") {
            return RandomAccessShape(contents);
        }
        return type == "tfhd" ? FragmentShape(contents) : ChunkShape(contents, type == "stco" ? 4 : 8);
    }

    bool Add(const Range& place, std::string_view contents, const TableShape& shape) {
        if (shape.mCount == 0) {
            return true;
        }
        const std::uint64_t size = (shape.mCount - 1) * shape.mStride + shape.mBytes;
        if (!IsWithin({shape.mAt, size}, contents.size())) {
            return false;
        }
        OffsetTable table{{place.mOffset + shape.mAt, size}, shape.mBytes, shape.mStride, {}};
        for (std::uint64_t i = 0; i < shape.mCount; ++i) {
            const std::size_t at = shape.mAt + static_cast<std::size_t>(i) * shape.mStride;
            table.mOffsets.push_back(GetNumber(contents, at, shape.mBytes, ByteOrder::kBig));
        }
        mResult.mTables.push_back(std::move(table));
        return true;
    }

    std::string_view ParentType(const Box& box) const {
        return box.mParent == kNoBox ? std::string_view() : mTree.mBoxes[box.mParent].mType;
    }

    /// Whether the samples of the box's track lie elsewhere: a data reference that is not of this file.
    bool IsOfOtherFile(const Box& box) const {
        if (box.mParent == kNoBox || ParentType(box) != "stbl") {
            return false;
        }
        const Box* const dinf = mTree.FindIn(mTree.mBoxes[box.mParent].mParent, "dinf");
        const Box* const dref = dinf == nullptr ? nullptr : mTree.FindIn(mTree.IndexOf(*dinf), "dref");
        return dref != nullptr && std::any_of(mTree.mBoxes.begin(), mTree.mBoxes.end(), [&](const Box& entry) {
                   const auto head =
                       entry.mParent == mTree.IndexOf(*dref) ? ReadFullBoxHead(mFile, entry) : std::nullopt;
                   return head && (head->mFlags & 1U) == 0;
               });
    }

    const ByteSource& mFile;
    OffsetTables& mResult;
    BoxList mTree;
};

/// The bytes of a table with its offsets moved; absent when one does not fit or goes nowhere.
std::optional<std::string> Moved(const ByteSource& file, const OffsetTable& table, const OffsetMap& map) {
    std::optional<std::string> bytes = ReadRange(file, table.mPlace);
    for (std::size_t i = 0; bytes && i < table.mOffsets.size(); ++i) {
        const std::optional<std::uint64_t> offset = map.NewOffset(table.mOffsets[i]);
        if (!offset || (table.mBytes < 8 && *offset >> (8 * table.mBytes) != 0)) {
            return std::nullopt;
        }
        PutNumber(*bytes, i * table.mStride, *offset, table.mBytes, ByteOrder::kBig);
    }
    return bytes;
}

}  // namespace

bool HoldsOffsets(const Box& box) {
    return box.mType == "moov" || box.mType == "moof" || box.mType == "mfra";
}

OffsetTables ReadOffsetTables(const ByteSource& file, const BoxList& top) {
    OffsetTables tables;
    TablesReader reader(file, tables);
    for (const Box& box : top.mBoxes) {
        if (HoldsOffsets(box)) {
            reader.Read(box);
        }
    }
    return tables;
}

bool FollowPlan(const ByteSource& file, const OffsetTables& tables, Plan& plan) {
    std::vector<std::optional<std::string>> moved;
    const OffsetMap map(plan);
    for (const OffsetTable& table : tables.mTables) {
        moved.push_back(Moved(file, table, map));
        if (!moved.back()) {
            return false;
        }
    }
    // Only now: the map is of the plan as it was.
    for (std::size_t i = 0; i < moved.size(); ++i) {
        const Range& place = tables.mTables[i].mPlace;
        if (ReadRange(file, place) != moved[i]) {
            plan.Replace(place, *std::move(moved[i]), Touch::kStructure);
        }
    }
    return true;
}

}  // namespace zephmetadata::media
