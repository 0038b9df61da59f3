#include "frame/toolkit/media/media_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "zephcore/files.h"

namespace zephmetadata::toolkit {

namespace {

FileStamp StampOf(const struct stat& status) {
    return {status.st_dev, status.st_ino, static_cast<std::uint64_t>(status.st_size), status.st_mtim.tv_sec,
            status.st_mtim.tv_nsec};
}

FileStatus StatusOfError(int error) {
    return error == ENOENT || error == ENOTDIR ? FileStatus::kFileStatus_NoFile : FileStatus::kFileStatus_Unreadable;
}

MediaPath Failure(FileStatus status, UTF8String detail) {
    MediaPath failure;
    failure.mStatus = status;
    failure.mDetail = std::move(detail);
    return failure;
}

/// No detail where the status says it all.
MediaPath SystemFailure() {
    const FileStatus status = StatusOfError(errno);
    return Failure(status, status == FileStatus::kFileStatus_NoFile ? UTF8String() : SystemReason());
}

struct FreeDeleter {
    void operator()(char* text) const noexcept { std::free(text); }  // NOLINT: realpath allocates with malloc
};

}  // namespace

UTF8String SystemReason() {
    std::array<char, 256> buffer{};
    return strerror_r(errno, buffer.data(), buffer.size());
}

FileStamp StampOf(const std::string& nativePath) {
    struct stat status {};
    return stat(nativePath.c_str(), &status) == 0 ? StampOf(status) : FileStamp();
}

MediaPath ResolveMediaPath(const UTF16String& path) {
    const std::string native = zephcore::PathToNative(path);
    if (native.empty() || native.find('\0') != std::string::npos) {
        return Failure(FileStatus::kFileStatus_NoFile, {});
    }
    const std::unique_ptr<char, FreeDeleter> real(realpath(native.c_str(), nullptr));
    struct stat status {};
    if (!real || stat(real.get(), &status) != 0) {
        return SystemFailure();
    }
    if (!S_ISREG(status.st_mode)) {
        return Failure(FileStatus::kFileStatus_NotAFile, S_ISDIR(status.st_mode) ? "a folder" : "");
    }
    if (faccessat(AT_FDCWD, real.get(), R_OK, AT_EACCESS) != 0) {
        return SystemFailure();
    }
    return {FileStatus::kFileStatus_Success, {}, real.get(), StampOf(status)};
}

MediaPath ResolveWritablePath(const UTF16String& path) {
    MediaPath resolved = ResolveMediaPath(path);
    if (resolved.mStatus != FileStatus::kFileStatus_Success) {
        return resolved;
    }
    if (faccessat(AT_FDCWD, resolved.mNative.c_str(), W_OK, AT_EACCESS) != 0) {
        return Failure(FileStatus::kFileStatus_ReadOnly, SystemReason());
    }
    return resolved;
}

MediaPath ResolveUnchanged(const UTF16String& path, const FileStamp& stamp) {
    MediaPath target = ResolveWritablePath(path);
    if (target.mStatus == FileStatus::kFileStatus_Success && !(target.mStamp == stamp)) {
        target.mStatus = FileStatus::kFileStatus_Changed;
    }
    return target;
}

}  // namespace zephmetadata::toolkit
