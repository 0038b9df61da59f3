#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <vector>

#include "platform/code_points.h"
#include "zephcore/localizer.h"

namespace zephcore {

namespace {

struct EscapeRow {
    std::u16string_view mName;
    std::u16string_view mText;
};

constexpr auto kEscapes = std::to_array<EscapeRow>({
    {u"quot", u"\""},
    {u"amp", u"&"},
    {u"lt", u"<"},
    {u"gt", u">"},
    {u"apos", u"'"},
});

constexpr std::u16string_view kEscapeStart = u"#{";
constexpr std::u16string_view kCodePointStart = u"U+";
constexpr std::size_t kMaxCodePointDigits = 6;

std::optional<UChar32> HexadecimalValue(std::u16string_view digits) {
    if (digits.empty() || digits.size() > kMaxCodePointDigits) {
        return std::nullopt;
    }
    UChar32 value = 0;
    for (const char16_t c : digits) {
        const std::size_t digit = std::u16string_view(u"0123456789abcdef").find(c >= u'A' && c <= u'F' ? c | 0x20U : c);
        if (digit == std::u16string_view::npos) {
            return std::nullopt;
        }
        value = value * 16 + static_cast<UChar32>(digit);
    }
    return value;
}

/// What the escape #{@p name} stands for.
std::optional<UTF16String> EscapedText(std::u16string_view name) {
    for (const EscapeRow& row : kEscapes) {
        if (row.mName == name) {
            return UTF16String(row.mText);
        }
    }
    if (!name.starts_with(kCodePointStart)) {
        return std::nullopt;
    }
    const std::optional<UChar32> value = HexadecimalValue(name.substr(kCodePointStart.size()));
    if (!value || *value > 0x10FFFF || U_IS_SURROGATE(*value)) {
        return std::nullopt;
    }
    UTF16String text;
    AppendCodePoint(text, *value);
    return text;
}

/// @p text so that it is resolved to itself: what looks like an escape in it is none.
UTF16String WithoutEscapes(std::u16string_view text) {
    UTF16String result;
    while (!text.empty()) {
        const std::size_t start = std::min(text.find(kEscapeStart), text.size());
        result += text.substr(0, start);
        text.remove_prefix(start);
        if (!text.empty()) {
            result += u"#{U+23}";  // the number sign itself, which then begins no escape
            text.remove_prefix(1);
        }
    }
    return result;
}

/// The length of the longest name an escape has: "U+" and six digits.
constexpr std::size_t kMaxEscapeName = kCodePointStart.size() + kMaxCodePointDigits;

}  // namespace

UTF16String ResolveDisplayEscapes(std::u16string_view text) {
    if (text.find(kEscapeStart) == std::u16string_view::npos) {
        return UTF16String(text);
    }
    UTF16String result;
    while (!text.empty()) {
        const std::size_t start = std::min(text.find(kEscapeStart), text.size());
        result += text.substr(0, start);
        text.remove_prefix(start);
        const std::u16string_view name = text.substr(std::min(kEscapeStart.size(), text.size()), kMaxEscapeName + 1);
        const std::size_t end = name.find(u'}');
        const auto resolved = end != std::u16string_view::npos ? EscapedText(name.substr(0, end)) : std::nullopt;
        const std::size_t taken = resolved ? kEscapeStart.size() + end + 1 : std::min<std::size_t>(1, text.size());
        result += resolved ? *resolved : UTF16String(text.substr(0, taken));
        text.remove_prefix(taken);
    }
    return result;
}

UTF16String ReplaceInString(std::u16string_view textTemplate, std::initializer_list<UTF16String> arguments) {
    return ReplaceInString(textTemplate, std::span(arguments.begin(), arguments.size()));
}

UTF16String ReplaceInString(std::u16string_view textTemplate, std::span<const UTF16String> arguments) {
    UTF16String result;
    for (std::size_t at = 0; at < textTemplate.size(); ++at) {
        const char16_t next = at + 1 < textTemplate.size() ? textTemplate[at + 1] : u'\0';
        if (textTemplate[at] != u'@' || next < u'0' || next > u'9') {
            result += textTemplate[at];
            continue;
        }
        const auto index = static_cast<std::size_t>(next - u'0');
        result += index < arguments.size() ? arguments[index] : UTF16String();
        ++at;
    }
    return result;
}

UTF16String ReplaceForDisplay(std::u16string_view textTemplate, std::span<const UTF16String> arguments) {
    std::vector<UTF16String> texts;
    texts.reserve(arguments.size());
    std::transform(arguments.begin(), arguments.end(), std::back_inserter(texts), WithoutEscapes);
    return ReplaceInString(textTemplate, texts);
}

UTF16String ZString(std::u16string_view key, std::initializer_list<UTF16String> arguments) {
    return ReplaceForDisplay(Localizer::Get().Translate(key), std::span(arguments.begin(), arguments.size()));
}

}  // namespace zephcore
