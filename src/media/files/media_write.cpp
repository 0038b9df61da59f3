#include "media/files/media_write.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "media/files/file_replacement.h"
#include "media/files/plan_check.h"
#include "media/files/undo_log.h"

namespace zephmetadata::media {

namespace {

OpenedMedia NotOpened(FileStatus status, UTF8String detail = {}) {
    return {status, std::move(detail), {}, nullptr};
}

OpenedMedia NotOpenedBySystem() {
    // No detail where the status says it all.
    return errno == ENOENT || errno == ENOTDIR ? NotOpened(FileStatus::kFileStatus_NoFile)
                                               : NotOpened(FileStatus::kFileStatus_Unreadable, SystemReason());
}

UTF8String DifferenceOf(const CarriedEdit& edit, const CheckMedia& check) {
    UTF8String difference = PlanDifference(edit.mPlan, *edit.mBefore, *edit.mAfter);
    return difference.empty() && check ? check(edit) : difference;
}

/// A write on the way, for the log of its thread. Without a log it costs nothing.
class LoggedWrite {
public:
    explicit LoggedWrite(const std::string& nativePath) : mNativePath(nativePath) {}

    /// To be called before the write, so that nothing is left that could fail after it. False when what was there cannot be
    /// read.
    bool Note(FileChangeKind kind, const Plan& plan, const ByteSource& before, const ByteSource& after) {
        if (mLog != nullptr) {
            mUndo = UndoOf(plan, before, after);
        }
        if (mUndo) {
            mUndo->mKind = kind;
            mLog->Prepare(mNativePath);
        }
        return mLog == nullptr || mUndo;
    }

    WriteOutcome Done(WriteOutcome outcome) {
        if (mUndo && outcome.IsSuccess()) {
            mUndo->mFileSize = outcome.mStamp.mSize;
            mUndo->mSeconds = outcome.mStamp.mModified.mSeconds;
            mUndo->mNanoseconds = outcome.mStamp.mModified.mNanoseconds;
            mLog->Add(*std::move(mUndo));
        }
        return outcome;
    }

private:
    const std::string& mNativePath;
    UndoLog* mLog = UndoLog::Innermost();
    std::optional<FileChange> mUndo;
};

}  // namespace

OpenedMedia OpenMediaFile(const std::string& nativePath) {
    if (nativePath.empty() || nativePath.find('\0') != std::string::npos) {
        return NotOpened(FileStatus::kFileStatus_NoFile);
    }
    FinishInterruptedWrite(nativePath);
    struct stat status {};
    OpenFile file(AT_FDCWD, nativePath, O_RDONLY);
    if (!file && errno == ENXIO) {  // a socket
        return NotOpened(FileStatus::kFileStatus_NotAFile);
    }
    if (!file || fstat(file.Number(), &status) != 0) {
        return NotOpenedBySystem();
    }
    if (!S_ISREG(status.st_mode)) {
        return NotOpened(FileStatus::kFileStatus_NotAFile, S_ISDIR(status.st_mode) ? "a folder" : "");
    }
    auto source = std::make_shared<const FileSource>(std::move(file));
    return {FileStatus::kFileStatus_Success, {}, source->Stamp(), source};
}

WriteOutcome ReplaceMedia(const std::string& nativePath, const FileStamp& expected, const PlanMedia& plan,
                          const CheckMedia& check) {
    FileReplacement replacement(nativePath, expected);
    if (!replacement.Opened().IsSuccess()) {
        return replacement.Opened();
    }
    const PlannedEdit edit = plan(replacement.Old());
    if (edit.mStatus != FileStatus::kFileStatus_Success) {
        return Failure(edit.mStatus, edit.mDetail);
    }
    if (edit.mPlan.IsEmpty()) {
        return Success(expected);
    }
    if (WriteOutcome outcome = replacement.Make(edit.mPlan); !outcome.IsSuccess()) {
        return outcome;
    }
    UTF8String difference = DifferenceOf({edit.mPlan, replacement.Old(), replacement.New()}, check);
    if (!difference.empty()) {
        return Failure(FileStatus::kFileStatus_NotWritten, std::move(difference));
    }
    LoggedWrite log(nativePath);
    return log.Note(kFileChange_Edit, edit.mPlan, *replacement.Old(), *replacement.New())
               ? log.Done(replacement.Commit())
               : Failure(FileStatus::kFileStatus_Unreadable);
}

WriteOutcome CreateMedia(const std::string& nativePath, std::string_view bytes) {
    constexpr mode_t kNewFileMode = 0666;  // less the process's mask
    const auto place = FilePlace::At(nativePath, true);
    if (!place) {
        return SystemFailure();
    }
    NewFile file(*place, place->PassingName(), kNewFileMode, {});
    if (!file.IsOpen() || !WriteFileAt(file.Number(), 0, bytes) || !SyncFile(file.Number())) {
        return SystemFailure();
    }
    Plan whole;
    whole.Insert(0, std::string(bytes), Touch::kBlock);
    LoggedWrite log(nativePath);
    log.Note(kFileChange_Remove, whole, MemorySource({}), MemorySource(std::string(bytes)));
    if (!file.TakeName(place->Name())) {
        return errno == EEXIST ? Failure(FileStatus::kFileStatus_Changed) : SystemFailure();
    }
    place->Sync();
    return log.Done(Success(StampOf(file.Number())));
}

WriteOutcome RemoveMedia(const std::string& nativePath, const FileStamp& expected) {
    FileReplacement file(nativePath, expected);
    if (!file.Opened().IsSuccess()) {
        return file.Opened();
    }
    Plan whole;
    whole.Remove({0, expected.mSize}, Touch::kBlock);
    LoggedWrite log(nativePath);
    return log.Note(kFileChange_Make, whole, *file.Old(), MemorySource({}))
               ? log.Done(file.Remove())
               : Failure(FileStatus::kFileStatus_Unreadable);
}

}  // namespace zephmetadata::media
