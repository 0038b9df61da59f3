#pragma once

#include <filesystem>

#include "platform/file_descriptor.h"

namespace zephcore {

/// The new contents of a file, written beside it and put in its place at once by Commit. Without a commit the old file
/// stays and the new one is removed.
class ReplacementFile {
public:
    /// For the file at @p path, existing or not; through symbolic links, which stay.
    explicit ReplacementFile(std::u16string_view path);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// False when the file may not be replaced or no file can be made beside it.
    bool IsOpen() const { return mFile.IsOpen(); }
    bool Write(const void* bytes, std::size_t size) { return mFile.Write(bytes, size); }
    bool Commit();

private:
    void CreateBeside(unsigned mode);

    std::filesystem::path mTarget;
    std::filesystem::path mTemporary;
    FileDescriptor mFile;
};

}  // namespace zephcore
