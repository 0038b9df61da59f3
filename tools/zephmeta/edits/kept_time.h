#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <string>
#include <unordered_map>

#include "zephcore/files.h"
#include "zephmetadata/file_changes.h"

namespace zephmeta {

/// Of a file that was written.
constexpr const char* kTimeNotPutBack = "its time of modification could not be put back";

/// The times of a file, to be put back after it was written.
class KeptTime {
public:
    KeptTime(const std::string& name, bool isKept)
        : mName(name), mIsKept(isKept && stat(name.c_str(), &mStatus) == 0) {}

    /// False when the system does not let it; the file has then those of the write.
    bool PutBack() {
        const std::array times = {mStatus.st_atim, mStatus.st_mtim};
        const bool isDone = !mIsKept || utimensat(AT_FDCWD, mName.c_str(), times.data(), 0) == 0;
        mIsKept = mIsKept && isDone;
        return isDone;
    }

    /// Has a change that was noted before they were put back expect them; false when it is not one of this file, or they
    /// were not.
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
    bool PutBack(const std::string& name) { return mTimes.at(name).PutBack(); }
    bool Adopt(zephmetadata::FileChange& change) const {
        const auto time = mTimes.find(zephcore::PathToNative(change.mPath));
        return time != mTimes.end() && time->second.Adopt(change);
    }

private:
    std::unordered_map<std::string, KeptTime> mTimes;
};

}  // namespace zephmeta
