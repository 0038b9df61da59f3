#include "media/files/new_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace zephmetadata::media {

namespace {

/// The name by which the system shows an open file, which may have no other.
std::string DescriptorPath(int file) {
    return "/proc/self/fd/" + std::to_string(file);
}

/// Repeats an attempt that fails with EEXIST, removing what stands in its way if it is nobody's, until patience ends.
template <typename Attempt>
bool WithFreeName(const FilePlace& place, const std::string& name, Attempt attempt) {
    const auto end = std::chrono::steady_clock::now() + kLockPatience;
    while (!attempt()) {
        if (errno != EEXIST || std::chrono::steady_clock::now() >= end) {
            return false;
        }
        RemoveLeftover(place, name);
        if (place.StatusOf(name)) {
            PauseBriefly();
        }
    }
    return true;
}

}  // namespace

void RemoveLeftover(const FilePlace& place, const std::string& hiddenName) {
    const OpenFile leftover = place.Open(hiddenName, O_RDONLY);
    // The name is looked at again under the lock: until then it may have become another file's.
    if (leftover && LockFile(leftover.Number(), {}) == Lock::kHeld && place.IsNameOf(hiddenName, leftover.Number())) {
        place.Remove(hiddenName);
    }
}

NewFile::NewFile(const FilePlace& place, std::string hiddenName, mode_t mode, const SystemMeans& means)
    : mPlace(place), mHiddenName(std::move(hiddenName)), mFile(std::make_shared<const OpenFile>()) {
    if (means.mUnnamedFiles) {
        mFile = std::make_shared<const OpenFile>(place.Folder(), ".", O_TMPFILE | O_RDWR, mode);
        if (IsOpen() && access(DescriptorPath(Number()).c_str(), F_OK) == 0) {
            LockFile(Number(), {});
            return;
        }
    }
    WithFreeName(place, mHiddenName, [&] { return Create(mode); });
}

NewFile::~NewFile() {
    RemoveHiddenName();
    UnlockFile(Number());  // whoever shares the file may keep it open
}

void NewFile::RemoveHiddenName() {
    if (mIsNamed) {
        mPlace.Remove(mHiddenName);
        mIsNamed = false;
    }
}

bool NewFile::Create(mode_t mode) {
    mFile = std::make_shared<const OpenFile>(mPlace.Folder(), mHiddenName, O_CREAT | O_EXCL | O_RDWR, mode);
    if (!IsOpen()) {
        return false;
    }
    // Until it is locked, somebody may take it for a leftover and remove it.
    const bool isOurs = LockFile(Number(), {}) != Lock::kBusy && mPlace.IsNameOf(mHiddenName, Number());
    mIsNamed = isOurs;
    errno = isOurs ? 0 : EEXIST;
    return isOurs;
}

bool NewFile::Link(const std::string& name) const {
    return linkat(AT_FDCWD, DescriptorPath(Number()).c_str(), mPlace.Folder(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool NewFile::TakeHiddenName() {
    mIsNamed = mIsNamed || WithFreeName(mPlace, mHiddenName, [this] { return Link(mHiddenName); });
    return mIsNamed;
}

bool NewFile::TakeName(const std::string& name) {
    if (!mIsNamed) {
        return Link(name);
    }
    // Without unnamed files there may be no hard links either.
    if (renameat2(mPlace.Folder(), mHiddenName.c_str(), mPlace.Folder(), name.c_str(), RENAME_NOREPLACE) == 0) {
        mIsNamed = false;
        return true;
    }
    return errno == EINVAL && linkat(mPlace.Folder(), mHiddenName.c_str(), mPlace.Folder(), name.c_str(), 0) == 0;
}

}  // namespace zephmetadata::media
