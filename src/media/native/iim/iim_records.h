#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "media/files/byte_sources.h"
#include "media/native/iim/iim_text.h"

/// IPTC-IIM 4.2: datasets one after the other, each with a record and a number.
namespace zephmetadata::media {

inline constexpr std::uint8_t kRecordEnvelope = 1;
inline constexpr std::uint8_t kRecordApplication = 2;
inline constexpr std::uint8_t kDatasetCharset = 90;  ///< of the envelope
/// More than any stream holds by a good way: what follows them is not read, and the stream counts as damaged.
inline constexpr std::size_t kMaxIIMDatasets = 1000000;

struct IIMDataset {
    std::uint8_t mRecord = 0;
    std::uint8_t mNumber = 0;
    Range mWhole;  ///< with its tag and its size
    Range mData;
};

/// What a stream holds. A damaged one is read as far as it goes.
struct IIMRecords {
    std::string mBytes;                 ///< the stream
    std::vector<IIMDataset> mDatasets;  ///< in their order
    bool mIsWhole = true;               ///< false when something follows that is neither a dataset nor padding (NUL)
    IIMCharset mCharset = IIMCharset::kUndeclared;

    std::string_view Data(const IIMDataset& dataset) const {
        return std::string_view(mBytes).substr(dataset.mData.mOffset, dataset.mData.mSize);
    }
    std::string_view Whole(const IIMDataset& dataset) const {
        return std::string_view(mBytes).substr(dataset.mWhole.mOffset, dataset.mWhole.mSize);
    }
};

IIMRecords ReadIIM(std::string_view datasets);

/// A dataset with its tag and its size, extended where the data asks for it.
std::string IIMDatasetBytes(std::uint8_t record, std::uint8_t number, std::string_view data);

}  // namespace zephmetadata::media
