#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Numbers of 64 bits in files of our own, their lowest byte first.
namespace zephmeta {

constexpr std::size_t kNumberBytes = 8;
constexpr unsigned kBitsOfAByte = 8;

inline std::string NumberBytes(std::uint64_t number) {
    std::string bytes;
    for (std::size_t i = 0; i < kNumberBytes; ++i) {
        bytes += static_cast<char>(number & 0xFFU);
        number >>= kBitsOfAByte;
    }
    return bytes;
}

/// @p bytes has at least kNumberBytes.
inline std::uint64_t NumberIn(std::string_view bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = kNumberBytes; i-- > 0;) {
        number = number << kBitsOfAByte | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

}  // namespace zephmeta
