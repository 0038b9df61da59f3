#pragma once

#include <vector>

#include "media/bytes.h"
#include "media/containers/jpeg/jpeg_parts.h"
#include "media/plan.h"

/// Files with several pictures (CIPA DC-007, "MPF"): a directory in the first one says where the others lie behind it, among
/// them the gain maps of pictures with a high dynamic range.
namespace zephmetadata::media {

/// One entry of a directory.
struct PictureEntry {
    Range mSizeField;
    Range mOffsetField;
    ByteOrder mOrder = ByteOrder::kBig;
    Range mPicture;  ///< in the stream; of the first one, which the directory stands in, from its begin
    bool mIsFirst = false;
    std::uint64_t mBase = 0;  ///< what the offset counts from
};
/// Of all directories; one that is damaged has none.
std::vector<PictureEntry> PictureEntries(const ByteSource& stream, const std::vector<JPEGPart>& parts);

/// Adds to a plan that changes what stands before @p headersEnd what follows for the entries. False when a picture would lie
/// farther away than an entry can say.
bool PlanPictureEntries(const std::vector<PictureEntry>& entries, std::uint64_t headersEnd, std::uint64_t streamSize,
                        Plan& plan);

}  // namespace zephmetadata::media
