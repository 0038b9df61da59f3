#include "zephmetadata/file_changes.h"

#include <utility>

#include "media/files/media_write.h"
#include "media/files/undo_log.h"
#include "platform/file_descriptor.h"
#include "zephcore/files.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

/// Whether the stretches lie in the file one after the other, and are what its kind has.
bool IsSound(const FileChange& change) {
    std::uint64_t done = 0;
    for (const ByteChange& stretch : change.mBytes) {
        const media::Range range{stretch.mOffset, stretch.mSize};
        if (range.mOffset < done || !media::IsWithin(range, change.mFileSize)) {
            return false;
        }
        done = range.End();
    }
    switch (change.mKind) {
        case kFileChange_Edit:
            return true;
        case kFileChange_Make:
            return change.mFileSize == 0 && change.mBytes.size() <= 1;
        case kFileChange_Remove:
            return done == change.mFileSize && change.mBytes.size() <= 1;
    }
    return false;
}

media::PlannedEdit PlanOf(const FileChange& change) {
    media::PlannedEdit edit;
    for (const ByteChange& stretch : change.mBytes) {
        edit.mPlan.Replace({stretch.mOffset, stretch.mSize}, stretch.mBytes, media::Touch::kBlock);
    }
    return edit;
}

struct FoundFile {
    FileReport mReport;
    media::FileStamp mStamp;
};

/// Whether a change can be made, and of which state of the file.
FoundFile Find(const FileChange& change, const std::string& path) {
    if (!IsSound(change)) {
        return {{kFileStatus_NotWritten, "the change does not fit the file"}, {}};
    }
    const media::OpenedMedia file = media::OpenMediaFile(path);
    if (change.mKind == kFileChange_Make) {
        const bool isFree = file.mStatus == kFileStatus_NoFile && !path.empty();
        return {{isFree ? kFileStatus_Success : kFileStatus_Changed, {}}, {}};
    }
    if (file.mStatus != kFileStatus_Success) {
        return {{file.mStatus, file.mDetail}, {}};
    }
    const media::FileStamp& stamp = file.mStamp;
    const bool isSame = stamp.mSize == change.mFileSize &&
                        stamp.mModified == media::FileTime{change.mSeconds, change.mNanoseconds} &&
                        media::DigestOf(*file.mSource, change.mBytes) == change.mDigest;
    return {{isSame ? kFileStatus_Success : kFileStatus_Changed, {}}, stamp};
}

media::WriteOutcome Carry(const FileChange& change, const std::string& path, const media::FileStamp& stamp) {
    switch (change.mKind) {
        case kFileChange_Make:
            return media::CreateMedia(path, change.mBytes.empty() ? std::string() : change.mBytes.front().mBytes);
        case kFileChange_Remove:
            return media::RemoveMedia(path, stamp);
        case kFileChange_Edit:
            break;
    }
    return media::ReplaceMedia(path, stamp, [&change](const auto&) { return PlanOf(change); }, {});
}

}  // namespace

FileReport ChangeFile(const FileChange& change) {
    if (IsXMPWritingDisabled()) {
        return {kFileStatus_WritingDisabled, {}};
    }
    const std::string path = zephcore::SystemPath(change.mPath);
    const FoundFile found = Find(change, path);
    if (found.mReport.mStatus != kFileStatus_Success) {
        return found.mReport;
    }
    const media::WriteOutcome outcome = Carry(change, path, found.mStamp);
    return {outcome.mStatus, outcome.mDetail};
}

FileReport RehearseFileChange(const FileChange& change) {
    return Find(change, zephcore::SystemPath(change.mPath)).mReport;
}

struct UndoScope::Log : media::UndoLog {
    void Prepare(const std::string& nativePath) override {
        mPath = zephcore::PathFromNative(nativePath);
        if (mChanges.size() == mChanges.capacity()) {
            mChanges.reserve(2 * mChanges.size() + 1);
        }
    }
    void Add(FileChange undo) noexcept override {
        undo.mPath = std::move(mPath);
        mChanges.push_back(std::move(undo));
    }

    UTF16String mPath;  // of the next
    std::vector<FileChange> mChanges;
};

UndoScope::UndoScope() : mLog(std::make_unique<Log>()) {}

UndoScope::~UndoScope() = default;

const std::vector<FileChange>& UndoScope::Changes() const {
    return mLog->mChanges;
}

}  // namespace zephmetadata
