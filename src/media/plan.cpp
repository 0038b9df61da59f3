#include "media/plan.h"

#include <algorithm>
#include <cassert>

namespace zephmetadata::media {

namespace {

bool ComesBefore(const Replacement& left, const Replacement& right) {
    // Insertions come before what replaces the bytes at their place.
    return left.mRange.mOffset != right.mRange.mOffset ? left.mRange.mOffset < right.mRange.mOffset
                                                       : left.mRange.mSize == 0 && right.mRange.mSize != 0;
}

}  // namespace

void Plan::Replace(Range range, std::string bytes, Touch touch) {
    Replacement replacement{range, std::move(bytes), touch};
    const auto place = std::upper_bound(mReplacements.begin(), mReplacements.end(), replacement, &ComesBefore);
    mReplacements.insert(place, std::move(replacement));
}

void Plan::Fill(std::uint64_t offset, std::string bytes) {
    const Replacement wanted{{offset, 1}, {}, Touch::kStructure};
    const auto found = std::lower_bound(mReplacements.begin(), mReplacements.end(), wanted, &ComesBefore);
    assert(found != mReplacements.end() && found->mRange.mOffset == offset && found->mBytes.size() == bytes.size());
    found->mBytes = std::move(bytes);
}

bool Plan::IsSound(std::uint64_t size) const {
    std::uint64_t done = 0;
    return std::all_of(mReplacements.begin(), mReplacements.end(), [&](const Replacement& replacement) {
        const bool fits = replacement.mRange.mOffset >= done && IsWithin(replacement.mRange, size);
        done = replacement.mRange.End();
        return fits;
    });
}

std::uint64_t Plan::NewSize(std::uint64_t size) const {
    for (const Replacement& replacement : mReplacements) {
        size += replacement.mBytes.size();
        size -= replacement.mRange.mSize;
    }
    return size;
}

OffsetMap::OffsetMap(const Plan& plan) : mPlan(plan) {
    std::int64_t shift = 0;
    mShifts.reserve(plan.Replacements().size());
    for (const Replacement& replacement : plan.Replacements()) {
        shift += static_cast<std::int64_t>(replacement.mBytes.size());
        shift -= static_cast<std::int64_t>(replacement.mRange.mSize);
        mShifts.push_back(shift);
    }
}

std::optional<std::uint64_t> OffsetMap::NewOffset(std::uint64_t offset) const {
    const std::vector<Replacement>& replacements = mPlan.Replacements();
    const auto after = std::upper_bound(
        replacements.begin(), replacements.end(), offset,
        [](std::uint64_t at, const Replacement& replacement) { return at < replacement.mRange.mOffset; });
    if (after == replacements.begin()) {
        return offset;
    }
    const auto before = std::prev(after);
    if (offset < before->mRange.End()) {
        return std::nullopt;
    }
    const std::int64_t shift = mShifts[static_cast<std::size_t>(before - replacements.begin())];
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(offset) + shift);
}

std::optional<std::string> Carried(const Plan& plan, const ByteSource& source) {
    if (!plan.IsSound(source.Size())) {
        return std::nullopt;
    }
    std::string bytes;
    std::uint64_t done = 0;
    for (const Replacement& replacement : plan.Replacements()) {
        const auto kept = ReadRange(source, {done, replacement.mRange.mOffset - done});
        if (!kept) {
            return std::nullopt;
        }
        bytes.append(*kept).append(replacement.mBytes);
        done = replacement.mRange.End();
    }
    const auto rest = ReadRange(source, {done, source.Size() - done});
    return rest ? std::optional(bytes.append(*rest)) : std::nullopt;
}

}  // namespace zephmetadata::media
