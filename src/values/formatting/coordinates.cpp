#include <cmath>
#include <locale>
#include <sstream>
#include <string_view>
#include <vector>

#include "values/formatting/rationals.h"
#include "zephmetadata/formatting.h"

namespace zephmetadata {

namespace {

constexpr std::string_view kDegreeSign = "\u00B0";
constexpr std::string_view kMinuteMark = "' ";
constexpr std::string_view kSecondMark = "\" ";

struct Angle {
    unsigned mDegrees = 0;
    double mMinutes = 0;
    double mSeconds = 0;
    std::uint64_t mSecondDigits = 0;

    bool IsZero() const { return mDegrees == 0 && mMinutes == 0 && mSeconds == 0; }
};

/// A whole number of at most a byte, as degrees, minutes and seconds are.
unsigned WholeNumber(std::string_view text) {
    constexpr unsigned kRange = 256;
    std::istringstream in{std::string(text)};
    in.imbue(std::locale::classic());
    unsigned value = 0;
    return in >> value ? value % kRange : 0;
}

std::vector<std::string_view> Pieces(std::string_view text) {
    std::vector<std::string_view> pieces;
    std::size_t comma = text.find(',');
    while (comma != std::string_view::npos) {
        pieces.push_back(text.substr(0, comma));
        text.remove_prefix(comma + 1);
        comma = text.find(',');
    }
    pieces.push_back(text);
    return pieces;
}

/// "DDD", "DDD,MM.mm" or "DDD,MM,SS"; anything else reads as 0.
Angle ParseAngle(std::string_view text) {
    const std::vector<std::string_view> pieces = Pieces(text);
    Angle angle;
    if (pieces.size() <= 3) {
        angle.mDegrees = WholeNumber(pieces[0]);
    }
    if (pieces.size() == 2) {
        constexpr double kSecondsPerMinute = 60;
        double whole = 0;
        angle.mSeconds = std::modf(LeadingNumber(pieces[1]), &whole) * kSecondsPerMinute;
        angle.mMinutes = whole;
        angle.mSecondDigits = 2;
    } else if (pieces.size() == 3) {
        angle.mMinutes = WholeNumber(pieces[1]);
        angle.mSeconds = WholeNumber(pieces[2]);
    }
    return angle;
}

}  // namespace

UTF8String FormatGPSCoordinate(const UTF8String& value) {
    // The last byte is the direction; half a character is none, and would make the result ill-formed.
    if (value.empty() || static_cast<unsigned char>(value.back()) >= 0x80) {
        return {};
    }
    const Angle angle = ParseAngle(std::string_view(value).substr(0, value.size() - 1));
    if (angle.IsZero()) {
        return UTF8String("0").append(kDegreeSign);
    }
    UTF8String text = NumberText(angle.mDegrees, 0).append(kDegreeSign).append(" ");
    if (angle.mMinutes != 0 || angle.mSeconds != 0) {
        text.append(NumberText(angle.mMinutes, 0)).append(kMinuteMark);
    }
    if (angle.mSeconds != 0) {
        text.append(NumberText(angle.mSeconds, angle.mSecondDigits)).append(kSecondMark);
    }
    text.push_back(value.back());
    return text;
}

}  // namespace zephmetadata
