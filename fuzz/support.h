#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The entry of every target, as libFuzzer and the replay program call it; 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view Text(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// @p data as UTF-16 in the machine's byte order, any code unit allowed; an odd last byte is dropped.
std::u16string Text16(const std::uint8_t* data, std::size_t size);

/// Ends the program, so that the input counts as a finding, when a promise of the library does not hold.
void Require(bool holds, std::string_view promise);

}  // namespace fuzz
