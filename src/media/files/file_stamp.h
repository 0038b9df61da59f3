#pragma once

#include <cstdint>
#include <string>

#include "zephmetadata/file_status.h"
#include "zephmetadata/types.h"

struct stat;

namespace zephmetadata::media {

/// A moment of a file system's clock.
struct FileTime {
    std::int64_t mSeconds = 0;
    std::int64_t mNanoseconds = 0;

    friend bool operator==(const FileTime&, const FileTime&) = default;
};

/// What tells one state of a file from another. The time of change tells what programs do that put the time of
/// modification back.
struct FileStamp {
    std::uint64_t mDevice = 0;
    std::uint64_t mInode = 0;
    std::uint64_t mSize = 0;
    FileTime mModified;
    FileTime mChanged;

    /// False for a default one.
    bool IsKnown() const { return *this != FileStamp(); }
    bool IsSameFile(const FileStamp& other) const {
        return IsKnown() && mDevice == other.mDevice && mInode == other.mInode;
    }
    /// Whether the content is the same as far as can be told; a rename or a change of mode leaves it so.
    bool IsSameContent(const FileStamp& other) const {
        return IsSameFile(other) && mSize == other.mSize && mModified == other.mModified;
    }
    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

FileStamp StampOf(const struct stat& status);
/// Of an open file; a default one when the system tells nothing.
FileStamp StampOf(int file);
/// Of the file at a native path; a default one when there is none.
FileStamp StampOf(const std::string& nativePath);

/// How a write went, or a step of one.
struct WriteOutcome {
    FileStatus mStatus = FileStatus::kFileStatus_NotWritten;
    UTF8String mDetail;  ///< the reason in English where more is known, for example the system's text for an errno
    FileStamp mStamp;    ///< of the file as it was written

    bool IsSuccess() const { return mStatus == FileStatus::kFileStatus_Success; }
};

}  // namespace zephmetadata::media
