#include "media/native/tiff/tiff_space.h"

#include <algorithm>

namespace zephmetadata::media {

namespace {

/// What directories may claim together; each takes at least a value of their entries or a reference.
constexpr std::size_t kMaxRanges = 8'000'000;

}  // namespace

std::optional<TiffSpace> TiffSpace::Of(const ByteSource& stream, const TiffHeader& header) {
    TiffSpace space;
    std::vector<Range>& ranges = space.mRanges;
    ranges.push_back({0, header.Bytes()});
    const bool isComplete = WalkTiff(stream, header, [&](const TiffTable& table, std::optional<TiffDirectory> kind) {
        space.mEndsWithoutPointer = space.mEndsWithoutPointer || (!kind && table.mNext.empty());
        ranges.push_back(table.mRange);
        for (const TiffEntry& entry : table.mEntries) {
            const bool isOpaque = entry.mTag == kTagMakerNote || entry.mTag == kTagDNGPrivateData;
            if (!entry.mIsInline && !isOpaque) {  // the others are among the blobs
                ranges.push_back(entry.mPlace);
            }
        }
        if (ranges.size() < kMaxRanges) {
            AppendTiffBlobs(stream, header, table, ranges);
        }
    });
    if (!isComplete || ranges.size() >= kMaxRanges) {
        return std::nullopt;
    }
    // What reaches beyond the end is not there: its claim must not keep what was put at the end from being replaced.
    std::erase_if(ranges, [&](const Range& range) { return range.mSize == 0 || !IsWithin(range, stream.Size()); });
    std::sort(ranges.begin(), ranges.end(),
              [](const Range& left, const Range& right) { return left.mOffset < right.mOffset; });
    space.mEnds.reserve(ranges.size());
    for (const Range& range : ranges) {
        space.mEnds.push_back(std::max(range.End(), space.mEnds.empty() ? 0 : space.mEnds.back()));
    }
    return space;
}

bool TiffSpace::IsExclusive(const Range& range) const {
    const auto found =
        std::lower_bound(mRanges.begin(), mRanges.end(), range.mOffset,
                         [](const Range& candidate, std::uint64_t offset) { return candidate.mOffset < offset; });
    const auto at = static_cast<std::size_t>(found - mRanges.begin());
    const bool isClearBefore = at == 0 || mEnds[at - 1] <= range.mOffset;
    const bool isItself = found != mRanges.end() && *found == range;
    const bool isClearAfter = isItself && (at + 1 == mRanges.size() || mRanges[at + 1].mOffset >= range.End());
    return isClearBefore && isClearAfter;
}

}  // namespace zephmetadata::media
