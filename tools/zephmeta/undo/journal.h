#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "batch/batch.h"
#include "edits/kept_time.h"
#include "undo/journal_file.h"

namespace zephmeta {

/// Keeps what takes back the writes of one run of a command, from the first one on. May be used by several threads at once.
class Journal {
public:
    /// To be called when a file was written. When nothing can be kept the result of the first such file says so.
    void Record(const zephmetadata::UndoScope& undo, const std::vector<std::string>& changed, FileResult& result,
                const KeptTimes& times = {});

private:
    std::mutex mMutex;  // of what follows
    std::unique_ptr<JournalFile> mFile;
    bool mIsBroken = false;
};

}  // namespace zephmeta
