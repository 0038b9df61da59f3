#pragma once

#include <string>
#include <vector>

#include "console.h"

namespace zephmeta {

/// Which files a command is about.
struct FileRequest {
    std::vector<std::string> mNames;       ///< files, folders, "@list" and "-" for a list on standard input
    std::vector<std::string> mExtensions;  ///< of what is taken from folders; empty: those of the known formats
    bool mRecursive = false;
    bool mNulSeparated = false;  ///< names in lists end with NUL bytes instead of line ends
};

/// Whether an argument names files in some way, and not a path of metadata.
bool NamesFiles(const std::string& argument);

/// Every file once, folders in the order of their names. Hidden files and links to folders in folders are passed over. What
/// cannot be read is reported, and the rest is there.
std::vector<std::string> FileNames(const FileRequest& request, Problems& problems);

}  // namespace zephmeta
