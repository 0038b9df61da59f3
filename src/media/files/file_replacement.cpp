#include "media/files/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "media/files/file_attributes.h"
#include "media/files/file_exchange.h"
#include "media/files/plan_execution.h"

namespace zephmetadata::media {

namespace {

/// How often another process may put another file in the place of the one that we lock before we give up.
constexpr int kMaxAttempts = 16;

bool IsOneOf(int error, std::initializer_list<int> errors) {
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

WriteOutcome OpeningFailure() {
    if (IsOneOf(errno, {ENOENT, ENOTDIR})) {
        return Failure(FileStatus::kFileStatus_NoFile);
    }
    return Failure(FileStatus::kFileStatus_Unreadable, SystemReason());
}

/// The bytes that a plan changes where they stand.
ChangedStretch ChangedBy(const Plan& plan, std::uint64_t oldSize) {
    const std::vector<Replacement>& replacements = plan.Replacements();
    const std::uint64_t newSize = plan.NewSize(oldSize);
    ChangedStretch changed{replacements.empty() ? oldSize : replacements.front().mRange.mOffset, oldSize, newSize};
    if (oldSize == newSize && !replacements.empty()) {
        changed.mOldEnd = changed.mNewEnd = replacements.back().mRange.End();
    }
    return changed;
}

}  // namespace

void FinishInterruptedWrite(const std::string& nativePath) {
    const auto place = FilePlace::At(nativePath);
    if (!place) {
        return;
    }
    const auto status = place->StatusOf(place->Name());
    for (const std::string& name : {place->PassingName(), FilePlace::NewJournalName(status ? status->st_ino : 0)}) {
        if (place->StatusOf(name)) {
            RemoveLeftover(*place, name);
        }
    }
    if (!status || !place->StatusOf(FilePlace::JournalName(status->st_ino))) {
        return;
    }
    const OpenFile file = place->Open(place->Name(), O_RDONLY);
    // A live process is done soon; what it has written until then is better not read.
    if (file && LockFile(file.Number(), kLockPatience) == Lock::kHeld &&
        place->IsNameOf(place->Name(), file.Number())) {
        FinishOverwriting(*place, file.Number());
    }
}

FileReplacement::FileReplacement(const std::string& nativePath, const FileStamp& expected, const SystemMeans& means)
    : mMeans(means), mOpened(Open(nativePath, expected)) {}

FileReplacement::~FileReplacement() {
    mFresh.reset();
    if (mFile) {
        UnlockFile(mFile->Number());  // whoever shares the source may keep it open
    }
}

WriteOutcome FileReplacement::Open(const std::string& nativePath, const FileStamp& expected) {
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        mPlace = FilePlace::At(nativePath);
        if (!mPlace) {
            return OpeningFailure();
        }
        if (WriteOutcome outcome = OpenLocked(); !outcome.IsSuccess()) {
            return outcome;
        }
        if (!mPlace->IsNameOf(mPlace->Name(), mFile->Number())) {
            continue;  // whoever had the lock has put another file in its place
        }
        if (mIsLocked) {
            FinishOverwriting(*mPlace, mFile->Number());
        }
        mOld = std::make_shared<const FileSource>(mFile);
        return mOld->Stamp() == expected ? Success(expected) : Failure(FileStatus::kFileStatus_Changed);
    }
    return Failure(FileStatus::kFileStatus_Changed);
}

WriteOutcome FileReplacement::OpenLocked() {
    const int folder = mPlace->Folder();
    const std::string& name = mPlace->Name();
    mFile = std::make_shared<const OpenFile>(mPlace->Open(name, O_RDONLY));
    struct stat status {};
    if (!*mFile || fstat(mFile->Number(), &status) != 0) {
        return OpeningFailure();
    }
    if (!S_ISREG(status.st_mode)) {
        return Failure(FileStatus::kFileStatus_NotAFile);
    }
    // The folder's permissions alone would let a write-protected file be replaced.
    if (faccessat(folder, name.c_str(), W_OK, AT_EACCESS) != 0) {
        return SystemFailure();
    }
    Lock lock = LockFile(mFile->Number(), kLockPatience);
    if (lock == Lock::kImpossible) {
        // Over a network, locking for writing takes a file that is open for writing.
        auto writable = std::make_shared<const OpenFile>(mPlace->Open(name, O_RDWR));
        lock = *writable ? LockFile(writable->Number(), kLockPatience) : lock;
        mFile = *writable ? writable : mFile;
    }
    mIsLocked = lock == Lock::kHeld;
    return lock == Lock::kBusy ? Failure(FileStatus::kFileStatus_NotWritten, "another process is writing it")
                               : Success();
}

WriteOutcome FileReplacement::Make(const Plan& plan) {
    mFresh = std::make_unique<NewFile>(*mPlace, mPlace->PassingName(), S_IRUSR | S_IWUSR, mMeans);
    if (!mFresh->IsOpen()) {
        return SystemFailure();
    }
    WriteOutcome outcome = CarryOut(plan, *mOld, mFresh->Number());
    if (outcome.IsSuccess()) {
        mChanged = ChangedBy(plan, mOld->Size());
        mNew = std::make_shared<const FileSource>(mFresh->File());
    }
    return outcome;
}

bool FileReplacement::IsUnchanged() const {
    return StampOf(mFile->Number()) == mOld->Stamp() && mPlace->IsNameOf(mPlace->Name(), mFile->Number());
}

WriteOutcome FileReplacement::Commit() {
    struct stat status {};
    if (fstat(mFile->Number(), &status) != 0) {
        return SystemFailure();
    }
    if (!IsUnchanged()) {
        return Failure(FileStatus::kFileStatus_Changed);
    }
    if (status.st_nlink != 1 || !TakeOverAttributes(mFile->Number(), mFresh->Number())) {
        return WriteOver();
    }
    return SyncFile(mFresh->Number()) ? TakePlace() : SystemFailure();
}

WriteOutcome FileReplacement::Remove() {
    if (!IsUnchanged()) {
        return Failure(FileStatus::kFileStatus_Changed);
    }
    if (unlinkat(mPlace->Folder(), mPlace->Name().c_str(), 0) != 0) {
        return SystemFailure();
    }
    mPlace->Sync();
    return Success();
}

WriteOutcome FileReplacement::TakePlace() {
    if (!mFresh->TakeHiddenName()) {
        return SystemFailure();
    }
    if (!IsUnchanged()) {  // making the new content last took its time
        return Failure(FileStatus::kFileStatus_Changed);
    }
    return mMeans.mExchange ? Exchange() : Rename();
}

/// The new file is where the old one was.
WriteOutcome FileReplacement::Placed() const {
    mPlace->Sync();
    return Success(StampOf(mFresh->Number()));
}

WriteOutcome FileReplacement::Exchange() {
    const std::string passing = mPlace->PassingName();
    switch (ExchangeFiles(*mPlace, passing, mOld->Stamp())) {
        case Exchanged::kDone:
            mFresh->RemoveHiddenName();
            return Placed();
        case Exchanged::kTakenBack:
            return Failure(FileStatus::kFileStatus_Changed);
        case Exchanged::kEntangled:
            mFresh->LeaveHiddenName();
            return Failure(FileStatus::kFileStatus_Changed,
                           "what another program wrote is in " + mPlace->PathOf(passing));
        case Exchanged::kImpossible:
            break;
    }
    return Rename();
}

/// Where there is no exchange.
WriteOutcome FileReplacement::Rename() {
    if (!IsUnchanged()) {
        return Failure(FileStatus::kFileStatus_Changed);
    }
    if (renameat(mPlace->Folder(), mPlace->PassingName().c_str(), mPlace->Folder(), mPlace->Name().c_str()) != 0) {
        // A file that is mounted by itself keeps its place.
        return IsOneOf(errno, {EBUSY, EXDEV}) ? WriteOver() : SystemFailure();
    }
    mFresh->LeaveHiddenName();
    return Placed();
}

WriteOutcome FileReplacement::WriteOver() {
    if (!mIsLocked) {
        return Failure(FileStatus::kFileStatus_NotWritten, "it would have to be written over, and cannot be locked");
    }
    return Overwrite(*mPlace, mFile->Number(), mFresh->Number(), mChanged, mMeans);
}

}  // namespace zephmetadata::media
