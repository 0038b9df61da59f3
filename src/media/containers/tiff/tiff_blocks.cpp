#include "media/containers/tiff/tiff_blocks.h"

#include "media/native/iim/image_resources.h"
#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

constexpr char kDatasetMarker = '\x1C';

/// Where the datasets end (IIM 4.2, chapter 1.6): marker, record, number, size; a size over 32767 tells the bytes of the
/// size that follows.
std::size_t EndOfDatasets(std::string_view bytes) {
    constexpr std::size_t kHeadBytes = 5;
    std::size_t at = 0;
    while (bytes.size() - at >= kHeadBytes && bytes[at] == kDatasetMarker) {
        std::uint64_t size = Get16(bytes, at + 3);
        std::size_t head = kHeadBytes;
        if ((size & 0x8000U) != 0) {
            const std::uint64_t sizeBytes = size & 0x7FFFU;
            if (sizeBytes > 4 || bytes.size() - at - kHeadBytes < sizeBytes) {
                break;
            }
            size = GetNumber(bytes, at + kHeadBytes, static_cast<std::size_t>(sizeBytes), ByteOrder::kBig);
            head += static_cast<std::size_t>(sizeBytes);
        }
        if (size > bytes.size() - at - head) {
            break;
        }
        at += head + static_cast<std::size_t>(size);
    }
    return at;
}

std::string WithoutZerosBehind(std::string datasets) {
    const std::size_t end = EndOfDatasets(datasets);
    if (datasets.find_first_not_of('\0', end) == std::string::npos) {
        datasets.resize(end);
    }
    return datasets;
}

/// What image resources say of IIM, where the file's own field does not.
void AddResources(std::string_view bytes, FileBlocks& blocks) {
    const ImageResources resources = ReadImageResources(bytes);
    const auto data = [&](std::uint16_t number) -> std::optional<std::string> {
        const ImageResource* const found = resources.Find(number);
        return found == nullptr ? std::nullopt
                                : std::optional(std::string(bytes.substr(found->mData.mOffset, found->mData.mSize)));
    };
    blocks.mIIMDigest = data(kResourceIIMDigest);
    if (!blocks.mIIM) {
        blocks.mIIM = data(kResourceIIM);
    }
}

}  // namespace

std::optional<std::string> TiffFieldInFile(const ByteSource& file, const TiffFields& fields, std::uint16_t tag) {
    const TiffField* const field = fields.Find(TiffDirectory::kMain, tag);
    return field == nullptr || field->mPlace.mSize > kMaxBlockBytes ? std::nullopt : ReadRange(file, field->mPlace);
}

std::optional<TiffIIM> TiffIIMInFile(const ByteSource& file, const TiffFields& fields) {
    std::optional<std::string> bytes = TiffFieldInFile(file, fields, kTiffTagIIM);
    if (!bytes) {
        return std::nullopt;
    }
    TiffIIM found;
    const bool isLong = fields.Find(TiffDirectory::kMain, kTiffTagIIM)->mType == TiffType::kLong;
    if (isLong && bytes->size() >= 4 && bytes->front() != kDatasetMarker && (*bytes)[3] == kDatasetMarker) {
        found.mIsTurnedAbout = true;
        bytes = WithSwappedUnits(*std::move(bytes), TiffType::kLong);
    }
    found.mDatasets = WithoutZerosBehind(*bytes);
    found.mPadded = *std::move(bytes);
    return found;
}

void AddTiffBlocks(const ByteSource& file, const TiffFields& fields, FileBlocks& blocks) {
    std::optional<std::string> packet = TiffFieldInFile(file, fields, kTiffTagXMP);
    if (packet && packet->find_first_not_of('\0') != std::string::npos) {
        blocks.mXMP = std::move(packet);
    }
    const std::optional<TiffIIM> found = TiffIIMInFile(file, fields);
    if (found && !found->mDatasets.empty()) {
        blocks.mIIM = found->mDatasets;
    }
    if (const auto resources = TiffFieldInFile(file, fields, kTiffTagImageResources)) {
        AddResources(*resources, blocks);
    }
    // Writers differ in whether the digest is of the padding, too.
    if (found && blocks.mIIM && blocks.mIIMDigest == IIMDigest(found->mPadded)) {
        blocks.mIIMDigest = IIMDigest(*blocks.mIIM);
    }
}

}  // namespace zephmetadata::media
