#pragma once

#include <string>
#include <string_view>

#include "frame/toolkit/media/media_path.h"

namespace zephmetadata::toolkit {

/// New content for a file, made in a working copy of its own and put in the file's place at once. Until Commit the file
/// is not touched; when Commit fails it is as it was. The working copy is removed in any case.
class FileReplacement {
public:
    /// @p target comes from ResolveWritablePath. The working copy lies beside it, with the same extension.
    explicit FileReplacement(MediaPath target);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    const std::string& WorkingCopy() const { return mWorkingCopy; }

    // Each answers false when it fails; Status and Detail then say why.

    /// Makes the working copy with the file's bytes.
    bool CopyTarget();
    /// Makes the working copy with these bytes.
    bool Fill(std::string_view bytes);
    /// Makes the working copy the file: owner, mode, extended attributes and links stay as they were. Refused when the
    /// file changed since @p target was resolved.
    bool Commit();

    FileStatus Status() const { return mStatus; }
    const UTF8String& Detail() const { return mDetail; }

private:
    bool CreateWorkingCopy();
    bool TakeOverAttributes();
    bool Rename();
    bool OverwriteInPlace();
    bool Fail(FileStatus status, UTF8String detail);
    bool FailWithSystemReason();

    MediaPath mTarget;
    std::string mWorkingCopy;
    FileStatus mStatus = FileStatus::kFileStatus_Success;
    UTF8String mDetail;
};

}  // namespace zephmetadata::toolkit
