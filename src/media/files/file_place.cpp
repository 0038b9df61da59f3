#include "media/files/file_place.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>

namespace zephmetadata::media {

namespace {

constexpr std::string_view kHiddenPrefix = ".zephmetadata-";

struct FreeDeleter {
    void operator()(char* text) const noexcept { std::free(text); }  // NOLINT: realpath allocates with malloc
};

std::string Hex(std::uint64_t number) {
    std::array<char, 16> digits{};
    auto* const end = std::to_chars(digits.begin(), digits.end(), number, 16).ptr;
    return {digits.begin(), end};
}

/// FNV-1a, 64 bits.
std::uint64_t HashOf(std::string_view text) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    }
    return hash;
}

OpenFile OpenFolder(const std::string& path) {
    OpenFile folder(AT_FDCWD, path, O_RDONLY | O_DIRECTORY);
    // One that may be searched and written, not listed.
    return folder ? std::move(folder) : OpenFile(AT_FDCWD, path, O_PATH | O_DIRECTORY);
}

}  // namespace

std::string RealPath(const std::string& nativePath) {
    if (nativePath.empty() || nativePath.find('\0') != std::string::npos) {
        errno = ENOENT;
        return {};
    }
    const std::unique_ptr<char, FreeDeleter> real(realpath(nativePath.c_str(), nullptr));
    return real ? real.get() : std::string();
}

std::optional<FilePlace> FilePlace::At(const std::string& nativePath, bool mayBeNew) {
    std::string path = RealPath(nativePath);
    if (path.empty() && mayBeNew && errno == ENOENT && !nativePath.empty()) {
        const std::size_t slash = nativePath.rfind('/');
        const std::string name = nativePath.substr(slash + 1);  // all of it when there is no slash
        const std::string folder = slash == std::string::npos ? "." : nativePath.substr(0, slash + 1);
        path = name.empty() ? std::string() : RealPath(folder);
        path += path.empty() ? "" : "/" + name;
    }
    if (path.empty()) {
        return std::nullopt;
    }
    FilePlace place;
    const std::size_t slash = path.rfind('/');
    place.mFolderPath = path.substr(0, slash);
    place.mName = path.substr(slash + 1);
    place.mFolder = OpenFolder(place.mFolderPath + "/");
    return place.mFolder ? std::optional(std::move(place)) : std::nullopt;
}

std::string FilePlace::PassingName() const {
    return std::string(kHiddenPrefix) + Hex(HashOf(mName)) + ".new";
}

std::string FilePlace::JournalName(std::uint64_t inode) {
    return std::string(kHiddenPrefix) + Hex(inode) + ".old";
}

std::optional<struct stat> FilePlace::StatusOf(const std::string& name) const {
    struct stat status {};
    return fstatat(Folder(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? std::optional(status) : std::nullopt;
}

bool FilePlace::IsNameOf(const std::string& name, int file) const {
    const auto status = StatusOf(name);
    return status && StampOf(*status).IsSameFile(StampOf(file));
}

OpenFile FilePlace::Open(const std::string& name, int flags) const {
    return {Folder(), name, flags | O_NOFOLLOW};
}

bool FilePlace::Remove(const std::string& name) const {
    const int error = errno;
    const bool isRemoved = unlinkat(Folder(), name.c_str(), 0) == 0;
    errno = error;
    return isRemoved;
}

void FilePlace::Sync() const {
    const int error = errno;
    SyncFile(Folder());
    errno = error;
}

}  // namespace zephmetadata::media
