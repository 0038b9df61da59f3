#include "media/containers/boxes/heif.h"

#include <algorithm>
#include <array>

#include "media/bytes.h"
#include "media/containers/boxes/heif_edit.h"
#include "media/containers/boxes/heif_layout.h"
#include "media/containers/exif_payload.h"

namespace zephmetadata::media {

namespace {

/// Brands of ISO/IEC 23008-12 (annexes B, E, F, H ...), ISO/IEC 23000-22 and AV1 Image File Format.
constexpr std::array<std::string_view, 19> kBrands = {"mif1", "mif2", "msf1", "heic", "heix", "heim", "heis",
                                                      "hevc", "hevx", "hevm", "hevs", "avci", "avcs", "avif",
                                                      "avis", "jpeg", "jpgs", "j2ki", "j2is"};

bool IsBrand(std::string_view brand) {
    return std::find(kBrands.begin(), kBrands.end(), brand) != kBrands.end();
}

/// The Exif of an item as a stream: a window of the file where it lies in one piece.
std::optional<ExifStream> ExifOf(const std::shared_ptr<const ByteSource>& file, const ItemTable& table,
                                 std::uint32_t item) {
    const ItemInfo* const info = table.Find(item);
    const std::optional<std::vector<Range>> pieces = ItemPieces(*file, table, item);
    if (info->mIsProtected || !pieces || pieces->empty()) {
        return std::nullopt;
    }
    std::shared_ptr<const ByteSource> data;
    if (pieces->size() == 1) {
        data = std::make_shared<WindowSource>(file, pieces->front());
    } else if (std::optional<std::string> bytes = ItemData(*file, table, item, kMaxBlockBytes)) {
        data = std::make_shared<MemorySource>(*std::move(bytes));
    } else {
        return std::nullopt;
    }
    return ExifInPayload(data);
}

void ReadXMP(const ByteSource& file, const HeifFile& heif, FileBlocks& blocks) {
    if (heif.mXMP) {
        std::optional<ItemText> text = ItemXMP(file, *heif.mTable, *heif.mXMP);
        if (text) {
            blocks.mXMP = std::move(text->mText);
        } else if (heif.mDamage.empty() && heif.mTable->mLocations.Find(*heif.mXMP) != nullptr &&
                   ItemPieces(file, *heif.mTable, *heif.mXMP) != std::vector<Range>()) {
            blocks.mWhyReadOnly =
                "the XMP item cannot be read: it is protected, compressed in an unknown way or elsewhere";
        }
    } else if (heif.mXMPBox != nullptr && heif.mXMPBox->Contents().mSize <= kMaxBlockBytes) {
        blocks.mXMP = ReadRange(file, heif.mXMPBox->Contents());
    }
    // Empty for a place that was kept for a packet.
    if (blocks.mXMP && blocks.mXMP->empty()) {
        blocks.mXMP.reset();
    }
}

class Heif : public Container {
public:
    FileBlocks Read(const std::shared_ptr<const ByteSource>& file) const override {
        const PagedSource paged(*file);
        const HeifFile heif = ReadHeifFile(paged);
        FileBlocks blocks;
        if (!heif.mDamage.empty()) {
            blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
            blocks.mDetail = heif.mDamage;
        }
        ReadXMP(paged, heif, blocks);
        if (heif.mExif) {
            if (std::optional<ExifStream> exif = ExifOf(file, *heif.mTable, *heif.mExif)) {
                blocks.mExif.push_back(*std::move(exif));
            }
        }
        return blocks;
    }

    PlannedEdit PlanEdit(const std::shared_ptr<const ByteSource>& file, const BlockChanges& changes) const override {
        const PagedSource paged(*file);
        return PlanHeifEdit(paged, ReadHeifFile(paged), changes);
    }

    std::vector<Range> References(const ByteSource& file) const override {
        const PagedSource paged(file);
        return HeifReferences(paged, ReadHeifFile(paged));
    }
};

}  // namespace

bool IsHeif(std::string_view head) {
    if (head.size() < 16 || head.substr(4, 4) != "ftyp") {
        return false;
    }
    const std::string_view major = head.substr(8, 4);
    // A film that brings a still image along stays a film.
    if (IsBrand(major) || major == "qt  " || major == "crx ") {
        return IsBrand(major);
    }
    const std::size_t end = std::min<std::size_t>(head.size(), Get32(head, 0));
    for (std::size_t at = 16; at + 4 <= end; at += 4) {
        if (IsBrand(head.substr(at, 4))) {
            return true;
        }
    }
    return false;
}

const Container& HeifContainer() {
    static const Heif container;
    return container;
}

}  // namespace zephmetadata::media
