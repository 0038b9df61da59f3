#include "media/containers/boxes/heif_file.h"

#include <algorithm>

#include "media/containers/container.h"

namespace zephmetadata::media {

namespace {

/// How well an item suits as metadata of the primary image; -1 for that of another one, a gain map or a thumbnail.
int Rank(const ItemTable& table, std::uint32_t item) {
    if (!table.HasReference("cdsc", item) || !table.mPrimary) {
        return 1;
    }
    if (table.Refers("cdsc", item, *table.mPrimary)) {
        return 2;
    }
    // Some writers name the tiles that the primary image is put together from.
    const bool isOfPart =
        std::any_of(table.mReferences.begin(), table.mReferences.end(), [&](const ItemReference& parts) {
            return parts.mType == "dimg" && parts.mFrom == *table.mPrimary &&
                   std::any_of(parts.mTo.begin(), parts.mTo.end(),
                               [&](std::uint32_t part) { return table.Refers("cdsc", item, part); });
        });
    return isOfPart ? 0 : -1;
}

template <typename Kind>
std::optional<std::uint32_t> Chosen(const ItemTable& table, Kind isKind) {
    std::optional<std::uint32_t> best;
    int bestRank = -1;
    for (const ItemInfo& info : table.mItems) {
        const int rank = isKind(info) ? Rank(table, info.mItem) : -1;
        if (rank > bestRank) {
            best = info.mItem;
            bestRank = rank;
        }
    }
    return best;
}

/// Whether all extents lie where they can.
bool AreWithin(const ByteSource& file, const ItemTable& table) {
    const Box* const data = table.mTree.FindIn(kNoBox, "idat");
    for (const ItemLocation& location : table.mLocations.mItems) {
        const bool isInFile = location.IsIn(ItemSource::kFile) && table.IsInThisFile(file, location);
        if (!isInFile && !location.IsIn(ItemSource::kItemData)) {
            continue;
        }
        const std::uint64_t size = isInFile ? file.Size() : data != nullptr ? data->Contents().mSize : 0;
        for (const ItemExtent& extent : location.mExtents) {
            const std::optional<Range> range = ExtentRange(location, extent);
            if (!range || !IsWithin(*range, size)) {
                return false;
            }
        }
    }
    return true;
}

std::string Damage(const ByteSource& file, const HeifFile& heif) {
    if (IsCutBox(file, heif.mTop.mRest)) {
        return "the file is cut off";
    }
    const OffsetTables samples = ReadOffsetTables(file, heif.mTop);
    const bool areWithin = std::all_of(samples.mTables.begin(), samples.mTables.end(), [&](const OffsetTable& table) {
        return std::all_of(table.mOffsets.begin(), table.mOffsets.end(),
                           [&file](std::uint64_t offset) { return offset <= file.Size(); });
    });
    if (!samples.mIsWhole || !areWithin) {
        return "samples lie outside the file, or their tables are cut off";
    }
    if (!heif.mTable) {
        return heif.mTop.Find("moov") == nullptr ? "there is neither a meta box nor a film in the file" : "";
    }
    if (!heif.mTable->mDamage.empty()) {
        return heif.mTable->mDamage;
    }
    return AreWithin(file, *heif.mTable) ? "" : "an item lies outside the file";
}

}  // namespace

HeifFile ReadHeifFile(const ByteSource& file) {
    HeifFile heif;
    heif.mTop = ReadBoxes(file, {0, file.Size()});
    if (const Box* const meta = heif.mTop.Find("meta")) {
        heif.mTable = ReadItemTable(file, *meta);
        heif.mXMP = Chosen(*heif.mTable, [](const ItemInfo& info) { return info.IsXMP(); });
        heif.mExif = Chosen(*heif.mTable, [](const ItemInfo& info) { return info.IsExif(); });
    }
    heif.mXMPBox = heif.mTop.FindUuid(kXMPUuid);
    heif.mDamage = Damage(file, heif);
    return heif;
}

std::optional<std::string> ItemData(const ByteSource& file, const ItemTable& table, std::uint32_t item,
                                    std::uint64_t most) {
    const std::optional<std::vector<Range>> pieces = ItemPieces(file, table, item);
    std::string bytes;
    for (const Range& piece : pieces.value_or(std::vector<Range>())) {
        const std::optional<std::string> part =
            piece.mSize <= most - bytes.size() ? ReadRange(file, piece) : std::nullopt;
        if (!part) {
            return std::nullopt;
        }
        bytes += *part;
    }
    return pieces ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<Compression> ItemCompression(const ItemInfo& info) {
    // The names that HTTP has for encodings (RFC 9110, 8.4.1), which ISO/IEC 14496-12 refers to.
    const std::string& encoding = info.mContentEncoding;
    if (encoding.empty()) {
        return Compression::kNone;
    }
    if (encoding == "deflate") {
        return Compression::kZlib;
    }
    if (encoding == "gzip" || encoding == "x-gzip") {
        return Compression::kGzip;
    }
    return encoding == "br" ? std::optional(Compression::kBrotli) : std::nullopt;
}

std::optional<ItemText> ItemXMP(const ByteSource& file, const ItemTable& table, std::uint32_t item) {
    const ItemInfo* const info = table.Find(item);
    const std::optional<Compression> how =
        info != nullptr && !info->mIsProtected ? ItemCompression(*info) : std::nullopt;
    const std::optional<std::string> data = how ? ItemData(file, table, item, kMaxBlockBytes) : std::nullopt;
    if (!data) {
        return std::nullopt;
    }
    const std::size_t most = how == Compression::kNone ? std::size_t{kMaxBlockBytes} : kMaxDecompressedBytes;
    if (std::optional<std::string> text = Decompressed(*data, *how, most)) {
        return ItemText{*std::move(text), *how};
    }
    // "deflate" is a zlib stream; some write a bare one.
    std::optional<std::string> text =
        *how == Compression::kZlib ? Decompressed(*data, Compression::kDeflate, most) : std::nullopt;
    return text ? std::optional(ItemText{*std::move(text), Compression::kDeflate}) : std::nullopt;
}

}  // namespace zephmetadata::media
