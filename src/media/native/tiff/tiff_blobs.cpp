#include <algorithm>
#include <array>

#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

/// More image strips than this in one directory are no picture.
constexpr std::uint64_t kMaxBlobs = 4'000'000;

/// Tags whose values say where bytes lie, and those that say how many (TIFF 6.0; without such a tag the size is told by
/// the bytes themselves).
struct OffsetTags {
    std::uint16_t mOffsets;
    std::uint16_t mSizes;
};
constexpr auto kOffsetTags = std::to_array<OffsetTags>({
    {kTagStripOffsets, 279},
    {324, 325},  // tiles
    {513, 514},  // JPEG interchange format
    {519, 0},    // JPEG tables
    {520, 0},
    {521, 0},
});
/// Tags whose values may hold offsets of their own.
constexpr auto kOpaqueTags = std::to_array<std::uint16_t>({kTagMakerNote, kTagDNGPrivateData});

}  // namespace

void AppendTiffBlobs(const ByteSource& stream, const TiffHeader& header, const TiffTable& table,
                     std::vector<Range>& blobs) {
    for (const OffsetTags& tags : kOffsetTags) {
        const TiffEntry* const offsets = table.Find(tags.mOffsets);
        if (offsets == nullptr) {
            continue;
        }
        const TiffEntry* const sizes = tags.mSizes == 0 ? nullptr : table.Find(tags.mSizes);
        const auto places = TiffIntegers(stream, header, *offsets, kMaxBlobs);
        const auto lengths =
            sizes == nullptr ? std::vector<std::uint64_t>() : TiffIntegers(stream, header, *sizes, places.size());
        for (std::size_t i = 0; i < places.size(); ++i) {
            blobs.push_back({places[i], i < lengths.size() ? lengths[i] : 0});
        }
    }
    for (const std::uint16_t tag : kOpaqueTags) {
        if (const TiffEntry* const entry = table.Find(tag); entry != nullptr && !entry->mIsInline) {
            blobs.push_back(entry->mPlace);
        }
    }
}

}  // namespace zephmetadata::media
