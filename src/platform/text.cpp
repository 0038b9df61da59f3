#include "zephcore/text.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cassert>
#include <limits>
#include <stdexcept>

namespace zephcore {

namespace {

constexpr std::int32_t kReplacement = 0xFFFD;
/// ICU counts in 32 bits; a UTF-16 unit becomes at most this many bytes of UTF-8.
constexpr std::size_t kMaxBytesPerUnit = 3;
constexpr std::size_t kMaxIcuLength = std::numeric_limits<std::int32_t>::max();

std::int32_t IcuLength(std::size_t length) {
    if (length > kMaxIcuLength) {
        throw std::length_error("text too long to convert");
    }
    return static_cast<std::int32_t>(length);
}

void Finish(UErrorCode status, std::int32_t substitutions, TextError* error) {
    // The target is large enough and the lengths are valid, so nothing but exhausted memory could fail.
    assert(U_SUCCESS(status));
    static_cast<void>(status);
    if (error != nullptr) {
        *error = substitutions == 0 ? TextError::kNone : TextError::kMalformed;
    }
}

/// Most texts are ASCII, for which no conversion is needed.
template <typename Text>
bool IsASCII(const Text& text) {
    return std::all_of(text.begin(), text.end(), [](auto unit) { return unit >= 0 && unit < 0x80; });
}

}  // namespace

UTF16String UTF8to16(std::string_view text, TextError* error) {
    if (IsASCII(text)) {
        Finish(U_ZERO_ERROR, 0, error);
        return {text.begin(), text.end()};
    }
    // Never more units than bytes.
    UTF16String result(text.size(), u'\0');
    std::int32_t length = 0;
    std::int32_t substitutions = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(result.data(), IcuLength(result.size()), &length, text.data(), IcuLength(text.size()),
                         kReplacement, &substitutions, &status);
    Finish(status, substitutions, error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

UTF8String UTF16to8(std::u16string_view text, TextError* error) {
    if (IsASCII(text)) {
        Finish(U_ZERO_ERROR, 0, error);
        UTF8String ascii(text.size(), '\0');
        std::transform(text.begin(), text.end(), ascii.begin(), [](char16_t unit) { return static_cast<char>(unit); });
        return ascii;
    }
    const std::size_t room = text.size() > kMaxIcuLength ? text.size() : text.size() * kMaxBytesPerUnit;
    const std::int32_t capacity = IcuLength(room);
    UTF8String result(room, '\0');
    std::int32_t length = 0;
    std::int32_t substitutions = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(result.data(), capacity, &length, text.data(), IcuLength(text.size()), kReplacement,
                       &substitutions, &status);
    Finish(status, substitutions, error);
    result.resize(static_cast<std::size_t>(length));
    return result;
}

UTF16String AsciiToUTF16(std::string_view text) {
    assert(IsASCII(text));
    return {text.begin(), text.end()};
}

}  // namespace zephcore
