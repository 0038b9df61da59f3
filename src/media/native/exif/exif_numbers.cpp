#include "media/native/exif/exif_numbers.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>

namespace zephmetadata::media {

namespace {

constexpr std::int64_t kMostDecimalScale = 1'000'000'000'000'000'000;  // the greatest power of ten in 64 bits

std::optional<NumberText> ParseDecimal(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative || text.starts_with('+') ? 1 : 0);
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos || text.size() == 1) {
        return std::nullopt;
    }
    NumberText number{{0, 1}, true};
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == point) {
            continue;
        }
        if (text[i] < '0' || text[i] > '9') {
            return std::nullopt;
        }
        const bool isFull = number.mRatio.mNumerator >= kMostDecimalScale / 10;
        if (isFull && i < point) {
            return std::nullopt;
        }
        if (isFull || number.mRatio.mDenominator == kMostDecimalScale) {
            continue;
        }
        number.mRatio.mNumerator = number.mRatio.mNumerator * 10 + (text[i] - '0');
        number.mRatio.mDenominator *= i > point ? 10 : 1;
    }
    number.mRatio.mNumerator *= isNegative ? -1 : 1;
    return number;
}

bool Fits(const TiffRational& value, bool isSigned) {
    const auto fits = [&](std::int64_t side) {
        return isSigned ? side >= std::numeric_limits<std::int32_t>::min() &&
                              side <= std::numeric_limits<std::int32_t>::max()
                        : side >= 0 && side <= std::numeric_limits<std::uint32_t>::max();
    };
    return fits(value.mNumerator) && fits(value.mDenominator);
}

TiffRational Reduced(const TiffRational& value) {
    constexpr std::int64_t kLeast = std::numeric_limits<std::int64_t>::min();
    if (value.mNumerator == kLeast || value.mDenominator == kLeast) {
        return value;  // has no positive counterpart, and fits nowhere
    }
    const std::int64_t divisor = std::gcd(value.mNumerator, value.mDenominator);
    return divisor == 0 ? value : TiffRational{value.mNumerator / divisor, value.mDenominator / divisor};
}

double HalfLastDigit(const NumberText& number) {
    return number.mIsDecimal ? 0.5 / static_cast<double>(number.mRatio.mDenominator) : 0.0;
}

}  // namespace

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<NumberText> ParseNumber(std::string_view text) {
    if (const auto whole = ParseInteger(text)) {
        return NumberText{{*whole, 1}, false};
    }
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) {
        return ParseDecimal(text);
    }
    const auto numerator = ParseInteger(text.substr(0, slash));
    const auto denominator = ParseInteger(text.substr(slash + 1));
    if (!numerator || !denominator) {
        return std::nullopt;
    }
    return NumberText{{*numerator, *denominator}, false};
}

bool IsSameNumber(const NumberText& left, const NumberText& right) {
    const TiffRational& a = left.mRatio;
    const TiffRational& b = right.mRatio;
    if (a.mDenominator == 0 || b.mDenominator == 0) {
        return a.mDenominator == b.mDenominator && a.mNumerator == b.mNumerator;
    }
    if (static_cast<WideInteger>(a.mNumerator) * b.mDenominator ==
        static_cast<WideInteger>(b.mNumerator) * a.mDenominator) {
        return true;
    }
    if (!left.mIsDecimal && !right.mIsDecimal) {
        return false;
    }
    // Rounding to a power of ten in 31 bits moves a number by at most half of one part in 2^31 / 10.
    constexpr double kRelative = 2.5e-9;
    constexpr double kAbsolute = 5.1e-10;
    const double tolerance = std::max({HalfLastDigit(left) * 1.000001, HalfLastDigit(right) * 1.000001,
                                       std::abs(left.Value()) * kRelative, kAbsolute});
    return std::abs(left.Value() - right.Value()) <= tolerance;
}

std::optional<TiffRational> FittingRational(const NumberText& number, bool isSigned) {
    if (!number.mIsDecimal && Fits(number.mRatio, isSigned)) {
        return number.mRatio;
    }
    TiffRational value = number.mRatio;
    if (Fits(Reduced(value), isSigned)) {
        return Reduced(value);
    }
    while (number.mIsDecimal && value.mDenominator >= 10) {
        value.mNumerator = (value.mNumerator + (value.mNumerator < 0 ? -5 : 5)) / 10;
        value.mDenominator /= 10;
        if (Fits(value, isSigned)) {
            return value;
        }
    }
    return std::nullopt;
}

std::string RationalBytes(const TiffRational& value) {
    return NumberBytes(static_cast<std::uint64_t>(value.mNumerator), 4) +
           NumberBytes(static_cast<std::uint64_t>(value.mDenominator), 4);
}

std::optional<TiffRational> RationalOfReal(double value) {
    std::array<char, 64> text{};
    if (!std::isfinite(value) || std::abs(value) > std::numeric_limits<std::int32_t>::max()) {
        return std::nullopt;
    }
    constexpr int kDecimals = 9;
    const auto [end, error] =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, kDecimals);
    if (error != std::errc{}) {
        return std::nullopt;
    }
    const auto number = ParseNumber({text.data(), static_cast<std::size_t>(end - text.data())});
    return number ? FittingRational(*number, true) : std::nullopt;
}

}  // namespace zephmetadata::media
