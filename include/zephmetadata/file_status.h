#pragma once

#include <cstdint>
#include <vector>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// How reading or writing the metadata of a file went.
enum FileStatus : std::int32_t {
    kFileStatus_Success = 0,
    kFileStatus_NoFile = 1,         ///< no path given, or nothing at the path
    kFileStatus_NotAFile = 2,       ///< a folder, a device or a pipe
    kFileStatus_Unreadable = 3,     ///< no permission, or an input error
    kFileStatus_UnknownFormat = 4,  ///< none of the media formats that can carry XMP
    kFileStatus_DamagedFile = 5,    ///< the container is damaged or truncated
    kFileStatus_DamagedXMP = 6,  ///< the file has an XMP packet that is not well-formed XMP; it is never written over
    kFileStatus_NoXMP = 7,       ///< a readable media file without XMP
    kFileStatus_ReadOnly = 8,    ///< writing: the file or its folder may not be written
    kFileStatus_CannotCarryXMP = 9,    ///< writing: XMP of this format can be read, not written
    kFileStatus_WritingDisabled = 10,  ///< writing: switched off with DisableXMPWriting
    kFileStatus_NotWritten = 11,       ///< writing failed (full disk, verification); the file is as it was
    kFileStatus_Changed = 12,          ///< writing: the file changed on disk since it was read; left as it is
};

/// What can be said of a file, or of one reading or writing of it.
struct FileReport {
    FileStatus mStatus = kFileStatus_NoFile;
    /// In English, where more is known: the system's reason, the path that did not read back; beside kFileStatus_Success
    /// of a reading what is damaged in a file that was read as far as it goes and is not written; beside
    /// kFileStatus_NoXMP why it can be given none.
    UTF8String mDetail;
};

/// A source that could not be written.
struct WriteFailure {
    UTF16String mPath;  ///< of the file; empty of what is no file
    FileStatus mStatus = kFileStatus_NotWritten;
    UTF8String mDetail;  ///< as in FileReport
};

/// What a write-back did.
struct ZEPHMETADATA_EXPORT WriteReport {
    bool mHadChanges = false;             ///< without any, nothing was done
    std::vector<WriteFailure> mFailures;  ///< of the sources, when several are edited as one, those that failed

    /// Whether there were changes and every source has them.
    bool IsWritten() const { return mHadChanges && mFailures.empty(); }
};

// Texts for people: in UTF-8, in the language of the user interface (English, German, French, Spanish, Japanese), without
// escapes. Any thread may ask for them while none starts or stops the library, or loads a package.

/// The status in a few words, such as "no such file".
ZEPHMETADATA_EXPORT UTF8String Describe(FileStatus status);
/// The status, and the detail in brackets where there is one.
ZEPHMETADATA_EXPORT UTF8String Describe(const FileReport& report);
/// The same, after the file: "photo.jpg: the file is read-only".
ZEPHMETADATA_EXPORT UTF8String Describe(const WriteFailure& failure);

}  // namespace zephmetadata
