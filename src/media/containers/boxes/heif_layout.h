#pragma once

#include <array>
#include <optional>
#include <vector>

#include "media/containers/boxes/heif_file.h"

namespace zephmetadata::media {

/// Instead of the number of a track's table: the one of the file.
inline constexpr std::size_t kFileTable = static_cast<std::size_t>(-1);

/// An item of a track that has the very data of one of the file: sequences list their metadata twice.
struct TwinItem {
    std::size_t mTable = 0;  ///< of HeifLayout::mTrackTables
    std::uint32_t mItem = 0;
};

/// A metadata item of a file, or of none as long as it is not there.
struct MetadataItem {
    std::optional<std::uint32_t> mItem;
    std::vector<Range> mPieces;  ///< where its data lies
    std::vector<TwinItem> mTwins;
    bool mIsSole = false;  ///< nothing else has a part in the pieces, and they lie where data lies

    std::uint64_t Size() const;
};

/// Which stretches of a HEIF file may be written to.
struct HeifLayout {
    OffsetTables mTables;
    std::vector<ItemTable> mTrackTables;  ///< of films and tracks
    MetadataItem mXMP;
    MetadataItem mExif;
    /// The last box but those that readers look for from the end of the file on.
    const Box* mLast = nullptr;
    const Box* mData = nullptr;  ///< the same if it holds data and can grow
    /// The metadata items at the end of it that are one piece each, in their order.
    std::vector<const MetadataItem*> mAtEnd;

    HeifLayout(const ByteSource& file, const HeifFile& heif);
    HeifLayout(const HeifLayout&) = delete;
    HeifLayout& operator=(const HeifLayout&) = delete;
    ~HeifLayout() = default;

    bool IsAtEnd(const MetadataItem& item) const;
    /// Whether no item but the given one and its twins, and no sample, has a part in the range.
    bool IsFree(const Range& range, const MetadataItem& item = {}) const;
    /// Takes what the meta box grows from free space behind it, or leaves such space when it shrinks.
    void KeepPlaces(Plan& plan, std::uint64_t metaSize) const;

private:
    void Own(const ByteSource& file, const ItemTable& table, std::size_t number);
    MetadataItem Found(const ByteSource& file, std::optional<std::uint32_t> item) const;
    std::vector<TwinItem> Twins(const ByteSource& file, const MetadataItem& item) const;
    bool IsData(const Range& piece) const;
    void FindEnd();

    struct Owned {
        TwinItem mItem;  // of a track or of kFileTable
        Range mRange;
    };
    const HeifFile& mHeif;
    std::vector<Owned> mOwned;  // what each item has a part in
};

/// The pieces of all items but metadata, and the chunks of samples.
std::vector<Range> HeifReferences(const ByteSource& file, const HeifFile& heif);

}  // namespace zephmetadata::media
