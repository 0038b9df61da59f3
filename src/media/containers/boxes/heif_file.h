#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/containers/block_compression.h"
#include "media/containers/boxes/heif_items.h"
#include "media/containers/media_offsets.h"
#include "media/containers/xmp_packets.h"

namespace zephmetadata::media {

/// Where a HEIF file (ISO/IEC 23008-12) keeps what.
struct HeifFile {
    BoxList mTop;
    std::optional<ItemTable> mTable;     ///< of the "meta" box at the top; sequences may have none
    std::optional<std::uint32_t> mXMP;   ///< the item that describes the primary image
    std::optional<std::uint32_t> mExif;  ///< likewise
    const Box* mXMPBox = nullptr;        ///< a "uuid" box at the top with XMP
    std::string mDamage;                 ///< empty for a sound file
};

HeifFile ReadHeifFile(const ByteSource& file);

/// The bytes of an item, of at most @p most; absent when it has none or they cannot be read.
std::optional<std::string> ItemData(const ByteSource& file, const ItemTable& table, std::uint32_t item,
                                    std::uint64_t most);

/// How the data of an item is compressed; absent for a way that is not known.
std::optional<Compression> ItemCompression(const ItemInfo& info);

/// The XMP of an item, which may be compressed.
struct ItemText {
    std::string mText;
    Compression mHow = Compression::kNone;
};
/// Absent when it is compressed in a way that is not known, damaged or protected.
std::optional<ItemText> ItemXMP(const ByteSource& file, const ItemTable& table, std::uint32_t item);

}  // namespace zephmetadata::media
