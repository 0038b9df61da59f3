#pragma once

#include "media/files/byte_sources.h"
#include "media/files/new_file.h"

namespace zephmetadata::media {

/// What changes of a file that is written over: from mBegin on, the old bytes up to mOldEnd become the new ones up to
/// mNewEnd. The ends are those of the files, unless these are of the same size.
struct ChangedStretch {
    std::uint64_t mBegin = 0;
    std::uint64_t mOldEnd = 0;
    std::uint64_t mNewEnd = 0;
};

/// Writes the bytes of the open file @p fresh over those of @p old, where the file itself has to stay. The old bytes are
/// first made safe in a journal beside it. When it fails, the old bytes are put back; when the process is killed, the
/// next FinishOverwriting does so. The file is locked by the caller.
WriteOutcome Overwrite(const FilePlace& place, int old, int fresh, const ChangedStretch& changed,
                       const SystemMeans& means);

/// Puts the old bytes back into a file on which a process was killed while it wrote over it. Leaves a file alone that
/// somebody else wrote since then. @p file is open, and locked by the caller.
void FinishOverwriting(const FilePlace& place, int file);

}  // namespace zephmetadata::media
