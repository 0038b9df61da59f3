#include "platform/replacement_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <random>

namespace zephcore {

namespace {

namespace fs = std::filesystem;

constexpr int kMaxLinks = 40;  // as Linux follows
constexpr int kMaxNameAttempts = 16;
constexpr unsigned kNewFileMode = 0666;  // less the process's mask
constexpr unsigned kPermissionBits = 0777;

/// What @p path leads to, existing or not; empty for a circle of links.
fs::path ResolvedLinks(fs::path path) {
    for (int link = 0; link < kMaxLinks; ++link) {
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            return path;
        }
        path = path.parent_path() / target;
    }
    return {};
}

std::string RandomName() {
    std::random_device random;
    return ".zephcore-" + std::to_string(random()) + "-" + std::to_string(random()) + ".tmp";
}

}  // namespace

ReplacementFile::ReplacementFile(std::u16string_view path) : mTarget(ResolvedLinks(SystemPath(path))) {
    struct stat status {};
    if (mTarget.filename().empty()) {
        return;
    }
    if (stat(mTarget.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            CreateBeside(kNewFileMode);
        }
        return;
    }
    // The folder's permissions alone would let a write-protected file be replaced.
    if (!S_ISREG(status.st_mode) || faccessat(AT_FDCWD, mTarget.c_str(), W_OK, AT_EACCESS) != 0) {
        return;
    }
    const unsigned mode = status.st_mode & kPermissionBits;
    CreateBeside(mode);
    if (IsOpen() && !mFile.SetPermissions(mode)) {
        mFile.Close();
    }
}

ReplacementFile::~ReplacementFile() {
    if (!mTemporary.empty()) {
        unlink(mTemporary.c_str());
    }
}

bool ReplacementFile::Commit() {
    if (!mFile.Sync() || !mFile.Close() || rename(mTemporary.c_str(), mTarget.c_str()) != 0) {
        return false;
    }
    mTemporary.clear();
    return true;
}

void ReplacementFile::CreateBeside(unsigned mode) {
    for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
        const fs::path path = mTarget.parent_path() / RandomName();
        mFile = FileDescriptor(path.native(), O_WRONLY | O_CREAT | O_EXCL, mode);
        if (IsOpen()) {
            mTemporary = path;
            return;
        }
        if (errno != EEXIST) {
            return;
        }
    }
}

}  // namespace zephcore
