#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include "zephcore/text.h"

namespace zephcore {

namespace {

/// Room for the longest shortest-form double without an exponent: "-0." with 323 zeros and 17 digits.
constexpr std::size_t kMaxDoubleText = 512;

/// The absolute value of a finite number as decimal digits before and after the point.
struct DecimalText {
    std::string mInteger;
    std::string mFraction;
};

DecimalText ShortestText(double magnitude) {
    std::array<char, kMaxDoubleText> buffer{};
    const auto [end, status] =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), magnitude, std::chars_format::fixed);
    assert(status == std::errc());
    static_cast<void>(status);
    const std::string text(buffer.data(), end);
    const std::size_t point = std::min(text.find('.'), text.size());
    return {text.substr(0, point), text.substr(std::min(point + 1, text.size()))};
}

/// Adds one to the last digit; false when all digits were nines and became zeros.
bool Increment(std::string& digits) {
    const std::size_t last = digits.find_last_not_of('9');
    const bool fits = last != std::string::npos;
    std::fill(digits.begin() + static_cast<std::ptrdiff_t>(fits ? last + 1 : 0), digits.end(), '0');
    if (fits) {
        ++digits[last];
    }
    return fits;
}

void RoundFraction(DecimalText& number, std::size_t digits) {
    if (number.mFraction.size() <= digits) {
        return;
    }
    const bool up = number.mFraction[digits] >= '5';
    number.mFraction.resize(digits);
    if (up && !Increment(number.mFraction) && !Increment(number.mInteger)) {
        number.mInteger.insert(0, 1, '1');
    }
}

void StripTrailingZeros(std::string& fraction) {
    fraction.erase(fraction.find_last_not_of('0') + 1);
}

bool IsDecimalCharacter(char16_t c) {
    return (c >= u'0' && c <= u'9') || c == u'+' || c == u'-' || c == u'.' || c == u'e' || c == u'E';
}

/// What a decimal beyond the range of double reads as: infinity when it is too large, zero when it is too small.
double OutOfRange(std::string_view text) {
    const bool negative = text.starts_with('-');
    const std::string_view mantissa = text.substr(0, text.find_first_of("eE"));
    const auto point = static_cast<std::ptrdiff_t>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<std::ptrdiff_t>(mantissa.find_first_of("123456789"));
    std::ptrdiff_t exponent = 0;
    if (mantissa.size() < text.size()) {
        std::string_view digits = text.substr(mantissa.size() + 1);
        digits.remove_prefix(digits.starts_with('+') ? 1 : 0);
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
        if (read.ec == std::errc::result_out_of_range) {
            // Half the range, so that the sum below cannot overflow.
            constexpr std::ptrdiff_t kHuge = std::numeric_limits<std::ptrdiff_t>::max() / 2;
            exponent = digits.starts_with('-') ? -kHuge : kHuge;
        }
    }
    const double magnitude = point - first + exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -magnitude : magnitude;
}

}  // namespace

UTF16String NumberToString(double value, int integerDigits, int fractionDigits, [[maybe_unused]] unsigned flags,
                           int width) {
    assert(flags == 0);
    if (std::isnan(value)) {
        return u"nan";
    }
    if (std::isinf(value)) {
        return value < 0 ? u"-inf" : u"inf";
    }
    DecimalText number = ShortestText(std::abs(value));
    RoundFraction(number, static_cast<std::size_t>(std::max(fractionDigits, 0)));
    const auto leastDigits = static_cast<std::size_t>(std::max(integerDigits, 0));
    if (number.mInteger.size() < leastDigits) {
        number.mInteger.insert(0, leastDigits - number.mInteger.size(), '0');
    }
    const auto room = static_cast<std::size_t>(std::max(width, 0));
    const std::size_t taken = number.mInteger.size() + (value < 0 ? 2U : 1U);
    number.mFraction.resize(std::min(number.mFraction.size(), room > taken ? room - taken : 0));
    StripTrailingZeros(number.mFraction);

    const bool isZero = number.mFraction.empty() && number.mInteger.find_first_not_of('0') == std::string::npos;
    std::string text = value < 0 && !isZero ? "-" + number.mInteger : number.mInteger;
    if (!number.mFraction.empty()) {
        text += '.' + number.mFraction;
    }
    return AsciiToUTF16(text);
}

double StringToNumber(std::u16string_view text) {
    const std::size_t start = std::min(text.find_first_not_of(u" \t\r\n\f\v"), text.size());
    std::string ascii;
    for (const char16_t c : text.substr(start)) {
        if (!IsDecimalCharacter(c)) {
            break;
        }
        ascii += static_cast<char>(c);
    }
    if (ascii.starts_with('+')) {
        ascii.erase(0, 1);
        if (ascii.starts_with('-')) {
            return 0;
        }
    }
    double value = 0;
    const auto [end, status] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), value);
    if (status == std::errc::result_out_of_range) {
        return OutOfRange({ascii.data(), end});
    }
    return status == std::errc() ? value : 0;
}

}  // namespace zephcore
