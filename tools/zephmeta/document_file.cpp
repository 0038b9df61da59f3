#include "document_file.h"

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

}  // namespace zephmeta
