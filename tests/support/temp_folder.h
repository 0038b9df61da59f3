#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace support {

/// A folder of a test's own, removed with all that is in it at the end. While it lives, every base folder of the library
/// points below it and the language is English, so that nothing of the machine reaches the test.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return mPath; }
    /// Writes a file below the folder, making the folders on the way; its path.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const;

private:
    std::filesystem::path mPath;
};

std::string ReadFile(const std::filesystem::path& path);

}  // namespace support
