#pragma once

#include <memory>

#include "media/files/file_place.h"

namespace zephmetadata::media {

/// What a file system may lack, and what is done without then.
struct SystemMeans {
    bool mUnnamedFiles = true;  ///< O_TMPFILE
    bool mExchange = true;      ///< RENAME_EXCHANGE
};

/// A file in the making, in the folder where it is to stand: without a name while its content is made, so that it goes
/// when the process does, and with a hidden one, and locked, for the instants of its way to the real one. Where the
/// system has no unnamed files it has the hidden name all the time. The hidden name is removed in any case.
class NewFile {
public:
    /// The place outlives it. IsOpen and errno say whether it could be made.
    NewFile(const FilePlace& place, std::string hiddenName, mode_t mode, const SystemMeans& means);
    ~NewFile();
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool IsOpen() const { return static_cast<bool>(*mFile); }
    int Number() const { return mFile->Number(); }
    const std::shared_ptr<const OpenFile>& File() const { return mFile; }

    /// Gives it the hidden name. Waits for a live process that uses it, and removes what a dead one left.
    bool TakeHiddenName();
    /// Gives it a name that must be free.
    bool TakeName(const std::string& name);
    /// Removes what now has the hidden name.
    void RemoveHiddenName();
    /// The hidden name is gone, or another file's that is not to be removed.
    void LeaveHiddenName() { mIsNamed = false; }

private:
    bool Create(mode_t mode);
    bool Link(const std::string& name) const;

    const FilePlace& mPlace;
    std::string mHiddenName;
    std::shared_ptr<const OpenFile> mFile;
    bool mIsNamed = false;
};

/// Removes a file with a hidden name that nobody holds locked, which a killed process left.
void RemoveLeftover(const FilePlace& place, const std::string& hiddenName);

}  // namespace zephmetadata::media
