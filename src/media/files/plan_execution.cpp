#include "media/files/plan_execution.h"

#include <algorithm>
#include <vector>

#include "media/files/file_source.h"

namespace zephmetadata::media {

namespace {

/// A file that grows at its end.
class PlanOutput {
public:
    PlanOutput(const ByteSource& source, int into)
        : mSource(source), mFile(dynamic_cast<const FileSource*>(&source)), mInto(into) {}

    WriteOutcome Keep(const Range& range) {
        if (mFile == nullptr) {
            return KeepByBlocks(range);
        }
        if (!CopyRange(mFile->Number(), range.mOffset, mInto, mSize, range.mSize)) {
            return SystemFailure();
        }
        mSize += range.mSize;
        return Success();
    }

    WriteOutcome Put(std::string_view bytes) {
        if (!WriteFileAt(mInto, mSize, bytes)) {
            return SystemFailure();
        }
        mSize += bytes.size();
        return Success();
    }

private:
    WriteOutcome KeepByBlocks(Range range) {
        std::vector<char> block(static_cast<std::size_t>(std::min<std::uint64_t>(range.mSize, kCopyBlockBytes)));
        while (range.mSize > 0) {
            const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(range.mSize, block.size()));
            if (!mSource.ReadAt(range.mOffset, block.data(), part)) {
                return Failure(FileStatus::kFileStatus_Unreadable, "the bytes that stay cannot be read");
            }
            if (WriteOutcome outcome = Put({block.data(), part}); !outcome.IsSuccess()) {
                return outcome;
            }
            range = {range.mOffset + part, range.mSize - part};
        }
        return Success();
    }

    const ByteSource& mSource;
    const FileSource* mFile;  // null when the source is no file
    int mInto;
    std::uint64_t mSize = 0;
};

}  // namespace

WriteOutcome CarryOut(const Plan& plan, const ByteSource& source, int into) {
    if (!plan.IsSound(source.Size())) {
        return Failure(FileStatus::kFileStatus_NotWritten, "the plan does not fit the file");
    }
    PlanOutput output(source, into);
    std::uint64_t done = 0;
    for (const Replacement& replacement : plan.Replacements()) {
        WriteOutcome outcome = output.Keep({done, replacement.mRange.mOffset - done});
        if (outcome.IsSuccess()) {
            outcome = output.Put(replacement.mBytes);
        }
        if (!outcome.IsSuccess()) {
            return outcome;
        }
        done = replacement.mRange.End();
    }
    return output.Keep({done, source.Size() - done});
}

}  // namespace zephmetadata::media
