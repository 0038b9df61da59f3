#include "media/files/open_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <vector>

namespace zephmetadata::media {

namespace {

/// Errors of copy_file_range that mean "not here" rather than "it failed".
bool NeedsPlainCopy(int error) {
    constexpr std::array kErrors = {EXDEV, EINVAL, ENOSYS, EOPNOTSUPP, EPERM, EBADF, ETXTBSY};
    return std::find(kErrors.begin(), kErrors.end(), error) != kErrors.end();
}

}  // namespace

OpenFile::OpenFile(int folder, const std::string& name, int flags, mode_t mode)
    : mNumber(Uninterrupted(
          [&] { return openat(folder, name.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode); })) {}

OpenFile& OpenFile::operator=(OpenFile&& other) noexcept {
    if (this != &other) {
        Close();
        mNumber = std::exchange(other.mNumber, kNone);
    }
    return *this;
}

void OpenFile::Close() {
    if (mNumber != kNone) {
        const int error = errno;
        close(std::exchange(mNumber, kNone));
        errno = error;
    }
}

bool ReadFileAt(int file, std::uint64_t offset, void* into, std::size_t size) {
    auto* to = static_cast<char*>(into);
    while (size > 0) {
        const ssize_t part = Uninterrupted([&] { return pread(file, to, size, static_cast<off_t>(offset)); });
        if (part <= 0) {
            errno = part == 0 ? EIO : errno;  // the file got shorter
            return false;
        }
        to += part;
        offset += static_cast<std::uint64_t>(part);
        size -= static_cast<std::size_t>(part);
    }
    return true;
}

bool WriteFileAt(int file, std::uint64_t offset, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t part =
            Uninterrupted([&] { return pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        if (part < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(part));
        offset += static_cast<std::uint64_t>(part);
    }
    return true;
}

bool CopyByBlocks(int from, std::uint64_t fromOffset, int to, std::uint64_t toOffset, std::uint64_t size) {
    std::vector<char> block(static_cast<std::size_t>(std::min<std::uint64_t>(size, kCopyBlockBytes)));
    while (size > 0) {
        const std::uint64_t room = kCopyBlockBytes - toOffset % kCopyBlockBytes;
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>({size, room, block.size()}));
        if (!ReadFileAt(from, fromOffset, block.data(), part) || !WriteFileAt(to, toOffset, {block.data(), part})) {
            return false;
        }
        fromOffset += part;
        toOffset += part;
        size -= part;
    }
    return true;
}

bool CopyRange(int from, std::uint64_t fromOffset, int to, std::uint64_t toOffset, std::uint64_t size) {
    constexpr std::uint64_t kMaxPart = std::uint64_t{1} << 30U;
    while (size > 0) {
        auto fromAt = static_cast<off64_t>(fromOffset);
        auto toAt = static_cast<off64_t>(toOffset);
        const auto part = static_cast<std::size_t>(std::min(size, kMaxPart));
        const ssize_t done = Uninterrupted([&] { return copy_file_range(from, &fromAt, to, &toAt, part, 0); });
        if (done < 0 && !NeedsPlainCopy(errno)) {
            return false;
        }
        if (done <= 0) {
            // Some file systems answer 0 for what they cannot copy this way.
            return CopyByBlocks(from, fromOffset, to, toOffset, size);
        }
        fromOffset += static_cast<std::uint64_t>(done);
        toOffset += static_cast<std::uint64_t>(done);
        size -= static_cast<std::uint64_t>(done);
    }
    return true;
}

bool SyncFile(int file) {
    return Uninterrupted([file] { return fsync(file); }) == 0;
}

void PauseBriefly() {
    constexpr long kPauseNanoseconds = 2'000'000;
    const timespec pause{0, kPauseNanoseconds};
    nanosleep(&pause, nullptr);
}

Lock LockFile(int file, std::chrono::milliseconds patience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (Uninterrupted([file] { return flock(file, LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK) {
            return Lock::kImpossible;
        }
        if (std::chrono::steady_clock::now() >= end) {
            return Lock::kBusy;
        }
        PauseBriefly();
    }
    return Lock::kHeld;
}

void UnlockFile(int file) {
    flock(file, LOCK_UN);
}

UTF8String SystemReason() {
    std::array<char, 256> buffer{};
    return strerror_r(errno, buffer.data(), buffer.size());
}

WriteOutcome SystemFailure() {
    const bool isForbidden = errno == EACCES || errno == EPERM || errno == EROFS;
    return Failure(isForbidden ? FileStatus::kFileStatus_ReadOnly : FileStatus::kFileStatus_NotWritten, SystemReason());
}

}  // namespace zephmetadata::media
