#pragma once

#include <string>
#include <vector>

/// The commands. Each returns its exit status: 0 done, 1 something asked for could not be done (the rest was).
namespace zephmeta {

int Dump(const std::vector<std::string>& files, bool json);

int Get(const std::string& file, const std::vector<std::string>& paths, bool raw, bool json);

struct SetRequest {
    std::vector<std::string> mArguments;  ///< files and assignments as they stand on the command line
    std::vector<std::string> mAdditions;
    std::vector<std::string> mDeletions;
};
/// 2 when the request itself is wrong (no file, nothing to set).
int Set(const SetRequest& request, bool json);

int ShowSchemas(const std::string& prefix, bool json);
int ShowTypes(const std::string& id, bool json);

}  // namespace zephmeta
