#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/containers/boxes/boxes.h"

/// Items of a "meta" box (ISO/IEC 14496-12, 8.11): images, thumbnails and metadata of HEIF files, as they are listed.
namespace zephmetadata::media {

struct ItemExtent {
    std::uint64_t mIndex = 0;
    std::uint64_t mOffset = 0;
    std::uint64_t mLength = 0;
};

/// Where offsets of an item count from.
enum class ItemSource : std::uint8_t { kFile = 0, kItemData = 1, kOtherItem = 2 };

struct ItemLocation {
    std::uint32_t mItem = 0;
    std::uint16_t mMethod = 0;  ///< an ItemSource in its low four bits, the others are reserved
    std::uint16_t mDataReference = 0;
    std::uint64_t mBase = 0;
    std::vector<ItemExtent> mExtents;

    bool IsIn(ItemSource source) const { return (mMethod & 0xFU) == static_cast<unsigned>(source); }
};

/// An "iloc" box.
struct ItemLocations {
    std::uint8_t mVersion = 0;
    std::uint32_t mFlags = 0;
    std::uint8_t mOffsetBytes = 4;
    std::uint8_t mLengthBytes = 4;
    std::uint8_t mBaseBytes = 0;
    std::uint8_t mIndexBytes = 0;  ///< reserved in version 0
    std::vector<ItemLocation> mItems;
    std::string mRest;  ///< bytes behind the last item

    const ItemLocation* Find(std::uint32_t item) const;
};

/// From the contents of the box; absent when they are damaged.
std::optional<ItemLocations> ReadItemLocations(std::string_view contents);
/// The whole box. Numbers have to fit their fields.
std::string ItemLocationsBox(const ItemLocations& box);

/// An "infe" box.
struct ItemInfo {
    std::uint32_t mItem = 0;
    std::string mType;             ///< four characters; "mime" for the versions that have none
    std::string mContentType;      ///< of a mime item
    std::string mContentEncoding;  ///< likewise; empty for none
    bool mIsProtected = false;
    Box mBox;

    bool IsXMP() const { return mType == "mime" && mContentType == "application/rdf+xml"; }
    bool IsExif() const { return mType == "Exif"; }
};

/// One reference box within an "iref" box.
struct ItemReference {
    std::string mType;
    std::uint32_t mFrom = 0;
    std::vector<std::uint32_t> mTo;
    Box mBox;  ///< its parent is the index of the "iref" box in the tree
};

/// A "meta" box.
struct ItemTable {
    Box mMeta;
    BoxList mTree;  ///< of the boxes in it, some with what they hold
    std::optional<std::uint32_t> mPrimary;
    std::vector<ItemInfo> mItems;
    ItemLocations mLocations;
    std::vector<ItemReference> mReferences;  ///< of all "iref" boxes: some files have two
    /// Numbers of items, groups of them (and tracks, which the caller adds): one name space in many files.
    std::vector<std::uint32_t> mUsedNumbers;
    std::vector<std::uint32_t> mBoundItems;  ///< that have properties or belong to a group; an item may be there twice
    std::string mDamage;                     ///< empty when everything could be read

    const ItemInfo* Find(std::uint32_t item) const;
    bool Refers(std::string_view type, std::uint32_t from, std::uint32_t to) const;
    /// Whether there are references of the type from the item.
    bool HasReference(std::string_view type, std::uint32_t from) const;
    /// Whether an item can go: no other one has it for a part, and it has no properties.
    bool IsUnbound(std::uint32_t item) const;
    /// Whether data of the location lies in this very file (8.7.2: a data reference may lead to another one).
    bool IsInThisFile(const ByteSource& file, const ItemLocation& location) const;
};

ItemTable ReadItemTable(const ByteSource& file, const Box& meta);

/// An extent as a range of the file or of the item data; absent when its numbers overflow. The length is 0 for an extent
/// that is the whole of its source.
std::optional<Range> ExtentRange(const ItemLocation& location, const ItemExtent& extent);
/// The pieces of the file that make up an item, empty when they do not all lie in this file.
std::optional<std::vector<Range>> ItemPieces(const ByteSource& file, const ItemTable& table, std::uint32_t item);

}  // namespace zephmetadata::media
