#include "frame/toolkit/media/file_replacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>
#include <vector>

namespace zephmetadata::toolkit {

namespace {

/// An open file, closed at its end.
class OpenFile {
public:
    OpenFile(const std::string& path, int flags, mode_t mode = 0600)
        : mNumber(open(path.c_str(), flags | O_CLOEXEC, mode)) {}
    explicit OpenFile(int number) : mNumber(number) {}
    ~OpenFile() {
        if (mNumber >= 0) {
            close(mNumber);
        }
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int Number() const { return mNumber; }
    explicit operator bool() const { return mNumber >= 0; }
    /// Some systems tell only here that something written was lost.
    bool Close() { return close(std::exchange(mNumber, -1)) == 0; }

private:
    int mNumber;
};

bool WriteAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

/// Copies all of @p from, from its beginning, to where @p to stands. An error of the target leaves errno.
bool CopyBytes(int from, int to) {
    constexpr std::size_t kBlock = std::size_t{1} << 20U;
    std::vector<char> block(kBlock);
    if (lseek(from, 0, SEEK_SET) != 0) {
        return false;
    }
    for (;;) {
        const ssize_t size = read(from, block.data(), block.size());
        if (size == 0) {
            return true;
        }
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size < 0 || !WriteAll(to, {block.data(), static_cast<std::size_t>(size)})) {
            return false;
        }
    }
}

off_t SizeOf(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 ? status.st_size : -1;
}

/// Makes @p to hold exactly the bytes of @p from, in place.
bool Overwrite(int from, int to) {
    return lseek(to, 0, SEEK_SET) == 0 && CopyBytes(from, to) && ftruncate(to, SizeOf(from)) == 0 && fsync(to) == 0;
}

/// The names of a file's extended attributes; access control lists are among them.
std::vector<std::string> AttributeNames(int file) {
    std::vector<char> names(static_cast<std::size_t>(std::max<ssize_t>(flistxattr(file, nullptr, 0), 0)));
    const ssize_t size = names.empty() ? 0 : flistxattr(file, names.data(), names.size());
    std::vector<std::string> list;
    for (auto at = names.begin(); at < names.begin() + std::max<ssize_t>(size, 0);) {
        list.emplace_back(&*at);
        at += static_cast<std::ptrdiff_t>(list.back().size()) + 1;
    }
    return list;
}

bool CopyAttribute(int from, int to, const std::string& name) {
    std::vector<char> value(static_cast<std::size_t>(std::max<ssize_t>(fgetxattr(from, name.c_str(), nullptr, 0), 0)));
    const ssize_t size = fgetxattr(from, name.c_str(), value.data(), value.size());
    return size >= 0 && fsetxattr(to, name.c_str(), value.data(), static_cast<std::size_t>(size), 0) == 0;
}

std::string FolderOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

}  // namespace

FileReplacement::FileReplacement(MediaPath target) : mTarget(std::move(target)) {}

FileReplacement::~FileReplacement() {
    if (!mWorkingCopy.empty()) {
        unlink(mWorkingCopy.c_str());
    }
}

bool FileReplacement::Fail(FileStatus status, UTF8String detail) {
    mStatus = status;
    mDetail = std::move(detail);
    return false;
}

bool FileReplacement::FailWithSystemReason() {
    const bool isForbidden = errno == EACCES || errno == EPERM || errno == EROFS;
    return Fail(isForbidden ? FileStatus::kFileStatus_ReadOnly : FileStatus::kFileStatus_NotWritten, SystemReason());
}

bool FileReplacement::CreateWorkingCopy() {
    const std::filesystem::path target(mTarget.mNative);
    const std::string extension = target.extension().string();
    std::string name = (target.parent_path() / ".zephmetadata-XXXXXX").string() + extension;
    const OpenFile file(mkostemps(name.data(), static_cast<int>(extension.size()), O_CLOEXEC));
    if (!file) {
        return FailWithSystemReason();
    }
    mWorkingCopy = std::move(name);
    return true;
}

bool FileReplacement::CopyTarget() {
    if (!CreateWorkingCopy()) {
        return false;
    }
    const OpenFile from(mTarget.mNative, O_RDONLY);
    OpenFile to(mWorkingCopy, O_WRONLY);
    return (from && to && CopyBytes(from.Number(), to.Number()) && to.Close()) || FailWithSystemReason();
}

bool FileReplacement::Fill(std::string_view bytes) {
    if (!CreateWorkingCopy()) {
        return false;
    }
    OpenFile to(mWorkingCopy, O_WRONLY);
    return (to && WriteAll(to.Number(), bytes) && to.Close()) || FailWithSystemReason();
}

/// Gives the working copy what belongs to the file rather than to its content; false where that is not allowed.
bool FileReplacement::TakeOverAttributes() {
    const OpenFile from(mTarget.mNative, O_RDONLY);
    const OpenFile to(mWorkingCopy, O_RDWR);
    struct stat status {};
    if (!from || !to || fstat(from.Number(), &status) != 0 || fchown(to.Number(), status.st_uid, status.st_gid) != 0) {
        return false;
    }
    for (const std::string& name : AttributeNames(from.Number())) {
        if (!CopyAttribute(from.Number(), to.Number(), name)) {
            return false;
        }
    }
    // Last: a change of owner takes set-user-ID away, a control list changes the group's bits.
    constexpr mode_t kModeBits = 07777;
    return fchmod(to.Number(), status.st_mode & kModeBits) == 0 && fsync(to.Number()) == 0;
}

bool FileReplacement::Rename() {
    if (rename(mWorkingCopy.c_str(), mTarget.mNative.c_str()) != 0) {
        return FailWithSystemReason();
    }
    mWorkingCopy.clear();
    const OpenFile folder(FolderOf(mTarget.mNative), O_RDONLY | O_DIRECTORY);
    if (folder) {
        fsync(
            folder.Number());  // the name lives in the folder; where that cannot be synced there is nothing to be done
    }
    return true;
}

/// For files with several names, and where the owner cannot be kept otherwise. The new content is safe in the working
/// copy and the old one in a backup, so that either can be restored.
bool FileReplacement::OverwriteInPlace() {
    FileReplacement backup(mTarget);
    if (!backup.CopyTarget()) {
        return Fail(backup.Status(), backup.Detail());
    }
    const OpenFile from(mWorkingCopy, O_RDONLY);
    const OpenFile old(backup.WorkingCopy(), O_RDONLY);
    const OpenFile target(mTarget.mNative, O_WRONLY);
    if (!from || !old || !target) {
        return FailWithSystemReason();
    }
    const off_t oldSize = SizeOf(target.Number());
    const off_t newSize = SizeOf(from.Number());
    // The space first: running out of it half way is the likeliest way to fail.
    const int reserved = newSize > oldSize ? posix_fallocate(target.Number(), oldSize, newSize - oldSize) : 0;
    if (reserved == 0 && Overwrite(from.Number(), target.Number())) {
        return true;
    }
    errno = reserved != 0 ? reserved : errno;
    FailWithSystemReason();
    if (reserved != 0 ? ftruncate(target.Number(), oldSize) != 0 : !Overwrite(old.Number(), target.Number())) {
        // The old content is in the backup only: keep it for its owner.
        mDetail += "; the old content is in " + std::exchange(backup.mWorkingCopy, {});
    }
    return false;
}

bool FileReplacement::Commit() {
    struct stat status {};
    if (stat(mTarget.mNative.c_str(), &status) != 0 || !(StampOf(mTarget.mNative) == mTarget.mStamp)) {
        return Fail(FileStatus::kFileStatus_Changed, {});
    }
    return status.st_nlink == 1 && TakeOverAttributes() ? Rename() : OverwriteInPlace();
}

}  // namespace zephmetadata::toolkit
