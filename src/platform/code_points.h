#pragma once

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstddef>
#include <string_view>

#include "zephcore/base.h"

namespace zephcore {

/// Appends @p codePoint, which may be a lone surrogate, to @p text.
inline void AppendCodePoint(UTF16String& text, UChar32 codePoint) {
    if (U_IS_BMP(codePoint)) {
        text += static_cast<char16_t>(codePoint);
        return;
    }
    text += U16_LEAD(codePoint);
    text += U16_TRAIL(codePoint);
}

/// The code point of the UTF-8 @p text at @p at, which is moved behind it; negative for bytes that are no UTF-8.
inline UChar32 NextCodePoint(std::string_view text, std::size_t& at) {
    const char* const bytes = text.data();
    const std::size_t length = text.size();
    UChar32 codePoint = 0;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // inside ICU's macro
    U8_NEXT(bytes, at, length, codePoint);
#pragma GCC diagnostic pop
    return codePoint;
}

}  // namespace zephcore
