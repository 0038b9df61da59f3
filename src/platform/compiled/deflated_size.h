#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zephcore {

/// A deflated document is its size in four bytes, the lowest first, and a zlib stream (RFC 1950).
inline constexpr std::size_t kDeflatedSizeBytes = 4;

constexpr std::size_t DeflatedSize(std::string_view deflated) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < kDeflatedSizeBytes && i < deflated.size(); ++i) {
        size |= std::size_t{static_cast<unsigned char>(deflated[i])} << (8 * i);
    }
    return size;
}

inline std::string DeflatedSizeBytes(std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < kDeflatedSizeBytes; ++i) {
        bytes += static_cast<char>((size >> (8 * i)) & 0xFFU);
    }
    return bytes;
}

}  // namespace zephcore
