#include <filesystem>
#include <vector>

#include "platform/file_descriptor.h"
#include "platform/replacement_file.h"
#include "zephcore/files.h"

namespace zephcore::FileUtils {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCopyBlock = 64U << 10U;

}  // namespace

bool EnsureDirectoryExists(const UTF16String& path) {
    std::error_code ignored;
    fs::create_directories(SystemPath(path), ignored);
    return IsDir(path);
}

bool FileOrDirExists(const UTF16String& path) {
    std::error_code ignored;
    return fs::exists(SystemPath(path), ignored);
}

bool FileExists(const UTF16String& path) {
    std::error_code ignored;
    return fs::is_regular_file(SystemPath(path), ignored);
}

bool IsDir(const UTF16String& path) {
    std::error_code ignored;
    return fs::is_directory(SystemPath(path), ignored);
}

bool IsLink(const UTF16String& path) {
    std::error_code ignored;
    return fs::is_symlink(fs::symlink_status(SystemPath(path), ignored));
}

std::optional<std::uint64_t> FileLength(const UTF16String& path) {
    std::error_code error;
    const std::uintmax_t length = fs::file_size(SystemPath(path), error);
    return error ? std::nullopt : std::optional<std::uint64_t>(length);
}

std::optional<UTF16String> CanonicalPath(const UTF16String& path) {
    std::error_code error;
    const fs::path canonical = fs::canonical(SystemPath(path), error);
    return error ? std::nullopt : std::optional(PathFromNative(canonical.native()));
}

bool Copy(const UTF16String& from, const UTF16String& to) {
    FileDescriptor source = FileDescriptor::OpenForReading(from);
    if (!source.IsOpen()) {
        return false;
    }
    ReplacementFile target(to);
    if (!target.IsOpen()) {
        return false;
    }
    std::vector<char> block(kCopyBlock);
    for (;;) {
        const std::optional<std::size_t> length = source.Read(block.data(), block.size());
        if (!length || !target.Write(block.data(), *length)) {
            return false;
        }
        if (*length == 0) {
            return target.Commit();
        }
    }
}

bool RemoveFile(const UTF16String& path) {
    std::error_code error;
    const fs::path native = SystemPath(path);
    const fs::file_status status = fs::symlink_status(native, error);
    return !fs::is_directory(status) && fs::remove(native, error);
}

std::optional<UTF8String> ReadFileToString(const UTF16String& path, std::uint64_t maxBytes) {
    FileDescriptor file = FileDescriptor::OpenForReading(path);
    if (!file.IsOpen() || file.Length() > maxBytes) {
        return std::nullopt;
    }
    UTF8String text(static_cast<std::size_t>(file.Length()), '\0');
    const std::optional<std::size_t> length = file.Read(text.data(), text.size());
    if (!length) {
        return std::nullopt;
    }
    text.resize(*length);
    return text;
}

bool SimpleWriteStringToFile(const UTF16String& path, const UTF8String& text) {
    ReplacementFile file(path);
    return file.IsOpen() && file.Write(text.data(), text.size()) && file.Commit();
}

}  // namespace zephcore::FileUtils
