#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zephmetadata/file_changes.h"

namespace zephmeta {

/// What is kept of one file that was written.
struct JournalRecord {
    std::string mPath;                  ///< absolute, in the bytes of the file system
    zephmetadata::FileChange mUndo;     ///< of that path
    std::vector<std::string> mChanged;  ///< the expressions of what was edited
    bool mKeepsTime = false;            ///< the time of modification was put back after the write
};

std::string Packed(const JournalRecord& record);
/// Absent for what is no such record.
std::optional<JournalRecord> Unpacked(std::string_view bytes);

}  // namespace zephmeta
