#include "values/formatting/camera_values.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "values/formatting/rationals.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kSecondsForm = u"$$$/zephmetadata/format/unit/second=@0 sec";
constexpr std::u16string_view kInfinity = u"$$$/zephmetadata/format/value/infinity=#{U+221E}";
constexpr std::u16string_view kUnknown = u"$$$/zephmetadata/format/value/unknown=Unknown";

/// The exposure times that cameras are marked with, in seconds, longest first.
constexpr auto kNominalTimes = std::to_array<double>(
    {30,         25,         20,         15,          13,          10,          8,          6,          5,
     4,          3.2,        3,          2.5,         2,           1.6,         1.5,        1.3,        1,
     0.8,        0.7,        0.6,        0.5,         0.4,         0.3,         1.0 / 4,    1.0 / 5,    1.0 / 6,
     1.0 / 8,    1.0 / 10,   1.0 / 13,   1.0 / 15,    1.0 / 20,    1.0 / 25,    1.0 / 30,   1.0 / 40,   1.0 / 45,
     1.0 / 50,   1.0 / 60,   1.0 / 80,   1.0 / 90,    1.0 / 100,   1.0 / 125,   1.0 / 160,  1.0 / 180,  1.0 / 200,
     1.0 / 250,  1.0 / 320,  1.0 / 350,  1.0 / 400,   1.0 / 500,   1.0 / 640,   1.0 / 750,  1.0 / 800,  1.0 / 1000,
     1.0 / 1250, 1.0 / 1500, 1.0 / 1600, 1.0 / 2000,  1.0 / 2500,  1.0 / 3000,  1.0 / 3200, 1.0 / 4000, 1.0 / 5000,
     1.0 / 6000, 1.0 / 6400, 1.0 / 8000, 1.0 / 10000, 1.0 / 12000, 1.0 / 12800, 1.0 / 16000});
static_assert(kNominalTimes.size() == 70);

/// Times that are near no nominal one are rounded to a reciprocal in steps that grow with the speed.
struct ReciprocalRow {
    double mAtLeast;  ///< seconds
    double mStep;     ///< the time becomes the step divided by a whole number
};
constexpr auto kReciprocals = std::to_array<ReciprocalRow>(
    {{0.05, 1}, {1.0 / 130, 0.2}, {1.0 / 750, 0.1}, {1.0 / 1300, 0.02}, {1.0 / 15000, 0.01}, {0, 0.001}});

double RoundHalfUp(double value) {
    return std::floor(value + 0.5);
}

/// The first nominal time within two hundredths of @p seconds, 0 when there is none.
double NominalTime(double seconds) {
    constexpr double kTolerance = 0.02;
    for (const double nominal : kNominalTimes) {
        if (nominal * (1 - kTolerance) <= seconds && seconds <= nominal * (1 + kTolerance)) {
            return nominal;
        }
    }
    return 0;
}

/// Cameras that count in powers of two mean 1/250 when they say 1/256, and 1/1000 when they say 1/1024.
double FromPowerOfTwo(double seconds) {
    return seconds * (seconds >= 0.01 ? 16.0 / 15 : 1.024);
}

double RoundedTime(double seconds) {
    if (seconds >= 10) {
        return RoundHalfUp(seconds);
    }
    if (seconds >= 0.5) {
        return RoundHalfUp(seconds * 10) / 10;
    }
    const auto* row = kReciprocals.begin();
    while (seconds < row->mAtLeast) {
        ++row;
    }
    return row->mStep / RoundHalfUp(row->mStep / seconds);
}

/// The time in seconds that a photographer would name; 0 for what is no time.
double SnappedTime(double seconds) {
    if (seconds <= 0) {
        return 0;
    }
    double nominal = NominalTime(seconds);
    if (nominal == 0 && seconds < 0.1) {
        nominal = NominalTime(FromPowerOfTwo(seconds));
    }
    return nominal != 0 ? nominal : RoundedTime(seconds);
}

UTF8String TimeNumber(double seconds) {
    constexpr double kLongest = 1024;
    constexpr double kLongestFraction = 0.25;
    if (seconds > kLongest) {
        return ">1024";
    }
    const double snapped = SnappedTime(seconds);
    if (snapped == 0) {
        return "0";
    }
    return snapped > kLongestFraction ? NumberText(snapped, 1) : "1/" + NumberText(1 / snapped, 0);
}

UTF8String Message(std::u16string_view key, const UTF8String& argument = {}) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(zephcore::ZString(key, {zephcore::UTF8to16(argument)})));
}

UTF8String TimeText(double seconds) {
    if (std::isnan(seconds)) {
        return {};
    }
    return Message(kSecondsForm, TimeNumber(seconds));
}

UTF8String FNumberText(double fNumber) {
    if (!std::isfinite(fNumber)) {
        return {};
    }
    if (fNumber < 1) {
        return NumberText(fNumber, 2);
    }
    constexpr double kFirstWhole = 8;
    return NumberText(fNumber, fNumber < kFirstWhole ? 1 : 0);
}

/// The quotient of a rational; 0 when the text is none.
double QuotientOr0(const UTF8String& text) {
    const std::optional<Rational> rational = ParseRational(text);
    return rational ? rational->Quotient() : 0;
}

/// The lower half of a numerator as an integer, which is where Exif puts its special values.
std::uint32_t LowWord(double numerator) {
    constexpr double kInt64Range = 9223372036854775808.0;
    const bool fits = std::abs(numerator) < kInt64Range;
    return fits ? static_cast<std::uint32_t>(static_cast<std::int64_t>(numerator)) : 1;
}

}  // namespace

UTF8String FormatExposureTime(const UTF8String& seconds) {
    return TimeText(QuotientOr0(seconds));
}

UTF8String FormatShutterSpeed(const UTF8String& apex) {
    return TimeText(std::exp2(-QuotientOr0(apex)));
}

UTF8String FormatFNumber(const UTF8String& fNumber) {
    return FNumberText(QuotientOr0(fNumber));
}

UTF8String FormatAperture(const UTF8String& apex) {
    return FNumberText(std::exp2(QuotientOr0(apex) / 2));
}

UTF8String FormatDistance(const UTF8String& metres) {
    constexpr std::uint32_t kInfinite = 0xFFFFFFFF;
    const std::optional<Rational> distance = ParseRational(metres);
    if (!distance) {
        return {};
    }
    const std::uint32_t special = LowWord(distance->mNumerator);
    if (special == kInfinite) {
        return Message(kInfinity);
    }
    if (special == 0) {
        return Message(kUnknown);
    }
    return distance->mDenominator == 0 ? UTF8String() : NumberText(distance->Quotient(), 2);
}

}  // namespace zephmetadata
