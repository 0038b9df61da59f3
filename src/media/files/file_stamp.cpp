#include "media/files/file_stamp.h"

#include <sys/stat.h>

namespace zephmetadata::media {

FileStamp StampOf(const struct stat& status) {
    return {status.st_dev,
            status.st_ino,
            static_cast<std::uint64_t>(status.st_size),
            {status.st_mtim.tv_sec, status.st_mtim.tv_nsec},
            {status.st_ctim.tv_sec, status.st_ctim.tv_nsec}};
}

FileStamp StampOf(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 ? StampOf(status) : FileStamp();
}

FileStamp StampOf(const std::string& nativePath) {
    struct stat status {};
    return stat(nativePath.c_str(), &status) == 0 ? StampOf(status) : FileStamp();
}

}  // namespace zephmetadata::media
