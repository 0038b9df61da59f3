#include "media/files/plan_check.h"

#include <algorithm>

#include "media/files/open_file.h"

namespace zephmetadata::media {

namespace {

UTF8String Text(const Range& range) {
    return std::to_string(range.mSize) + " bytes at " + std::to_string(range.mOffset);
}

/// Compares block by block.
class Comparison {
public:
    Comparison(const ByteSource& before, const ByteSource& after) : mBefore(before), mAfter(after) {}

    /// Whether the bytes of @p kept come next.
    UTF8String Keeps(const Range& kept) {
        mOld.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kept.mSize, kCopyBlockBytes)));
        for (std::uint64_t done = 0; done < kept.mSize;) {
            const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(kept.mSize - done, mOld.size()));
            const std::uint64_t from = kept.mOffset + done;
            if (!mBefore.ReadAt(from, mOld.data(), part)) {
                return "the bytes at " + std::to_string(from) + " of the old file cannot be read";
            }
            const std::uint64_t at = mDone;
            if (const auto offset = DifferenceTo({mOld.data(), part})) {
                return "the byte at " + std::to_string(from + *offset) + " of the old file is not at " +
                       std::to_string(at + *offset) + " of the new one";
            }
            done += part;
        }
        return {};
    }

    /// Whether @p bytes come next.
    UTF8String Has(std::string_view bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const std::uint64_t at = mDone;
            const std::string_view part = bytes.substr(done, kCopyBlockBytes);
            if (const auto offset = DifferenceTo(part)) {
                return "the byte at " + std::to_string(at + *offset) + " of the new file is not what it was to become";
            }
            done += part.size();
        }
        return {};
    }

private:
    /// How far into @p wanted what comes next is another byte, or cannot be read; absent when all is as wanted.
    std::optional<std::size_t> DifferenceTo(std::string_view wanted) {
        mNew.resize(std::max(mNew.size(), wanted.size()));
        if (!mAfter.ReadAt(mDone, mNew.data(), wanted.size())) {
            return 0;
        }
        mDone += wanted.size();
        const auto* const difference = std::mismatch(wanted.begin(), wanted.end(), mNew.begin()).first;
        return difference == wanted.end() ? std::nullopt : std::optional<std::size_t>(difference - wanted.begin());
    }

    const ByteSource& mBefore;
    const ByteSource& mAfter;
    std::uint64_t mDone = 0;  // of the new file
    std::vector<char> mOld;
    std::vector<char> mNew;
};

/// Where a stretch lies after the plan; absent when bytes of it are replaced. What is inserted inside belongs to it.
std::optional<Range> Moved(const Plan& plan, const OffsetMap& map, const Range& range) {
    if (range.mSize == 0 || range.mSize > ~range.mOffset) {
        return std::nullopt;
    }
    const std::vector<Replacement>& replacements = plan.Replacements();
    auto next = std::lower_bound(
        replacements.begin(), replacements.end(), range.mOffset,
        [](const Replacement& replacement, std::uint64_t at) { return replacement.mRange.mOffset < at; });
    for (; next != replacements.end() && next->mRange.mOffset < range.End(); ++next) {
        if (next->mRange.mSize > 0) {
            return std::nullopt;
        }
    }
    const auto first = map.NewOffset(range.mOffset);
    const auto last = map.NewOffset(range.End() - 1);
    return first && last ? std::optional(Range{*first, *last + 1 - *first}) : std::nullopt;
}

UTF8String NotThere(const Range& before, const Range& wanted) {
    return "the " + Text(before) + " that the file refers to should now be " + Text(wanted) +
           ", but it does not refer there";
}

}  // namespace

UTF8String PlanDifference(const Plan& plan, const ByteSource& before, const ByteSource& after) {
    if (!plan.IsSound(before.Size())) {
        return "the plan does not fit the file";
    }
    const std::uint64_t size = plan.NewSize(before.Size());
    if (after.Size() != size) {
        return "the new file has " + std::to_string(after.Size()) + " bytes instead of " + std::to_string(size);
    }
    Comparison comparison(before, after);
    std::uint64_t done = 0;
    for (const Replacement& replacement : plan.Replacements()) {
        UTF8String difference = comparison.Keeps({done, replacement.mRange.mOffset - done});
        if (difference.empty()) {
            difference = comparison.Has(replacement.mBytes);
        }
        if (!difference.empty()) {
            return difference;
        }
        done = replacement.mRange.End();
    }
    return comparison.Keeps({done, before.Size() - done});
}

UTF8String ReferenceDifference(const Plan& plan, const std::vector<Range>& before, const std::vector<Range>& after) {
    const OffsetMap map(plan);
    const bool areAsMany = before.size() == after.size();
    auto place = after.begin();
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto wanted = Moved(plan, map, before[i]);
        if (!wanted) {
            continue;
        }
        place = areAsMany ? after.begin() + static_cast<std::ptrdiff_t>(i) : std::find(place, after.end(), *wanted);
        if (place == after.end() || *place != *wanted) {
            return NotThere(before[i], *wanted);
        }
        ++place;
    }
    return {};
}

}  // namespace zephmetadata::media
