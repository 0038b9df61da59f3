#include "support.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace fuzz {

std::u16string Text16(const std::uint8_t* data, std::size_t size) {
    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!text.empty()) {
        std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    }
    return text;
}

void Require(bool holds, std::string_view promise) {
    if (!holds) {
        std::fprintf(stderr, "broken promise: %.*s\n", static_cast<int>(promise.size()), promise.data());
        std::abort();
    }
}

}  // namespace fuzz
