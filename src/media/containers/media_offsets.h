#pragma once

#include <optional>
#include <vector>

#include "media/containers/boxes/boxes.h"

/// Tables of absolute file offsets in films and image sequences (ISO/IEC 14496-12): "stco", "co64", "saio" of samples,
/// base offsets of fragments ("tfhd"), entries of "tfra".
namespace zephmetadata::media {

/// A row of offsets of one width, each @p mStride bytes behind the other.
struct OffsetTable {
    Range mPlace;  ///< from the first offset to the end of the last
    std::size_t mBytes = 4;
    std::size_t mStride = 4;
    std::vector<std::uint64_t> mOffsets;
};

struct OffsetTables {
    std::vector<OffsetTable> mTables;    ///< in the order of the file
    std::vector<Box> mMetas;             ///< "meta" boxes of films and tracks: items in them are the caller's affair
    std::vector<std::uint32_t> mTracks;  ///< numbers of the tracks
    bool mIsWhole = true;                ///< false when a table or a box is cut off
};

/// The tables in a top-level "moov", "moof" or "mfra" box; others have none.
bool HoldsOffsets(const Box& box);
/// Of all such boxes in @p top. Offsets into other files are not among them.
OffsetTables ReadOffsetTables(const ByteSource& file, const BoxList& top);

/// Adds to the plan what makes the offsets point to where it moves what they point to; the sizes in the plan have to be
/// final. False when an offset does not fit its width, or points to what is replaced.
bool FollowPlan(const ByteSource& file, const OffsetTables& tables, Plan& plan);

}  // namespace zephmetadata::media
