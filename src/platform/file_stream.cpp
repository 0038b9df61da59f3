#include <fcntl.h>

#include "platform/file_descriptor.h"
#include "zephcore/files.h"

namespace zephcore {

namespace {

int OpenFlags(FileStream::Mode mode) {
    switch (mode) {
        case FileStream::Mode::kWrite:
            return O_WRONLY | O_CREAT | O_TRUNC;
        case FileStream::Mode::kAppend:
            return O_WRONLY | O_CREAT | O_APPEND;
        case FileStream::Mode::kRead:
            break;
    }
    return O_RDONLY;
}

}  // namespace

struct FileStream::State {
    FileDescriptor mFile;
};

FileStream::FileStream(const File& file, Mode mode)
    : mState(std::make_unique<State>(State{FileDescriptor(SystemPath(file.FullPath()), OpenFlags(mode))})) {}

FileStream::~FileStream() = default;

bool FileStream::IsOpen() const {
    return mState->mFile.IsOpen();
}

std::uint64_t FileStream::Length() const {
    return mState->mFile.Length();
}

std::size_t FileStream::ReadBlock(void* bytes, std::size_t size) {
    return mState->mFile.Read(bytes, size).value_or(0);
}

bool FileStream::WriteBlock(const void* bytes, std::size_t size) {
    return mState->mFile.Write(bytes, size);
}

bool FileStream::WriteText16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(2 * text.size());
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFFU);
        bytes += static_cast<char>(unit >> 8U);
    }
    return WriteBlock(bytes.data(), bytes.size());
}

}  // namespace zephcore
