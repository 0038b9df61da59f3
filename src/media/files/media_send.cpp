#include "media/files/media_send.h"

#include <algorithm>
#include <vector>

#include "media/files/plan_check.h"
#include "media/files/planned_source.h"

namespace zephmetadata::media {

namespace {

SentMedia NotSent(FileStatus status, UTF8String detail) {
    return {status, std::move(detail), nullptr};
}

/// Why not all bytes of @p content got to @p target; empty when they did.
UTF8String WhyNotAppended(const ByteSource& content, ByteTarget& target) {
    if (!target.Start(content.Size())) {
        return "its target takes nothing";
    }
    std::vector<char> block(static_cast<std::size_t>(std::min<std::uint64_t>(content.Size(), kCopyBlockBytes)));
    for (std::uint64_t done = 0; done < content.Size();) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(content.Size() - done, block.size()));
        if (!content.ReadAt(done, block.data(), part)) {
            return "the bytes that stay cannot be read";
        }
        if (!target.Append(block.data(), part)) {
            return "its target does not take all of it";
        }
        done += part;
    }
    return {};
}

}  // namespace

SentMedia SendEdited(const std::shared_ptr<const ByteSource>& source, ByteTarget& target, const PlanMedia& plan,
                     const CheckMedia& check) {
    const PlannedEdit edit = plan(source);
    if (edit.mStatus != FileStatus::kFileStatus_Success) {
        return NotSent(edit.mStatus, edit.mDetail);
    }
    if (edit.mPlan.IsEmpty()) {
        return {FileStatus::kFileStatus_Success, {}, source};
    }
    if (!edit.mPlan.IsSound(source->Size())) {
        return NotSent(FileStatus::kFileStatus_NotWritten, "the plan does not fit the file");
    }
    const auto planned = std::make_shared<const PlannedSource>(edit.mPlan, source);
    UTF8String problem = check(CarriedEdit{edit.mPlan, source, planned});
    if (problem.empty()) {
        problem = WhyNotAppended(*planned, target);
    }
    std::shared_ptr<const ByteSource> written = problem.empty() ? target.Written() : nullptr;
    if (written != nullptr) {
        problem = PlanDifference(edit.mPlan, *source, *written);
    }
    if (!problem.empty()) {
        return NotSent(FileStatus::kFileStatus_NotWritten, std::move(problem));
    }
    const FileStatus status = target.Commit();
    return {status, {}, status == FileStatus::kFileStatus_Success ? std::move(written) : nullptr};
}

}  // namespace zephmetadata::media
