#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <string>
#include <unordered_map>

#include "zephcore/files.h"
#include "zephmetadata/file_changes.h"

namespace zephmeta {

/// The times of a file, to be put back after it was written.
class KeptTime {
public:
    KeptTime(const std::string& name, bool isKept)
        : mName(name), mIsKept(isKept && stat(name.c_str(), &mStatus) == 0) {}

    void PutBack() const {
        const std::array times = {mStatus.st_atim, mStatus.st_mtim};
        if (mIsKept) {
            utimensat(AT_FDCWD, mName.c_str(), times.data(), 0);
        }
    }

    /// Has a change that was noted before they were put back expect them; false when it is not one of this file.
    bool Adopt(zephmetadata::FileChange& change) const {
        if (!mIsKept || zephcore::PathToNative(change.mPath) != mName) {
            return false;
        }
        change.mSeconds = mStatus.st_mtim.tv_sec;
        change.mNanoseconds = mStatus.st_mtim.tv_nsec;
        return true;
    }

private:
    std::string mName;
    struct stat mStatus {};
    bool mIsKept;
};

/// The same of several files, by their names.
class KeptTimes {
public:
    KeptTimes() = default;
    KeptTimes(const std::string& name, bool isKept) { Add(name, isKept); }

    void Add(const std::string& name, bool isKept) { mTimes.try_emplace(name, name, isKept); }
    void PutBack(const std::string& name) const { mTimes.at(name).PutBack(); }
    bool Adopt(zephmetadata::FileChange& change) const {
        const auto time = mTimes.find(zephcore::PathToNative(change.mPath));
        return time != mTimes.end() && time->second.Adopt(change);
    }

private:
    std::unordered_map<std::string, KeptTime> mTimes;
};

}  // namespace zephmeta
