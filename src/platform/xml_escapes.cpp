#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/code_points.h"
#include "zephcore/xml.h"

namespace zephcore {

namespace {

struct ReservedRow {
    char mCharacter;
    std::u16string_view mReference;
    std::string_view mEscape;
};

constexpr auto kPredefined = std::to_array<ReservedRow>({
    {'<', u"&lt;", "&lt;"},
    {'>', u"&gt;", "&gt;"},
    {'&', u"&amp;", "&amp;"},
    {'"', u"&quot;", "&quot;"},
    {'\'', u"&apos;", "&apos;"},
});

/// The white space that a parser would normalise in an attribute value.
constexpr auto kWhiteSpace = std::to_array<ReservedRow>({
    {'\t', u"&#9;", "&#9;"},
    {'\n', u"&#10;", "&#10;"},
    {'\r', u"&#13;", "&#13;"},
});

/// The production "Char" of XML 1.0.
constexpr bool IsXmlCharacter(UChar32 c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

constexpr UChar32 kNoDigit = -1;

constexpr UChar32 DigitValue(char16_t c, UChar32 base) {
    if (c >= u'0' && c <= u'9') {
        return c - u'0';
    }
    const auto lower = static_cast<char16_t>(c | 0x20U);
    return base == 16 && lower >= u'a' && lower <= u'f' ? lower - u'a' + 10 : kNoDigit;
}

struct DecodedReference {
    UChar32 mCharacter;
    std::size_t mLength;  ///< of the reference as written
};

/// The numeric character reference at the start of @p text.
std::optional<DecodedReference> NumericReference(std::u16string_view text) {
    constexpr UChar32 kMaxCharacter = 0x10FFFF;
    const bool isHexadecimal = text.starts_with(u"&#x");
    const UChar32 base = isHexadecimal ? 16 : 10;
    const std::size_t firstDigit = isHexadecimal ? 3 : 2;
    std::size_t at = firstDigit;
    UChar32 character = 0;
    for (; at < text.size(); ++at) {
        const UChar32 digit = DigitValue(text[at], base);
        if (digit == kNoDigit) {
            break;
        }
        character = character * base + digit;
        if (character > kMaxCharacter) {
            return std::nullopt;
        }
    }
    if (at == firstDigit || at == text.size() || text[at] != u';' || !IsXmlCharacter(character)) {
        return std::nullopt;
    }
    return DecodedReference{character, at + 1};
}

std::optional<DecodedReference> ReferenceAt(std::u16string_view text) {
    if (text.starts_with(u"&#")) {
        return NumericReference(text);
    }
    for (const ReservedRow& row : kPredefined) {
        if (text.starts_with(row.mReference)) {
            return DecodedReference{row.mCharacter, row.mReference.size()};
        }
    }
    return std::nullopt;
}

/// How @p character is written; empty when it stands for itself.
std::string_view EscapeOf(char character) {
    for (const auto& rows : {std::span<const ReservedRow>(kPredefined), std::span<const ReservedRow>(kWhiteSpace)}) {
        for (const ReservedRow& row : rows) {
            if (row.mCharacter == character) {
                return row.mEscape;
            }
        }
    }
    return {};
}

}  // namespace

UTF16String DecodeReservedCharacters(const UTF16String& text) {
    if (text.find(u'&') == UTF16String::npos) {
        return text;  // nearly all
    }
    UTF16String result;
    result.reserve(text.size());
    std::u16string_view rest = text;
    while (!rest.empty()) {
        const std::size_t plain = std::min(rest.find(u'&'), rest.size());
        result += rest.substr(0, plain);
        rest.remove_prefix(plain);
        if (rest.empty()) {
            break;
        }
        if (const auto reference = ReferenceAt(rest)) {
            AppendCodePoint(result, reference->mCharacter);
            rest.remove_prefix(reference->mLength);
        } else {
            result += u'&';
            rest.remove_prefix(1);
        }
    }
    return result;
}

UTF8String EncodeReservedCharacters(const UTF8String& text) {
    UTF8String result;
    result.reserve(text.size());
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t start = at;
        if (!IsXmlCharacter(NextCodePoint(text, at))) {
            continue;
        }
        const std::string_view escape = at - start == 1 ? EscapeOf(text[start]) : std::string_view();
        result += escape.empty() ? std::string_view(text).substr(start, at - start) : escape;
    }
    return result;
}

}  // namespace zephcore
