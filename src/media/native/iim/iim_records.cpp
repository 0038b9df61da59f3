#include "media/native/iim/iim_records.h"

#include <algorithm>
#include <optional>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

// IIM 4.2, chapter 1.5: a tag marker, record, number, and two bytes of size. With the highest bit set those are the size of
// the size that follows.
constexpr char kMarker = 0x1C;
constexpr std::size_t kTagBytes = 5;
constexpr std::uint16_t kIsExtended = 0x8000;
constexpr std::size_t kExtendedBytes = 4;

std::optional<IIMDataset> DatasetAt(std::string_view bytes, std::size_t at) {
    if (bytes.size() - at < kTagBytes || bytes[at] != kMarker) {
        return std::nullopt;
    }
    IIMDataset dataset{Get8(bytes, at + 1), Get8(bytes, at + 2), {at, kTagBytes}, {}};
    std::uint64_t size = Get16(bytes, at + 3);
    if ((size & kIsExtended) != 0) {
        const std::uint64_t digits = size & ~std::uint64_t{kIsExtended};
        if (digits == 0 || digits > sizeof size || digits > bytes.size() - at - kTagBytes) {
            return std::nullopt;
        }
        size = GetNumber(bytes, at + kTagBytes, digits, ByteOrder::kBig);
        dataset.mWhole.mSize += digits;
    }
    dataset.mData = {dataset.mWhole.End(), size};
    dataset.mWhole.mSize += size;
    return IsWithin(dataset.mData, bytes.size()) ? std::optional(dataset) : std::nullopt;
}

}  // namespace

IIMRecords ReadIIM(std::string_view datasets) {
    IIMRecords records{std::string(datasets), {}, true, IIMCharset::kUndeclared};
    std::size_t at = 0;
    while (records.mDatasets.size() < kMaxIIMDatasets) {
        const std::optional<IIMDataset> dataset = DatasetAt(datasets, at);
        if (!dataset) {
            break;
        }
        if (dataset->mRecord == kRecordEnvelope && dataset->mNumber == kDatasetCharset) {
            records.mCharset = DeclaredCharset(records.Data(*dataset));
        }
        records.mDatasets.push_back(*dataset);
        at = dataset->mWhole.End();
    }
    records.mIsWhole = std::all_of(datasets.begin() + static_cast<std::ptrdiff_t>(at), datasets.end(),
                                   [](char byte) { return byte == '\0'; });
    return records;
}

std::string IIMDatasetBytes(std::uint8_t record, std::uint8_t number, std::string_view data) {
    std::string bytes = {kMarker, static_cast<char>(record), static_cast<char>(number)};
    if (data.size() < kIsExtended) {
        bytes += NumberBytes(data.size(), 2);
    } else {
        bytes.append(NumberBytes(kIsExtended | kExtendedBytes, 2)).append(NumberBytes(data.size(), kExtendedBytes));
    }
    return bytes.append(data);
}

}  // namespace zephmetadata::media
