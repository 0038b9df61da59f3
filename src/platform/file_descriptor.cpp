#include "platform/file_descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zephcore {

namespace {

/// The system moves at most this much in one call.
constexpr std::size_t kMaxTransfer = 1U << 30U;

/// Repeats @p call while a signal interrupts it.
template <typename Call>
auto Uninterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR) {
            return result;
        }
    }
}

}  // namespace

FileDescriptor::FileDescriptor(const std::string& systemPath, int flags, unsigned mode)
    // Not blocking, as an open pipe would wait for its other end; regular files do not heed it.
    : mNumber(Uninterrupted([&] { return open(systemPath.c_str(), flags | O_CLOEXEC | O_NONBLOCK, mode); })) {
    struct stat status {};
    if (IsOpen() && (fstat(mNumber, &status) != 0 || !S_ISREG(status.st_mode))) {
        Close();
    }
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
        Close();
        mNumber = std::exchange(other.mNumber, kNone);
    }
    return *this;
}

FileDescriptor FileDescriptor::OpenForReading(std::u16string_view path) {
    return {SystemPath(path), O_RDONLY};
}

std::uint64_t FileDescriptor::Length() const {
    struct stat status {};
    return IsOpen() && fstat(mNumber, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

std::optional<std::size_t> FileDescriptor::Read(void* bytes, std::size_t size) {
    auto* const target = static_cast<char*>(bytes);
    std::size_t done = 0;
    while (done < size) {
        const std::size_t part = std::min(size - done, kMaxTransfer);
        const ssize_t length = Uninterrupted([&] { return read(mNumber, target + done, part); });
        if (length < 0) {
            return std::nullopt;
        }
        if (length == 0) {
            break;
        }
        done += static_cast<std::size_t>(length);
    }
    return done;
}

bool FileDescriptor::Write(const void* bytes, std::size_t size) {
    const auto* const source = static_cast<const char*>(bytes);
    std::size_t done = 0;
    while (done < size) {
        const std::size_t part = std::min(size - done, kMaxTransfer);
        const ssize_t length = Uninterrupted([&] { return write(mNumber, source + done, part); });
        if (length < 0) {
            return false;
        }
        done += static_cast<std::size_t>(length);
    }
    return IsOpen();
}

bool FileDescriptor::SetPermissions(unsigned mode) {
    return fchmod(mNumber, mode) == 0;
}

bool FileDescriptor::Sync() {
    return Uninterrupted([this] { return fsync(mNumber); }) == 0;
}

bool FileDescriptor::Close() {
    // Not repeated after a signal: the number is free in any case and may already be another file's.
    return !IsOpen() || close(std::exchange(mNumber, kNone)) == 0;
}

}  // namespace zephcore
