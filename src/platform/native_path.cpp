#include <array>

#include "platform/code_points.h"
#include "platform/file_descriptor.h"
#include "zephcore/files.h"

namespace zephcore {

namespace {

/// The lone surrogates that stand for the bytes 0x80 to 0xFF.
constexpr UChar32 kFirstByteSurrogate = 0xDC80;
constexpr UChar32 kLastByteSurrogate = 0xDCFF;
constexpr UChar32 kFirstEscapedByte = 0x80;
constexpr UChar32 kReplacement = 0xFFFD;

bool IsASCII(char c) {
    return static_cast<unsigned char>(c) < kFirstEscapedByte;
}

void AppendUTF8(std::string& text, UChar32 character) {
    std::array<char, U8_MAX_LENGTH> bytes{};
    std::size_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, character);
    text.append(bytes.data(), length);
}

}  // namespace

UTF16String PathFromNative(std::string_view nativePath) {
    UTF16String path;
    path.reserve(nativePath.size());
    std::size_t at = 0;
    while (at < nativePath.size()) {
        if (IsASCII(nativePath[at])) {
            path += static_cast<char16_t>(nativePath[at++]);
            continue;
        }
        const std::size_t start = at;
        const UChar32 character = NextCodePoint(nativePath, at);
        if (character >= 0) {
            AppendCodePoint(path, character);
            continue;
        }
        for (const char byte : nativePath.substr(start, at - start)) {
            AppendCodePoint(path, kFirstByteSurrogate + static_cast<unsigned char>(byte) - kFirstEscapedByte);
        }
    }
    return path;
}

std::string PathToNative(std::u16string_view path) {
    std::string nativePath;
    nativePath.reserve(path.size());
    const char16_t* const units = path.data();
    const std::size_t length = path.size();
    std::size_t at = 0;
    while (at < length) {
        if (units[at] < kFirstEscapedByte) {
            nativePath += static_cast<char>(units[at++]);
            continue;
        }
        UChar32 character = 0;
        U16_NEXT(units, at, length, character);
        if (character >= kFirstByteSurrogate && character <= kLastByteSurrogate) {
            nativePath += static_cast<char>(character - kFirstByteSurrogate + kFirstEscapedByte);
        } else {
            AppendUTF8(nativePath, U_IS_SURROGATE(character) ? kReplacement : character);
        }
    }
    return nativePath;
}

std::string SystemPath(std::u16string_view path) {
    return path.find(u'\0') == std::u16string_view::npos ? PathToNative(path) : std::string();
}

}  // namespace zephcore
