#include "edits/dates.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <regex>

namespace zephmeta {

namespace {

/// The parts of an XMP date as it is written.
struct DateText {
    std::array<std::string, 6> mParts;  ///< year to second; those behind the last written one are empty
    std::string mFraction;              ///< with its point
    std::string mZone;

    bool HasTime() const { return !mParts[3].empty(); }
};

constexpr std::size_t kLongestDate = 64;

std::optional<DateText> Read(const std::string& date) {
    static const std::regex form(
        R"((\d{4})(?:-(\d\d)(?:-(\d\d)(?:T(\d\d):(\d\d)(?::(\d\d)(\.\d+)?)?(Z|[+-]\d\d:\d\d)?)?)?)?)");
    std::smatch match;
    if (date.size() > kLongestDate || !std::regex_match(date, match, form)) {
        return std::nullopt;
    }
    DateText text;
    for (std::size_t i = 0; i < text.mParts.size(); ++i) {
        text.mParts[i] = match[i + 1];
    }
    text.mFraction = match[7];
    text.mZone = match[8];
    return text;
}

std::string Write(const DateText& text) {
    constexpr std::array kBefore = {"", "-", "-", "T", ":", ":"};
    std::string date;
    for (std::size_t i = 0; i < text.mParts.size() && !text.mParts[i].empty(); ++i) {
        date.append(kBefore[i]).append(text.mParts[i]);
    }
    return date + text.mFraction + text.mZone;
}

std::string Padded(long long number, std::size_t digits) {
    const std::string text = std::to_string(number);
    return std::string(text.size() < digits ? digits - text.size() : 0, '0') + text;
}

}  // namespace

std::optional<long long> ParseDuration(const std::string& text) {
    static const std::regex clock(R"(([+-]?)(\d{1,3}):(\d\d)(?::(\d\d))?)");
    static const std::regex units(R"(([+-]?)(?:(\d{1,5})d)?(?:(\d{1,6})h)?(?:(\d{1,7})m)?(?:(\d{1,9})s)?)");
    const auto number = [](const std::ssub_match& part) { return part.length() == 0 ? 0LL : std::stoll(part); };
    std::smatch match;
    long long seconds = 0;
    if (text.size() > kLongestDate) {
        return std::nullopt;
    }
    if (std::regex_match(text, match, clock)) {
        seconds = (number(match[2]) * 60 + number(match[3])) * 60 + number(match[4]);
    } else if (std::regex_match(text, match, units) && match[0].length() > match[1].length()) {
        seconds = ((number(match[2]) * 24 + number(match[3])) * 60 + number(match[4])) * 60 + number(match[5]);
    } else {
        return std::nullopt;
    }
    return match[1] == "-" ? -seconds : seconds;
}

std::optional<std::string> ShiftedDate(const std::string& date, long long seconds) {
    using namespace std::chrono;
    std::optional<DateText> text = Read(date);
    constexpr long long kDay = 24LL * 60 * 60;
    if (!text || text->mParts[2].empty() || (!text->HasTime() && seconds % kDay != 0)) {
        return std::nullopt;
    }
    const auto part = [&](std::size_t i) { return text->mParts[i].empty() ? 0 : std::stoi(text->mParts[i]); };
    const year_month_day day(year(part(0)), month(static_cast<unsigned>(part(1))),
                             std::chrono::day(static_cast<unsigned>(part(2))));
    if (!day.ok()) {
        return std::nullopt;
    }
    const sys_seconds moved =
        sys_days(day) + hours(part(3)) + minutes(part(4)) + std::chrono::seconds(part(5) + seconds);
    const sys_days movedDay = floor<days>(moved);
    const year_month_day to(movedDay);
    const hh_mm_ss time(moved - movedDay);
    if (int(to.year()) < 1 || int(to.year()) > 9999) {
        return std::nullopt;
    }
    const std::array<long long, 6> parts = {int(to.year()),       unsigned(to.month()),   unsigned(to.day()),
                                            time.hours().count(), time.minutes().count(), time.seconds().count()};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const bool isNeeded = !text->mParts[i].empty() || (i == 5 && text->HasTime() && parts[i] != 0);
        text->mParts[i] = isNeeded ? Padded(parts[i], i == 0 ? 4 : 2) : std::string();
    }
    return Write(*text);
}

std::optional<std::string> ZonedDate(const std::string& date, const std::string& zone) {
    static const std::regex form(R"(Z|[+-](0\d|1[0-4]):[0-5]\d)");
    std::optional<DateText> text = Read(date);
    if (!text || !text->HasTime() || !std::regex_match(zone, form)) {
        return std::nullopt;
    }
    text->mZone = zone;
    return Write(*text);
}

std::string AsXMPDate(const std::string& text) {
    static const std::regex form(
        R"((\d{4})[-:](\d\d)[-:](\d\d)(?:[ T](\d\d:\d\d(?::\d\d(?:\.\d+)?)?)? ?(Z|[+-]\d\d:\d\d)?)?)");
    std::smatch match;
    if (text.size() > kLongestDate || !std::regex_match(text, match, form)) {
        return text;
    }
    const std::string day = match[1].str() + "-" + match[2].str() + "-" + match[3].str();
    return match[4].length() == 0 ? day : day + "T" + match[4].str() + match[5].str();
}

std::string FormattedDate(const std::string& date, const std::string& pattern) {
    constexpr std::string_view kLetters = "YmdHMS";
    const std::optional<DateText> text = Read(date);
    std::string formatted;
    for (std::size_t i = 0; text && i < pattern.size(); ++i) {
        const std::size_t part =
            pattern[i] == '%' && i + 1 < pattern.size() ? kLetters.find(pattern[i + 1]) : std::string::npos;
        if (part == std::string::npos) {
            formatted += pattern[i];
        } else {
            formatted += text->mParts[part];
            ++i;
        }
    }
    return formatted;
}

}  // namespace zephmeta
