#include "edits/typed_values.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <numeric>
#include <regex>

#include "console.h"
#include "edits/dates.h"

namespace zephmeta {

namespace {

using zephmetadata::EntryDefinition;
using zephmetadata::Path;

/// The value whose label the text is, or the text.
std::string AsChoice(const EntryDefinition& entry, const std::string& text) {
    const auto& choices = entry.mChoices;
    const auto isValue = [&](const auto& choice) { return choice->mRawValue == text; };
    if (std::any_of(choices.begin(), choices.end(), isValue)) {
        return text;
    }
    const std::string wanted = Lower(text);
    const auto named = std::find_if(choices.begin(), choices.end(),
                                    [&](const auto& choice) { return Lower(Shown(choice->mLabel)) == wanted; });
    return named == choices.end() ? text : (*named)->mRawValue;
}

/// "f/8", "12m", "0.5" and "8" as rationals.
std::string AsRational(const Path& /*path*/, const std::string& text) {
    static const std::regex typed(R"((?:[fF]/)?(-?\d{1,9}(?:\.\d{1,9})?) ?(?:mm|m|s)?)");
    std::smatch match;
    const bool isTyped = text.size() < 32 && std::regex_match(text, match, typed);
    return isTyped ? Rational(match[1]).value_or(text) : text;
}

std::string AsCoordinate(const Path& path, const std::string& text) {
    static const std::regex decimal(R"((-?\d{1,3}(?:\.\d{1,12})?)°?)");
    std::smatch match;
    const bool isLatitude = path.mPathDescription.find("Latitude") != std::string::npos;
    if (text.size() > 32 || !std::regex_match(text, match, decimal)) {
        return text;
    }
    return Coordinate(std::stod(match[1]), isLatitude).value_or(text);
}

std::string AsDate(const Path& /*path*/, const std::string& text) {
    return AsXMPDate(text);
}

}  // namespace

std::optional<std::string> Coordinate(double degrees, bool isLatitude) {
    if (!(std::fabs(degrees) <= (isLatitude ? 90.0 : 180.0))) {
        return std::nullopt;
    }
    constexpr double kUnits = 60.0 * 1000000;  // millionths of a minute: a tenth of a millimetre
    const long long all = std::llround(std::fabs(degrees) * kUnits);
    const long long whole = all / static_cast<long long>(kUnits);
    const double minutes = static_cast<double>(all % static_cast<long long>(kUnits)) / 1000000;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%lld,%.6f", whole, minutes);
    std::string coordinate(text.data());
    coordinate.erase(coordinate.find_last_not_of('0') + 1);
    coordinate += coordinate.ends_with('.') ? "0" : "";
    const char* const reference = isLatitude ? (degrees < 0 ? "S" : "N") : (degrees < 0 ? "W" : "E");
    return coordinate + reference;
}

std::optional<std::string> Rational(const std::string& decimal) {
    const bool isNegative = decimal.starts_with('-');
    const std::size_t point = decimal.find('.');
    std::string digits = decimal.substr(isNegative ? 1 : 0);
    std::erase(digits, '.');
    long long numerator = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), numerator);
    constexpr std::size_t kMostDecimals = 9;
    const std::size_t decimals = point == std::string::npos ? 0 : decimal.size() - point - 1;
    if (error != std::errc() || end != digits.data() + digits.size() || decimals > kMostDecimals) {
        return std::nullopt;
    }
    long long denominator = 1;
    for (std::size_t i = 0; i < decimals; ++i) {
        denominator *= 10;
    }
    const long long common = std::gcd(numerator, denominator);
    return (isNegative ? "-" : "") + std::to_string(numerator / common) + "/" + std::to_string(denominator / common);
}

std::string AsStored(const Path& path, const std::string& text) {
    static const std::map<std::string, std::string (*)(const Path&, const std::string&)> readers = {
        {"rational", AsRational}, {"gpscoordinate", AsCoordinate}, {"date", AsDate}};
    const auto entry = zephmetadata::PathEntryDefinition(path);
    if (!entry) {
        return text;
    }
    const auto type = zephmetadata::PropertyTypeOf(*entry);
    const auto reader = type ? readers.find(type->mName) : readers.end();
    return reader == readers.end() ? AsChoice(*entry, text) : reader->second(path, text);
}

}  // namespace zephmeta
