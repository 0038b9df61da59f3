#include "values/formatting/rationals.h"

#include <algorithm>

#include "zephcore/text.h"
#include "zephmetadata/formatting.h"

namespace zephmetadata {

std::optional<Rational> ParseRational(std::string_view text) {
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view numerator = text.substr(0, slash);
    const std::string_view rest = text.substr(slash + 1);
    const std::string_view denominator = rest.substr(0, rest.find('/'));
    if (numerator.empty() || denominator.empty()) {
        return std::nullopt;
    }
    return Rational{LeadingNumber(numerator), LeadingNumber(denominator)};
}

double LeadingNumber(std::string_view text) {
    return zephcore::StringToNumber(zephcore::UTF8to16(text));
}

UTF8String NumberText(double value, std::uint64_t digits) {
    constexpr std::uint64_t kMostDigits = 30;  // what fits the width of NumberToString
    const auto fraction = static_cast<int>(std::min(digits, kMostDigits));
    return zephcore::UTF16to8(zephcore::NumberToString(value, 1, fraction));
}

UTF8String FormatRational(const UTF8String& value, std::uint64_t digits) {
    const std::optional<Rational> rational = ParseRational(value);
    return rational && rational->mDenominator != 0 ? NumberText(rational->Quotient(), digits) : UTF8String();
}

}  // namespace zephmetadata
