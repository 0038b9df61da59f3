#pragma once

#include <cstdint>
#include <string>

#include "zephmetadata/file_status.h"
#include "zephmetadata/types.h"

namespace zephmetadata::toolkit {

/// What tells one state of a file from another.
struct FileStamp {
    std::uint64_t mDevice = 0;
    std::uint64_t mInode = 0;
    std::uint64_t mSize = 0;
    std::int64_t mModifiedSeconds = 0;
    std::int64_t mModifiedNanoseconds = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// A regular file that can be read, at the end of all symbolic links.
struct MediaPath {
    FileStatus mStatus = FileStatus::kFileStatus_NoFile;  ///< kFileStatus_Success when the rest is valid
    UTF8String mDetail;
    std::string mNative;  ///< absolute, without links
    FileStamp mStamp;
};

MediaPath ResolveMediaPath(const UTF16String& path);
/// The same for one that is to be written.
MediaPath ResolveWritablePath(const UTF16String& path);
/// The same, when the file is still what it was; kFileStatus_Changed when it is not.
MediaPath ResolveUnchanged(const UTF16String& path, const FileStamp& stamp);

/// The stamp of the file at a native path; a default one when there is none.
FileStamp StampOf(const std::string& nativePath);

/// The system's text for the last failed call.
UTF8String SystemReason();

}  // namespace zephmetadata::toolkit
