#pragma once

#include <sys/types.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "media/files/file_stamp.h"

/// The system's files, as little of them as reading and replacing media files takes.
namespace zephmetadata::media {

/// Repeats a system call while a signal interrupts it.
template <typename Call>
auto Uninterrupted(Call call) {
    for (;;) {
        const auto result = call();
        if (result != -1 || errno != EINTR) {
            return result;
        }
    }
}

/// An open file, closed at its end.
class OpenFile {
public:
    OpenFile() = default;
    explicit OpenFile(int number) : mNumber(number) {}
    /// With the flags of open(2); @p folder may be AT_FDCWD. Never waits for a pipe or a device.
    OpenFile(int folder, const std::string& name, int flags, mode_t mode = 0);
    ~OpenFile() { Close(); }
    OpenFile(OpenFile&& other) noexcept : mNumber(std::exchange(other.mNumber, kNone)) {}
    OpenFile& operator=(OpenFile&& other) noexcept;

    int Number() const { return mNumber; }
    explicit operator bool() const { return mNumber != kNone; }
    void Close();

private:
    static constexpr int kNone = -1;
    int mNumber = kNone;
};

// These answer false when not all bytes could be read or written; errno then says why.

bool ReadFileAt(int file, std::uint64_t offset, void* into, std::size_t size);
bool WriteFileAt(int file, std::uint64_t offset, std::string_view bytes);
/// Copies through a buffer, in blocks that end at whole multiples of their size in the target.
bool CopyByBlocks(int from, std::uint64_t fromOffset, int to, std::uint64_t toOffset, std::uint64_t size);
/// Copies, letting the system share or move the bytes where it can.
bool CopyRange(int from, std::uint64_t fromOffset, int to, std::uint64_t toOffset, std::uint64_t size);
bool SyncFile(int file);

/// Memory that a copy or a comparison takes at a time.
inline constexpr std::size_t kCopyBlockBytes = std::size_t{1} << 20U;

enum class Lock {
    kHeld,
    kBusy,        ///< somebody else has it
    kImpossible,  ///< this file system, or this way of opening the file, knows no locks
};

/// How long a write waits for another one of the same file.
inline constexpr std::chrono::milliseconds kLockPatience{2000};

/// The lock by which our writers of a file take turns. It belongs to the open file and ends with it or with UnlockFile.
Lock LockFile(int file, std::chrono::milliseconds patience);
void UnlockFile(int file);
/// A pause in waiting for another process.
void PauseBriefly();

/// The system's text for the last failed call.
UTF8String SystemReason();
/// The outcome of a write whose last system call failed.
WriteOutcome SystemFailure();
inline WriteOutcome Failure(FileStatus status, UTF8String detail = {}) {
    return {status, std::move(detail), {}};
}
inline WriteOutcome Success(const FileStamp& stamp = {}) {
    return {FileStatus::kFileStatus_Success, {}, stamp};
}

}  // namespace zephmetadata::media
