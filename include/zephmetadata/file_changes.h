#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zephmetadata/file_status.h"

/// Changes of files as data, so that what was written can be taken back.
namespace zephmetadata {

/// Bytes in place of a stretch of a file. A stretch of no bytes is a place between two.
struct ByteChange {
    std::uint64_t mOffset = 0;
    std::uint64_t mSize = 0;
    std::string mBytes;
};

enum FileChangeKind : std::int32_t {
    kFileChange_Edit = 0,    ///< some stretches of a file
    kFileChange_Make = 1,    ///< a file that must not be there yet
    kFileChange_Remove = 2,  ///< a file as a whole
};

/// A change of one file, and how the file has to be found for it. Every byte that it does not name stays.
struct FileChange {
    UTF16String mPath;
    FileChangeKind mKind = kFileChange_Edit;
    std::uint64_t mFileSize = 0;  ///< of the file as it has to be found, in bytes; 0 for one that is made
    std::int64_t mSeconds = 0;    ///< its time of modification, since 1970; of a file that is made it means nothing
    std::int64_t mNanoseconds = 0;
    std::string mDigest;             ///< of what it holds in the stretches; made and understood by the library alone
    std::vector<ByteChange> mBytes;  ///< in the order of the file; of a file that is made or removed the whole
};

/// Makes a change of a file that is as it has to be found: of that size and time, with those bytes in the stretches. Any
/// other is left alone (kFileStatus_Changed), as is one where a file is to be made. The file is written as FileProvider
/// writes. What the change holds may come from anywhere. Throws nothing; needs no Initialize. Any thread may call this.
ZEPHMETADATA_EXPORT FileReport ChangeFile(const FileChange& change);
/// How that would go as far as the file shows, without doing it.
ZEPHMETADATA_EXPORT FileReport RehearseFileChange(const FileChange& change);

/// Takes down what takes back each write that its thread makes to files while it lives: by providers, and by ChangeFile
/// itself. It costs the memory of what was replaced. Scopes may be nested: the innermost one takes it down. To be destroyed
/// by the thread that made it, the innermost first.
class ZEPHMETADATA_EXPORT UndoScope {
public:
    UndoScope();
    ~UndoScope();
    UndoScope(const UndoScope&) = delete;
    UndoScope& operator=(const UndoScope&) = delete;

    /// In the order of the writes: to be taken back last one first. The paths are those that were written, for example of
    /// a sidecar.
    const std::vector<FileChange>& Changes() const;

private:
    struct Log;
    std::unique_ptr<Log> mLog;
};

}  // namespace zephmetadata
