#include "media/containers/boxes/heif_blocks.h"

#include <algorithm>

#include "media/containers/exif_payload.h"

namespace zephmetadata::media {

namespace {

PreparedChange Refused(const char* why, FileStatus status = FileStatus::kFileStatus_CannotCarryXMP) {
    return {{}, status, why};
}

}  // namespace

PreparedChange PrepareXMPItem(const ByteSource& file, const ItemTable& table, const HeifLayout& layout,
                              const std::string& element) {
    const MetadataItem& xmp = layout.mXMP;
    if (element.empty()) {
        const bool canGo = !xmp.mItem || table.IsUnbound(*xmp.mItem);
        return canGo ? PreparedChange{{xmp.mItem.has_value(), {}, false}}
                     : Refused("other items depend on the XMP item");
    }
    // An item without a location has no data yet.
    const bool isThere = xmp.mItem && table.mLocations.Find(*xmp.mItem) != nullptr;
    std::optional<Compression> how = Compression::kNone;
    if (isThere && xmp.Size() > 0) {
        const std::optional<ItemText> old = ItemXMP(file, table, *xmp.mItem);
        how = old ? std::optional(old->mHow) : std::nullopt;
    } else if (xmp.mItem) {
        how = ItemCompression(*table.Find(*xmp.mItem));
    }
    if (!how || (xmp.mItem && table.Find(*xmp.mItem)->mIsProtected)) {
        return Refused("the XMP item cannot be read");
    }
    if (*how != Compression::kNone) {
        // White space would make no room in compressed bytes.
        std::optional<std::string> data = Compressed(ShortPacket(element), *how);
        return data ? PreparedChange{{false, std::move(data), false}} : Refused("the packet cannot be compressed");
    }
    const std::uint64_t room = xmp.mIsSole ? xmp.Size() : 0;
    std::string packet = FittingPacket(element, room, layout.IsAtEnd(xmp));
    const bool fits = packet.size() == room;
    return {{false, std::move(packet), fits}};
}

PreparedChange PrepareExifItem(const ByteSource& file, const ItemTable& table, const HeifLayout& layout,
                               std::span<const TiffEdit> edits) {
    const MetadataItem& exif = layout.mExif;
    const ItemInfo* const info = exif.mItem ? table.Find(*exif.mItem) : nullptr;
    if (!exif.mItem && OnlyRemove(edits)) {
        return {};
    }
    const bool isThere = exif.mItem && table.mLocations.Find(*exif.mItem) != nullptr;
    const std::optional<std::string> old = isThere ? ItemData(file, table, *exif.mItem, kMaxBlockBytes) : std::string();
    if (!old || (info != nullptr && info->mIsProtected)) {
        return Refused("the Exif item cannot be read");
    }
    std::optional<std::string> data = EditedExifPayload(*old, edits, kNoTiffOffset);
    if (!data) {
        return Refused("the Exif block is damaged", FileStatus::kFileStatus_DamagedFile);
    }
    const std::uint64_t room = exif.Size();
    const bool fits = exif.mIsSole && data->size() <= room;
    if (fits) {
        // What follows a TIFF stream is nothing to its readers.
        data->resize(static_cast<std::size_t>(room), '\0');
    }
    return {{false, std::move(data), fits}};
}

}  // namespace zephmetadata::media
