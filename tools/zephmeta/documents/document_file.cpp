#include "documents/document_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <cstdint>
#include <filesystem>
#include <fstream>

namespace zephmeta {

std::optional<std::string> ReadDocument(const std::string& name) {
    constexpr std::uintmax_t kMostBytes = std::uintmax_t{256} << 20U;
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(name, error);
    if (error || size > kMostBytes) {
        return std::nullopt;
    }
    std::string text(size, '\0');
    std::ifstream in(name, std::ios::binary);
    in.read(text.data(), static_cast<std::streamsize>(size));
    return in ? std::optional(std::move(text)) : std::nullopt;
}

std::string WriteNewFile(const std::string& name, const std::string& bytes) {
    constexpr mode_t kMode = 0666;  // less what the user's mask takes away
    const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    if (descriptor < 0) {
        return errno == EEXIST ? name + " is there already"
                               : name + " cannot be written (" + std::strerror(errno) + ")";
    }
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (count < 0 && errno != EINTR) {
            break;
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    const bool isWhole = fsync(descriptor) == 0 && done == bytes.size();
    const std::string reason = isWhole ? std::string() : name + " cannot be written (" + std::strerror(errno) + ")";
    if (close(descriptor) != 0 || !isWhole) {
        unlink(name.c_str());
        return reason.empty() ? name + " cannot be written" : reason;
    }
    return {};
}

}  // namespace zephmeta
