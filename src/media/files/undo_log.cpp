#include "media/files/undo_log.h"

#include <algorithm>
#include <utility>

#include "media/native/iim/md5.h"

namespace zephmetadata::media {

namespace {

thread_local UndoLog* innermostLog = nullptr;

/// The stretch of @p now, which begins at @p offset, that differs from @p before.
ByteChange Back(std::uint64_t offset, std::string_view now, std::string_view before) {
    const auto begin = std::mismatch(now.begin(), now.end(), before.begin(), before.end());
    const auto same = static_cast<std::size_t>(begin.first - now.begin());
    now.remove_prefix(same);
    before.remove_prefix(same);
    const auto end = std::mismatch(now.rbegin(), now.rend(), before.rbegin(), before.rend());
    const auto rest = static_cast<std::size_t>(end.first - now.rbegin());
    return {offset + same, now.size() - rest, std::string(before.substr(0, before.size() - rest))};
}

}  // namespace

UndoLog::UndoLog() : mOuter(std::exchange(innermostLog, this)) {}

UndoLog::~UndoLog() {
    innermostLog = mOuter;
}

UndoLog* UndoLog::Innermost() {
    return innermostLog;
}

std::optional<std::string> DigestOf(const ByteSource& source, const std::vector<ByteChange>& stretches) {
    constexpr std::uint64_t kBlockBytes = std::uint64_t{64} << 10U;
    std::string digest;
    for (const ByteChange& stretch : stretches) {
        if (!IsWithin({stretch.mOffset, stretch.mSize}, source.Size())) {
            return std::nullopt;
        }
        for (std::uint64_t done = 0; done < stretch.mSize; done += kBlockBytes) {
            const auto block = ReadRange(source, {stretch.mOffset + done, std::min(kBlockBytes, stretch.mSize - done)});
            if (!block) {
                return std::nullopt;
            }
            digest = MD5(digest.append(*block));
        }
    }
    return digest;
}

std::optional<FileChange> UndoOf(const Plan& plan, const ByteSource& before, const ByteSource& after) {
    FileChange undo;
    std::uint64_t shift = 0;  // modulo 2^64: it goes down as well
    for (const Replacement& replacement : plan.Replacements()) {
        const auto old = ReadRange(before, replacement.mRange);
        if (!old) {
            return std::nullopt;
        }
        ByteChange back = Back(replacement.mRange.mOffset + shift, replacement.mBytes, *old);
        if (back.mSize != 0 || !back.mBytes.empty()) {
            undo.mBytes.push_back(std::move(back));
        }
        shift += replacement.mBytes.size() - replacement.mRange.mSize;
    }
    auto digest = DigestOf(after, undo.mBytes);
    undo.mDigest = digest ? std::move(*digest) : std::string();
    return digest ? std::optional(std::move(undo)) : std::nullopt;
}

}  // namespace zephmetadata::media
