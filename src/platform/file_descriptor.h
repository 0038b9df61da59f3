#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "zephcore/base.h"

namespace zephcore {

/// @p path as the system takes it; empty, which names no file, when it holds a NUL.
std::string SystemPath(std::u16string_view path);

/// An open regular file; closed at its end. Anything else than a regular file does not open, so that no call waits for
/// a pipe or a device.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Opens with the flags and mode of open(2).
    FileDescriptor(const std::string& systemPath, int flags, unsigned mode = 0666);
    ~FileDescriptor() { Close(); }
    FileDescriptor(FileDescriptor&& other) noexcept : mNumber(std::exchange(other.mNumber, kNone)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;

    static FileDescriptor OpenForReading(std::u16string_view path);

    bool IsOpen() const { return mNumber != kNone; }
    std::uint64_t Length() const;
    /// Reads up to @p size bytes, fewer only at the end of the file; absent when reading fails.
    std::optional<std::size_t> Read(void* bytes, std::size_t size);
    bool Write(const void* bytes, std::size_t size);
    bool SetPermissions(unsigned mode);
    bool Sync();
    /// False when the system reports that something written was lost.
    bool Close();

private:
    static constexpr int kNone = -1;
    int mNumber = kNone;
};

}  // namespace zephcore
