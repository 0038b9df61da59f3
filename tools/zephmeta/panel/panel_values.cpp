#include "panel/panel_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

#include "edits/dates.h"
#include "panel/panel_model.h"
#include "zephcore/locale_dates.h"
#include "zephcore/text.h"

namespace zephmeta {

namespace {

/// Where cameras write 0 for what they do not know, and programs for what nobody has judged.
constexpr auto kUnknownWhenZero = std::to_array<std::string_view>({
    "MicrosoftPhoto:Rating",
    "corvid:ImageResolution",
    "corvid:ImageSize",
    "corvid:PhotographicSensitivity",
    "corvid:ShutterSpeed",
    "exif:DigitalZoomRatio",
    "exif:ExposureProgram",
    "exif:ExposureTime",
    "exif:FNumber",
    "exif:Flash/exif:Mode",
    "exif:Flash/exif:Return",
    "exif:FocalLength",
    "exif:FocalLengthIn35mmFilm",
    "exif:LightSource",
    "exif:MeteringMode",
    "exifEX:PhotographicSensitivity",
    "xmp:Rating",
    "xmpDM:videoFrameSize/stDim:h",
    "xmpDM:videoFrameSize/stDim:w",
});
static_assert(std::is_sorted(kUnknownWhenZero.begin(), kUnknownWhenZero.end()));

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsZero(const std::string& text) {
    const auto isOtherDigit = [](char c) { return IsDigit(c) && c != '0'; };
    return std::any_of(text.begin(), text.end(), IsDigit) && std::none_of(text.begin(), text.end(), isOtherDigit);
}

/// "72 x ", "0 x 480"
bool LacksHalf(const std::string& pair) {
    constexpr std::string_view kTimes = " x ";
    const std::size_t at = pair.find(kTimes);
    const auto isNothing = [](const std::string& half) { return half.empty() || IsZero(half); };
    return at != std::string::npos && (isNothing(pair.substr(0, at)) || isNothing(pair.substr(at + kTimes.size())));
}

/// The number that all of @p text is.
std::optional<double> Number(std::string_view text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
    return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<double> Quotient(const std::string& rational) {
    const std::size_t slash = rational.find('/');
    const auto numerator = Number(std::string_view(rational).substr(0, slash));
    const auto denominator =
        slash == std::string::npos ? std::optional(1.0) : Number(std::string_view(rational).substr(slash + 1));
    return numerator && denominator && *denominator != 0 ? std::optional(*numerator / *denominator) : std::nullopt;
}

/// Exif has n/0 for what is not known, and 0xFFFFFFFF for an infinite distance (CIPA DC-008).
bool IsNoRational(const std::string& raw) {
    const std::size_t slash = raw.find('/');
    return slash != std::string::npos && IsZero(raw.substr(slash + 1)) && !raw.starts_with("4294967295/");
}

int ToInt(const std::string& digits) {
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
}

/// Seconds east of Greenwich of "+02:00"; 0 for "Z".
long ZoneSeconds(const std::string& zone) {
    if (zone.size() != 6) {
        return 0;
    }
    const long minutes = ToInt(zone.substr(1, 2)) * 60L + ToInt(zone.substr(4, 2));
    return (zone.front() == '-' ? -60L : 60L) * minutes;
}

/// Whether clocks where the reader is show the same as those in @p zone at that time.
bool IsReadersZone(std::tm time, const std::string& zone) {
    const std::time_t moment = timegm(&time) - ZoneSeconds(zone);
    std::tm local{};
    return localtime_r(&moment, &local) != nullptr && local.tm_gmtoff == ZoneSeconds(zone);
}

/// Degrees of "58,58.19N" or "5,43,59W".
std::optional<double> Degrees(const std::string& coordinate, std::string_view positive, std::string_view negative) {
    if (coordinate.empty()) {
        return std::nullopt;
    }
    const char side = coordinate.back();
    if (positive.find(side) == std::string_view::npos && negative.find(side) == std::string_view::npos) {
        return std::nullopt;
    }
    double degrees = 0;
    double unit = 1;
    std::string_view rest(coordinate.data(), coordinate.size() - 1);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(','), rest.size());
        const auto part = Number(rest.substr(0, end));
        if (!part || *part < 0) {
            return std::nullopt;
        }
        degrees += *part / unit;
        unit *= 60;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return negative.find(side) == std::string_view::npos ? degrees : -degrees;
}

template <typename... Arguments>
std::string Printed(const char* form, Arguments... arguments) {
    std::array<char, 160> buffer{};
    std::snprintf(buffer.data(), buffer.size(), form, arguments...);
    return buffer.data();
}

/// With at most two decimals.
std::string Hundredths(double number) {
    std::string digits = Printed("%.2f", number);
    digits.erase(digits.find_last_not_of('0') + 1);
    return digits.ends_with('.') ? digits.substr(0, digits.size() - 1) : digits;
}

}  // namespace

bool SaysNothing(const std::string& expression, const zephmetadata::EntryDefinition& entry, const std::string& raw,
                 const std::string& shown) {
    if (entry.mType == "rational" && IsNoRational(raw)) {
        return true;
    }
    if (entry.mType == "date" && raw.starts_with("0000")) {
        return true;
    }
    return std::binary_search(kUnknownWhenZero.begin(), kUnknownWhenZero.end(), expression) &&
           (IsZero(shown) || IsZero(raw) || LacksHalf(shown));
}

std::string ShownDate(const std::string& raw) {
    constexpr std::size_t kDay = 10;  // "2008-05-30"
    const std::string parts = FormattedDate(raw, "%Y-%m-%d");
    if (parts.size() != kDay || raw.substr(0, kDay) != parts) {
        return raw;
    }
    std::tm time{};
    time.tm_year = ToInt(raw.substr(0, 4)) - 1900;
    time.tm_mon = ToInt(raw.substr(5, 2)) - 1;
    time.tm_mday = ToInt(raw.substr(8, 2));
    const auto day = zephcore::FormatNumericDate(time.tm_year + 1900, time.tm_mon + 1, time.tm_mday);
    if (!day) {
        return raw;
    }
    std::string shown = zephcore::UTF16to8(*day);
    if (raw.size() == kDay) {
        return shown;
    }
    time.tm_hour = ToInt(FormattedDate(raw, "%H"));
    time.tm_min = ToInt(FormattedDate(raw, "%M"));
    time.tm_sec = ToInt(FormattedDate(raw, "%S"));
    const auto clock = zephcore::FormatMediumTime(time.tm_hour, time.tm_min, time.tm_sec);
    if (!clock) {
        return raw;
    }
    shown += " " + zephcore::UTF16to8(*clock);
    const std::size_t zoneAt = raw.find_first_of("Z+-", kDay);
    const std::string zone = zoneAt == std::string::npos ? std::string() : raw.substr(zoneAt);
    return zone.empty() || IsReadersZone(time, zone) ? shown : shown + " " + (zone == "Z" ? "UTC" : "UTC" + zone);
}

std::string ShownMeasure(const zephmetadata::EntryDefinition& entry, const std::string& raw) {
    if (entry.mType == "rational") {
        const auto number = Quotient(raw);
        return number ? Hundredths(*number) : raw;
    }
    const auto degrees = entry.mType == "gpscoordinate" ? Degrees(raw, "NE", "SW") : std::nullopt;
    if (!degrees) {
        return raw;
    }
    const long hundredths = std::lround(std::abs(*degrees) * 360000);  // of a second
    return Printed("%ld\u00b0 %ld' %s\" %c", hundredths / 360000, hundredths / 6000 % 60,
                   Hundredths(static_cast<double>(hundredths % 6000) / 100).c_str(), raw.back());
}

std::string ShownDuration(const std::string& value, const std::string& scale) {
    constexpr double kLongest = 1e9;  // seconds, 30 years
    const auto units = Number(value);
    const auto unit = Quotient(scale);
    if (!units || !unit || *units * *unit <= 0 || *units * *unit > kLongest) {
        return {};
    }
    const double seconds = *units * *unit;
    if (seconds < 59.995) {
        return Localized("$$$/zephmetadata/format/unit/second=@0 sec", {Printed("%.2f", seconds)});
    }
    const long whole = std::lround(seconds);
    return Printed("%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
}

std::string MapAddress(const std::string& latitude, const std::string& longitude) {
    const auto north = Degrees(latitude, "N", "S");
    const auto east = Degrees(longitude, "E", "W");
    if (!north || !east || std::abs(*north) > 90 || std::abs(*east) > 180) {
        return {};
    }
    return Printed("https://www.openstreetmap.org/?mlat=%.6f&mlon=%.6f#map=15/%.6f/%.6f", *north, *east, *north, *east);
}

}  // namespace zephmeta
