#include "media/native/iim/iim_text.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace zephmetadata::media {

namespace {

/// Windows-1252 from 0x80 to 0x9F; bytes that it leaves open stand for the control characters of ISO 8859-1.
constexpr std::array<std::uint16_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

struct CharsetRow {
    std::string_view mEscape;
    IIMCharset mCharset;
};
/// ISO/IEC 2022 and the International Register: G0, or G1 to G3 where that is what the upper half shows.
constexpr auto kCharsets = std::to_array<CharsetRow>({
    {"\x1B%G", IIMCharset::kUTF8},
    {"\x1B%/G", IIMCharset::kUTF8},
    {"\x1B%/H", IIMCharset::kUTF8},
    {"\x1B%/I", IIMCharset::kUTF8},
    {"\x1B-A", IIMCharset::kLatin1},
    {"\x1B.A", IIMCharset::kLatin1},
    {"\x1B/A", IIMCharset::kLatin1},
    {"\x1B(B", IIMCharset::kLatin1},
    {"", IIMCharset::kUndeclared},
});

/// The size of the character that @p text begins with; 0 when it is none.
std::size_t UTF8Size(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        return 1;
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return 0;
    }
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

/// Whether @p text, which ends within or with a character, is the beginning of a valid one (Unicode, table 3-7).
bool IsUTF8Begin(std::string_view text) {
    for (std::size_t i = 1; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80) {
            return false;
        }
    }
    if (text.size() < 2) {
        return true;
    }
    const auto lead = static_cast<unsigned char>(text[0]);
    const auto second = static_cast<unsigned char>(text[1]);
    return (lead != 0xE0 || second >= 0xA0) && (lead != 0xED || second < 0xA0) && (lead != 0xF0 || second >= 0x90) &&
           (lead != 0xF4 || second < 0x90);
}

/// How much of the text, from its begin, are whole valid characters.
std::size_t ValidSize(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t size = UTF8Size(text.substr(at));
        if (size == 0 || size > text.size() - at || !IsUTF8Begin(text.substr(at, size))) {
            break;
        }
        at += size;
    }
    return at;
}

void AppendUTF8(std::string& text, std::uint32_t code) {  // of the Basic Multilingual Plane
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0U | code >> 6U);
        text += static_cast<char>(0x80U | (code & 0x3FU));
    } else {
        text += static_cast<char>(0xE0U | code >> 12U);
        text += static_cast<char>(0x80U | (code >> 6U & 0x3FU));
        text += static_cast<char>(0x80U | (code & 0x3FU));
    }
}

std::string FromWindows1252(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        AppendUTF8(text, value >= 0x80 && value < 0xA0 ? kWindows1252.at(value - 0x80U) : value);
    }
    return text;
}

/// The code point of a valid character.
std::uint32_t CodePoint(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    std::uint32_t code = character.size() == 1 ? lead : lead & (0x7FU >> character.size());
    for (std::size_t i = 1; i < character.size(); ++i) {
        code = code << 6U | (static_cast<unsigned char>(character[i]) & 0x3FU);
    }
    return code;
}

std::optional<char> Windows1252Byte(std::uint32_t code) {
    if (code < 0x80 || (code >= 0xA0 && code < 0x100)) {
        return static_cast<char>(code);
    }
    const auto* const found = std::find(kWindows1252.begin(), kWindows1252.end(), code);
    return found == kWindows1252.end() ? std::nullopt
                                       : std::optional(static_cast<char>(0x80 + (found - kWindows1252.begin())));
}

}  // namespace

IIMCharset DeclaredCharset(std::string_view escapes) {
    const auto* const row = std::find_if(kCharsets.begin(), kCharsets.end(),
                                         [&](const CharsetRow& known) { return known.mEscape == escapes; });
    return row == kCharsets.end() ? IIMCharset::kUnknown : row->mCharset;
}

bool IsASCII(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsUTF8(std::string_view text) {
    return ValidSize(text) == text.size();
}

bool IsCutUTF8(std::string_view text) {
    const std::string_view rest = text.substr(ValidSize(text));
    return !rest.empty() && rest.size() < UTF8Size(rest) && IsUTF8Begin(rest) && rest.size() < text.size();
}

std::optional<std::string> DecodedText(std::string_view bytes, IIMCharset charset) {
    if (IsASCII(bytes)) {
        return std::string(bytes);
    }
    if (charset == IIMCharset::kLatin1) {
        return FromWindows1252(bytes);
    }
    if (IsUTF8(bytes)) {
        return std::string(bytes);
    }
    if (charset == IIMCharset::kUnknown) {
        return std::nullopt;
    }
    // A lone last byte of two of the upper half is a letter of Windows-1252 unless the text before it is UTF-8 beyond doubt.
    const std::size_t valid = ValidSize(bytes);
    if (IsCutUTF8(bytes) && (charset == IIMCharset::kUTF8 || !IsASCII(bytes.substr(0, valid)))) {
        return std::string(bytes.substr(0, valid));
    }
    return FromWindows1252(bytes);
}

std::string CleanedText(std::string_view text) {
    std::string cleaned;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool isControl = static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
        if (c != '\r') {
            cleaned += isControl ? ' ' : c;
        } else if (i + 1 == text.size() || text[i + 1] != '\n') {
            cleaned += '\n';
        }
    }
    cleaned.erase(cleaned.find_last_not_of(" \t\n") + 1);  // all of it where there is nothing else
    return cleaned;
}

std::optional<std::string> ReadableText(std::string_view bytes, IIMCharset charset) {
    const std::optional<std::string> text = DecodedText(bytes, charset);
    return text ? std::optional(CleanedText(*text)) : std::nullopt;
}

std::optional<std::string> Windows1252Text(std::string_view text, std::optional<char> unmappable) {
    std::string bytes;
    for (std::size_t at = 0, size = 0; at < text.size(); at += size) {
        size = ValidSize(text.substr(at, 4)) == 0 ? 0 : UTF8Size(text.substr(at));
        const std::optional<char> byte = size == 0 ? unmappable : Windows1252Byte(CodePoint(text.substr(at, size)));
        if (!byte && !unmappable) {
            return std::nullopt;
        }
        bytes += byte ? *byte : *unmappable;
        size = std::max<std::size_t>(size, 1);
    }
    return bytes;
}

std::string_view CutText(std::string_view text, std::size_t maxBytes, bool isUTF8) {
    if (text.size() <= maxBytes) {
        return text;
    }
    std::size_t size = maxBytes;
    while (isUTF8 && size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80) {
        --size;
    }
    return text.substr(0, size);
}

}  // namespace zephmetadata::media
