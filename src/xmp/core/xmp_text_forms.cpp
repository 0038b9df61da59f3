#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

[[noreturn]] void ThrowBadValue(std::string_view kind, std::string_view text) {
    constexpr std::size_t kShown = 80;
    ThrowError(XMPErr_BadValue, UTF8String(kind).append(" \"").append(text.substr(0, kShown)).append("\""));
}

struct BoolRow {
    std::string_view mText;
    bool mValue;
};

constexpr auto kBoolTexts =
    std::to_array<BoolRow>({{"true", true}, {"t", true}, {"1", true}, {"false", false}, {"f", false}, {"0", false}});

}  // namespace

std::int64_t ConvertToInt64(std::string_view text) {
    std::string_view digits = Trimmed(text);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    const bool hex = digits.starts_with("0x") || digits.starts_with("0X");
    if (hex) {
        digits.remove_prefix(2);
    }
    std::uint64_t magnitude = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, magnitude, hex ? 16 : 10);
    constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (digits.empty() || error != std::errc() || stop != end || magnitude > kMost + (negative ? 1U : 0U)) {
        ThrowBadValue("integer", text);
    }
    return static_cast<std::int64_t>(negative ? 0U - magnitude : magnitude);
}

double ConvertToFloat(std::string_view text) {
    std::string_view number = Trimmed(text);
    const bool plus = number.starts_with('+') && !number.starts_with("+-");
    if (plus) {
        number.remove_prefix(1);
    }
    double value = 0;
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, value);
    if (number.empty() || error != std::errc() || stop != end || !std::isfinite(value)) {
        ThrowBadValue("number", text);
    }
    return value;
}

bool ConvertToBool(std::string_view text) {
    const std::string_view word = Trimmed(text);
    const auto* const row = std::find_if(kBoolTexts.begin(), kBoolTexts.end(),
                                         [&](const BoolRow& candidate) { return SameLanguage(candidate.mText, word); });
    if (row == kBoolTexts.end()) {
        ThrowBadValue("boolean", text);
    }
    return row->mValue;
}

UTF8String ConvertFromInt64(std::int64_t value) {
    return std::to_string(value);
}

UTF8String ConvertFromFloat(double value) {
    const double magnitude = std::fabs(value);
    const bool fixed = magnitude == 0 || (magnitude >= 1e-5 && magnitude < 1e15);
    std::array<char, 64> buffer{};  // at most 17 digits, a sign, a point, five zeros or an exponent
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                            fixed ? std::chars_format::fixed : std::chars_format::general);
    if (error != std::errc() || !std::isfinite(value)) {
        ThrowError(XMPErr_BadValue, "number that is not finite");
    }
    return {buffer.data(), end};
}

UTF8String ConvertFromBool(bool value) {
    return value ? "True" : "False";
}

}  // namespace zephmetadata::toolkit
