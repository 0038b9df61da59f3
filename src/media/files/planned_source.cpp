#include "media/files/planned_source.h"

#include <algorithm>
#include <cstring>

namespace zephmetadata::media {

PlannedSource::PlannedSource(const Plan& plan, std::shared_ptr<const ByteSource> source) : mSource(std::move(source)) {
    std::uint64_t done = 0;
    for (const Replacement& replacement : plan.Replacements()) {
        const std::uint64_t kept = replacement.mRange.mOffset - done;
        Add({mSize, {done, kept}, nullptr}, kept);
        Add({mSize, {}, &replacement.mBytes}, replacement.mBytes.size());
        done = replacement.mRange.End();
    }
    const std::uint64_t rest = mSource->Size() - done;
    Add({mSize, {done, rest}, nullptr}, rest);
}

void PlannedSource::Add(const Piece& piece, std::uint64_t size) {
    if (size > 0) {
        mPieces.push_back(piece);
        mSize += size;
    }
}

bool PlannedSource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    if (!IsWithin({offset, size}, mSize)) {
        return false;
    }
    auto* to = static_cast<char*>(into);
    auto piece = std::upper_bound(mPieces.begin(), mPieces.end(), offset,
                                  [](std::uint64_t at, const Piece& next) { return at < next.mBegin; });
    while (size > 0) {
        const Piece& from = *std::prev(piece);
        const std::uint64_t at = offset - from.mBegin;
        const std::uint64_t left = (from.mBytes != nullptr ? from.mBytes->size() : from.mOld.mSize) - at;
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(size, left));
        if (from.mBytes != nullptr) {
            std::memcpy(to, from.mBytes->data() + at, part);
        } else if (!mSource->ReadAt(from.mOld.mOffset + at, to, part)) {
            return false;
        }
        to += part;
        offset += part;
        size -= part;
        ++piece;
    }
    return true;
}

}  // namespace zephmetadata::media
