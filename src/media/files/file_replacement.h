#pragma once

#include <memory>
#include <optional>

#include "media/files/file_source.h"
#include "media/files/new_file.h"
#include "media/files/overwriting.h"
#include "media/plan.h"

namespace zephmetadata::media {

/// New content for a file, made beside it and put in its place at once. Until Commit the file is not touched; when Commit
/// fails it is as it was. While this lives, other writers of ours wait.
class FileReplacement {
public:
    /// Opens the file at the end of all links and locks it. Refused when it is no longer what it was.
    FileReplacement(const std::string& nativePath, const FileStamp& expected, const SystemMeans& means = {});
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// How opening went; without success nothing else may be called.
    const WriteOutcome& Opened() const { return mOpened; }
    const std::shared_ptr<const FileSource>& Old() const { return mOld; }

    /// Makes the new content. Once.
    WriteOutcome Make(const Plan& plan);
    /// The new content, after Make. It stays readable whatever becomes of the replacement.
    const std::shared_ptr<const FileSource>& New() const { return mNew; }
    /// Makes the new content the file's: owner, mode, extended attributes and links stay as they were. Refused when the
    /// file changed since it was opened.
    WriteOutcome Commit();
    /// Removes the file, if it has not changed, instead of replacing it.
    WriteOutcome Remove();

private:
    WriteOutcome Open(const std::string& nativePath, const FileStamp& expected);
    WriteOutcome OpenLocked();
    bool IsUnchanged() const;
    WriteOutcome TakePlace();
    WriteOutcome Exchange();
    WriteOutcome Rename();
    WriteOutcome Placed() const;
    WriteOutcome WriteOver();

    SystemMeans mMeans;
    std::optional<FilePlace> mPlace;
    std::shared_ptr<const OpenFile> mFile;
    bool mIsLocked = false;
    std::shared_ptr<const FileSource> mOld;
    ChangedStretch mChanged;
    std::unique_ptr<NewFile> mFresh;
    std::shared_ptr<const FileSource> mNew;
    WriteOutcome mOpened;
};

/// Puts right what a process left that was killed while it wrote the file, unless another one is still writing it. Asks
/// the system for a few names when there is nothing to do.
void FinishInterruptedWrite(const std::string& nativePath);

}  // namespace zephmetadata::media
