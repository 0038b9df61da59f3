#pragma once

#include "frame/toolkit/media/media_path.h"
#include "frame/toolkit/toolkit.h"

/// The XMP embedded in media files. Paths are those of zephcore::File. Nothing here throws or prints.
namespace zephmetadata::toolkit {

struct FileXMP {
    FileStatus mStatus = FileStatus::kFileStatus_Unreadable;
    XMPMetaPtr mTree;        ///< set when the status is kFileStatus_Success
    UTF8String mDetail;      ///< the reason in English where more is known, for example the system's text for an errno
    bool mCanWrite = false;  ///< the format is one that WriteFileXMP can write
    /// False when parts of the metadata are missing, which a write would then drop for good.
    bool mIsWhole = true;
    FileStamp mStamp;  ///< of the file as it was read
};

/// Reads a file. The status is kFileStatus_Success only when the file carries XMP (or native metadata that the toolkit presents as such).
FileXMP ReadFileXMP(const UTF16String& path);

struct WriteOutcome {
    FileStatus mStatus = FileStatus::kFileStatus_NotWritten;
    UTF8String mDetail;
    FileStamp mStamp;  ///< of the file as it was written
};

/// Puts @p tree into the file that was read as @p stamp, or leaves it exactly as it was.
///
/// The toolkit works on a copy beside the file; the copy is read back and compared with the tree before it takes the
/// file's place, with owner, mode, extended attributes and links as before.
WriteOutcome WriteFileXMP(const UTF16String& path, XMPMetaHandle tree, const FileStamp& stamp);

}  // namespace zephmetadata::toolkit
