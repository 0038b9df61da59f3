#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <string_view>

/// Integers in foreign bytes. Whoever reads or writes one has checked that it lies within the bytes.
namespace zephmetadata::media {

enum class ByteOrder { kLittle, kBig };

/// @p size bytes at @p at as an unsigned number; @p size is at most 8.
inline std::uint64_t GetNumber(std::string_view bytes, std::size_t at, std::size_t size, ByteOrder order) {
    assert(size <= 8 && at <= bytes.size() && size <= bytes.size() - at);
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t place = order == ByteOrder::kBig ? at + i : at + size - 1 - i;
        value = value << 8U | static_cast<unsigned char>(bytes[place]);
    }
    return value;
}
inline std::uint8_t Get8(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(GetNumber(bytes, at, 1, ByteOrder::kBig));
}
inline std::uint16_t Get16(std::string_view bytes, std::size_t at, ByteOrder order = ByteOrder::kBig) {
    return static_cast<std::uint16_t>(GetNumber(bytes, at, 2, order));
}
inline std::uint32_t Get32(std::string_view bytes, std::size_t at, ByteOrder order = ByteOrder::kBig) {
    return static_cast<std::uint32_t>(GetNumber(bytes, at, 4, order));
}
inline std::uint64_t Get64(std::string_view bytes, std::size_t at, ByteOrder order = ByteOrder::kBig) {
    return GetNumber(bytes, at, 8, order);
}

/// The low @p size bytes of a number.
inline std::string NumberBytes(std::uint64_t value, std::size_t size, ByteOrder order = ByteOrder::kBig) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[order == ByteOrder::kLittle ? i : size - 1 - i] = static_cast<char>(value & 0xFFU);
        value >>= 8U;
    }
    return bytes;
}
inline void PutNumber(std::string& bytes, std::size_t at, std::uint64_t value, std::size_t size, ByteOrder order) {
    assert(at <= bytes.size() && size <= bytes.size() - at);
    bytes.replace(at, size, NumberBytes(value, size, order));
}

}  // namespace zephmetadata::media
