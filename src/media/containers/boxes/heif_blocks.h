#pragma once

#include <optional>
#include <string>

#include "media/containers/boxes/heif_layout.h"
#include "media/containers/container.h"

namespace zephmetadata::media {

/// What becomes of the data of a metadata item.
struct ItemChange {
    bool mIsRemoved = false;
    std::optional<std::string> mData;  ///< absent when it stays
    bool mIsInPlace = false;           ///< it has the size of the item's pieces and goes there

    bool IsMoved() const { return mIsRemoved || (mData && !mIsInPlace); }
};

/// Why it cannot be changed, or nothing.
struct PreparedChange {
    ItemChange mChange;
    FileStatus mStatus = FileStatus::kFileStatus_Success;
    const char* mWhy = "";
};

/// The new data of the XMP item, in its place where it fits; @p element is empty to remove it.
PreparedChange PrepareXMPItem(const ByteSource& file, const ItemTable& table, const HeifLayout& layout,
                              const std::string& element);
PreparedChange PrepareExifItem(const ByteSource& file, const ItemTable& table, const HeifLayout& layout,
                               std::span<const TiffEdit> edits);

}  // namespace zephmetadata::media
