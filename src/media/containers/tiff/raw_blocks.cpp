#include "media/containers/tiff/raw_blocks.h"

#include <algorithm>
#include <iterator>

#include "media/containers/jpeg/jpeg.h"
#include "media/containers/tiff/tiff_blocks.h"
#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

void MarkDamaged(FileBlocks& blocks, const char* detail) {
    blocks.mStatus = FileStatus::kFileStatus_DamagedFile;
    blocks.mDetail = detail;
}

/// Adds what a preview says, behind what is there. Whether it is sound is of no matter: it is not written.
void AddPreview(const std::shared_ptr<const ByteSource>& file, const Range& range, FileBlocks& blocks) {
    if (range.mSize == 0 || !IsWithin(range, file->Size())) {
        MarkDamaged(blocks, "The preview of the raw file lies outside of it.");
        return;
    }
    FileBlocks found = ReadJPEGBlocks(std::make_shared<WindowSource>(file, range));
    if (!blocks.mXMP) {
        blocks.mXMP = std::move(found.mXMP);
        blocks.mExtendedXMP = std::move(found.mExtendedXMP);
        blocks.mIsWhole = found.mIsWhole;
    }
    if (!blocks.mIIM) {
        blocks.mIIM = std::move(found.mIIM);
        blocks.mIIMDigest = std::move(found.mIIMDigest);
    }
    std::move(found.mExif.begin(), found.mExif.end(), std::back_inserter(blocks.mExif));
}

/// The packet in any directory of the stream.
void FindPacket(const ByteSource& file, FileBlocks& blocks) {
    const PagedSource pages(file);
    const std::optional<TiffHeader> header = ReadTiffHeader(pages);
    if (!header) {
        return;
    }
    WalkTiff(pages, *header, [&](const TiffTable& table, std::optional<TiffDirectory>) {
        const TiffEntry* const entry = blocks.mXMP ? nullptr : table.Find(kTiffTagXMP);
        if (entry != nullptr && entry->mPlace.mSize > 0 && entry->mPlace.mSize <= kMaxBlockBytes) {
            blocks.mXMP = ReadRange(file, entry->mPlace);
        }
    });
}

}  // namespace

void ReadTiffRaw(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks) {
    const TiffFields fields = ReadTiff(*file);
    if (!fields.mIsTiff || !fields.mIsWhole) {
        MarkDamaged(blocks, "A directory or a value of the raw file lies outside of it.");
    }
    if (fields.mIsTiff) {
        AddTiffBlocks(*file, fields, blocks);
        FindPacket(*file, blocks);
        blocks.mExif.push_back({file, TiffDirectory::kMain});
    }
}

void ReadRW2(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks) {
    constexpr std::uint16_t kPreview = 0x002E;
    FileBlocks own;
    ReadTiffRaw(file, own);
    // The directory of the file itself gives some tags of TIFF other meanings, so that the preview comes first.
    const TiffFields fields = ReadTiff(*file);
    if (const TiffField* const preview = fields.Find(TiffDirectory::kMain, kPreview); preview != nullptr) {
        AddPreview(file, preview->mPlace, blocks);
    }
    if (own.mStatus != FileStatus::kFileStatus_Success) {
        MarkDamaged(blocks, own.mDetail.c_str());
    }
    if (own.mXMP) {
        blocks.mXMP = std::move(own.mXMP);
        blocks.mExtendedXMP.clear();
        blocks.mIsWhole = true;
    }
    if (own.mIIM) {
        blocks.mIIM = std::move(own.mIIM);
        blocks.mIIMDigest = std::move(own.mIIMDigest);
    }
    std::move(own.mExif.begin(), own.mExif.end(), std::back_inserter(blocks.mExif));
}

void ReadRAF(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks) {
    constexpr std::uint64_t kPlaceOfPreview = 84;  // offset and size
    const auto place = ReadRange(*file, {kPlaceOfPreview, 8});
    if (!place) {
        MarkDamaged(blocks, "The header of the raw file is cut off.");
        return;
    }
    AddPreview(file, {Get32(*place, 0), Get32(*place, 4)}, blocks);
}

void ReadMRW(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks) {
    constexpr std::uint64_t kHeadBytes = 8;  // of the file and of each block: name, size
    const auto size = ReadRange(*file, {4, 4});
    const std::uint64_t end = size ? kHeadBytes + Get32(*size, 0) : 0;
    for (std::uint64_t at = kHeadBytes; at + kHeadBytes <= end;) {
        const auto head = ReadRange(*file, {at, kHeadBytes});
        if (!head) {
            break;
        }
        const Range data{at + kHeadBytes, Get32(*head, 4)};
        if (head->compare(0, 4, std::string_view("\0TTW", 4)) == 0 && IsWithin(data, file->Size())) {
            ReadTiffRaw(std::make_shared<WindowSource>(file, data), blocks);
            return;
        }
        at = data.End();
    }
    MarkDamaged(blocks, "The raw file has no block of directories.");
}

void ReadX3F(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks) {
    constexpr ByteOrder kOrder = ByteOrder::kLittle;
    constexpr std::uint64_t kHeadBytes = 12;      // of the directory: name, version, count; and of each of its entries
    constexpr std::uint32_t kMaxSections = 1000;  // real files have a dozen
    constexpr std::uint64_t kImageHeadBytes = 28;
    constexpr std::uint32_t kFormatJPEG = 18;
    const std::uint64_t size = file->Size();
    const auto pointer = ReadRange(*file, {size < 4 ? 0 : size - 4, 4});
    const std::uint64_t directory = pointer ? Get32(*pointer, 0, kOrder) : 0;
    const auto head = ReadRange(*file, {directory, kHeadBytes});
    if (!head || !head->starts_with("SECd")) {
        MarkDamaged(blocks, "The directory of the raw file lies outside of it.");
        return;
    }
    const std::uint32_t count = std::min(Get32(*head, 8, kOrder), kMaxSections);
    for (std::uint32_t i = 0; i < count; ++i) {
        const auto entry = ReadRange(*file, {directory + kHeadBytes * (i + 1), kHeadBytes});
        if (!entry) {
            break;
        }
        const Range section{Get32(*entry, 0, kOrder), Get32(*entry, 4, kOrder)};
        const auto image = ReadRange(*file, {section.mOffset, kImageHeadBytes});
        const bool isJPEG = entry->compare(8, 3, "IMA") == 0 && image && Get32(*image, 12, kOrder) == kFormatJPEG;
        if (isJPEG && section.mSize > kImageHeadBytes) {
            AddPreview(file, {section.mOffset + kImageHeadBytes, section.mSize - kImageHeadBytes}, blocks);
        }
    }
}

}  // namespace zephmetadata::media
