#include "text.h"

#include <algorithm>
#include <array>

#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmeta {

namespace {

std::string Escaped(std::string_view text, std::string_view kept) {
    constexpr std::string_view kHex = "0123456789abcdef";
    std::string escaped;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        // C1 controls, which some terminals obey, are C2 80 to C2 9F in UTF-8.
        const bool isC1 = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) >= 0x80 &&
                          static_cast<unsigned char>(text[i + 1]) <= 0x9F;
        if (isC1) {
            const auto control = static_cast<unsigned char>(text[++i]);
            escaped += {'\\', 'x', kHex[control >> 4U], kHex[control & 0xFU]};
        } else if ((byte >= 0x20 && byte != 0x7F) || kept.find(c) != std::string_view::npos) {
            escaped += c;
        } else if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\t') {
            escaped += "\\t";
        } else {
            escaped += {'\\', 'x', kHex[byte >> 4U], kHex[byte & 0xFU]};
        }
    }
    return escaped;
}

struct CharacterRange {
    char32_t mFirst;
    char32_t mLast;
};

/// The blocks of East Asian characters that take two columns (Unicode Standard Annex 11, class W and F).
constexpr std::array kWide = {
    CharacterRange{0x1100, 0x115F},   CharacterRange{0x2E80, 0x303E},  CharacterRange{0x3041, 0x33FF},
    CharacterRange{0x3400, 0x4DBF},   CharacterRange{0x4E00, 0x9FFF},  CharacterRange{0xA000, 0xA4CF},
    CharacterRange{0xAC00, 0xD7A3},   CharacterRange{0xF900, 0xFAFF},  CharacterRange{0xFE30, 0xFE6F},
    CharacterRange{0xFF00, 0xFF60},   CharacterRange{0xFFE0, 0xFFE6},  CharacterRange{0x1F300, 0x1F64F},
    CharacterRange{0x1F900, 0x1F9FF}, CharacterRange{0x20000, 0x3FFFD}};
constexpr std::array kCombining = {CharacterRange{0x0300, 0x036F}, CharacterRange{0x200B, 0x200F},
                                   CharacterRange{0x20D0, 0x20FF}, CharacterRange{0xFE00, 0xFE0F}};

template <std::size_t N>
bool IsIn(const std::array<CharacterRange, N>& ranges, char32_t character) {
    return std::any_of(ranges.begin(), ranges.end(), [&](const CharacterRange& range) {
        return character >= range.mFirst && character <= range.mLast;
    });
}

}  // namespace

std::string Shown(const zephmetadata::UTF16String& text) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(text));
}

std::string OneLine(std::string_view text) {
    return Escaped(text, "");
}

std::string Printable(std::string_view text) {
    return Escaped(text, "\n\t");
}

std::string InDoubleQuotes(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        quoted.append(c == '"' ? 2 : 1, c);
    }
    return quoted + "\"";
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

std::size_t Columns(std::string_view text) {
    const zephmetadata::UTF16String units = zephcore::UTF8to16(text);
    std::size_t columns = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (character >= 0xD800 && character < 0xDC00 && i + 1 < units.size()) {
            character = 0x10000 + ((character - 0xD800) << 10U) + (units[++i] - 0xDC00U);
        }
        columns += IsIn(kCombining, character) ? 0 : IsIn(kWide, character) ? 2 : 1;
    }
    return columns;
}

std::string Padded(std::string_view text, std::size_t columns) {
    const std::size_t taken = Columns(text);
    return std::string(text) + std::string(columns > taken ? columns - taken : 0, ' ');
}

}  // namespace zephmeta
