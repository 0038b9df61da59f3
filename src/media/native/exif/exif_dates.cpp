#include "media/native/exif/exif_dates.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>

#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

namespace {

constexpr std::size_t kMostFractionDigits = 12;
constexpr int kMinutesADay = 24 * 60;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// As many digits as there are at the front, at most @p most.
std::optional<int> TakeNumber(std::string_view& text, std::size_t most) {
    std::size_t size = 0;
    int value = 0;
    for (; size < text.size() && size < most && IsDigit(text[size]); ++size) {
        value = value * 10 + (text[size] - '0');
    }
    text.remove_prefix(size);
    return size == 0 ? std::nullopt : std::optional(value);
}

bool TakeSeparator(std::string_view& text, std::string_view separators) {
    if (text.empty() || separators.find(text[0]) == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

bool IsDay(int year, int month, int day) {
    using namespace std::chrono;
    return (std::chrono::year(year) / month / day).ok();
}

/// Hours and minutes, seconds, fraction and zone; what cannot be a time leaves the date without one.
void ParseTime(std::string_view text, DateParts& date) {
    const auto hour = TakeNumber(text, 2);
    if (!hour || *hour > 23 || !TakeSeparator(text, ":.-")) {
        return;
    }
    const auto minute = TakeNumber(text, 2);
    if (!minute || *minute > 59) {
        return;
    }
    std::optional<int> second;
    std::string fraction;
    if (!text.empty() && (text[0] == ':' || (text[0] == '.' && text.size() > 2))) {
        text.remove_prefix(1);
        second = TakeNumber(text, 2);
        if (second && *second > 59) {
            return;
        }
        if (second && TakeSeparator(text, ".,")) {
            const std::size_t size = std::min(text.find_first_not_of("0123456789"), text.size());
            fraction = text.substr(0, std::min(size, kMostFractionDigits));
            text.remove_prefix(size);
        }
    }
    date.mHour = hour;
    date.mMinute = minute;
    date.mSecond = second;
    date.mFraction = std::move(fraction);
    date.mZone = ParseZone(Stripped(text));
}

std::string Formatted(const char* format, int value) {
    std::array<char, 16> text{};
    const int size = std::snprintf(text.data(), text.size(), format, value);
    return {text.data(), static_cast<std::size_t>(std::clamp(size, 0, 15))};
}

std::string_view WithoutTrailingZeros(std::string_view digits) {
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

}  // namespace

std::optional<int> ParseZone(std::string_view text) {
    if (text == "Z" || text == "z") {
        return 0;
    }
    if (text.empty() || (text[0] != '+' && text[0] != '-')) {
        return std::nullopt;
    }
    const int sign = text[0] == '-' ? -1 : 1;
    text.remove_prefix(1);
    const auto hours = TakeNumber(text, 2);
    TakeSeparator(text, ":");
    const auto minutes = text.empty() ? std::optional(0) : TakeNumber(text, 2);
    if (!hours || !minutes || *hours > 23 || *minutes > 59 || !Stripped(text).empty()) {
        return std::nullopt;
    }
    return sign * (*hours * 60 + *minutes);
}

std::optional<DateParts> ParseDate(std::string_view text) {
    constexpr std::string_view kSeparators = ":-/. ";
    text = Stripped(text);
    std::string_view rest = text;
    DateParts date;
    date.mYear = TakeNumber(rest, 4).value_or(0);
    if (date.mYear == 0 || text.size() - rest.size() != 4) {
        return std::nullopt;
    }
    if (!TakeSeparator(rest, kSeparators)) {
        return rest.empty() ? std::optional(date) : std::nullopt;
    }
    const int month = TakeNumber(rest, 2).value_or(0);
    if (month > 12) {
        return std::nullopt;
    }
    if (month == 0) {
        return date;
    }
    date.mMonth = month;
    const int day = TakeSeparator(rest, kSeparators) ? TakeNumber(rest, 2).value_or(0) : 0;
    if (day == 0) {
        return date;
    }
    if (!IsDay(date.mYear, month, day)) {
        return std::nullopt;
    }
    date.mDay = day;
    if (TakeSeparator(rest, ": T")) {
        ParseTime(rest, date);
    }
    return date;
}

std::string XMPDate(const DateParts& date) {
    std::string text = Formatted("%04d", date.mYear);
    text += date.mMonth ? Formatted("-%02d", *date.mMonth) : "";
    text += date.mDay ? Formatted("-%02d", *date.mDay) : "";
    if (!date.mHour) {
        return text;
    }
    text += Formatted("T%02d", *date.mHour) + Formatted(":%02d", date.mMinute.value_or(0)) +
            Formatted(":%02d", date.mSecond.value_or(0));
    text += date.mFraction.empty() ? "" : "." + date.mFraction;
    if (date.mZone) {
        text += *date.mZone == 0 ? "Z" : ExifZone(*date.mZone);
    }
    return text;
}

std::string ExifDate(const DateParts& date) {
    const auto part = [](const std::optional<int>& value) { return value ? Formatted("%02d", *value) : "  "; };
    const std::optional<int> second = date.mHour ? std::optional(date.mSecond.value_or(0)) : std::nullopt;
    return Formatted("%04d", date.mYear) + ":" + part(date.mMonth) + ":" + part(date.mDay) + " " + part(date.mHour) +
           ":" + part(date.mMinute) + ":" + part(second);
}

std::string ExifZone(int minutes) {
    const int size = minutes < 0 ? -minutes : minutes;
    return (minutes < 0 ? "-" : "+") + Formatted("%02d", size / 60) + Formatted(":%02d", size % 60);
}

bool SaysDate(const DateParts& packet, const DateParts& native) {
    constexpr int kUnknown = -1;
    constexpr int kNoZone = 100 * kMinutesADay;
    const auto says = [](const std::optional<int>& said, const std::optional<int>& wanted, int none) {
        return !wanted || said.value_or(none) == *wanted;
    };
    const int second = packet.mSecond.value_or(packet.mHour ? 0 : kUnknown);
    return packet.mYear == native.mYear && says(packet.mMonth, native.mMonth, kUnknown) &&
           says(packet.mDay, native.mDay, kUnknown) && says(packet.mHour, native.mHour, kUnknown) &&
           says(packet.mMinute, native.mMinute, kUnknown) && says(second, native.mSecond, kUnknown) &&
           says(packet.mZone, native.mZone, kNoZone) &&
           std::string_view(packet.mFraction).starts_with(WithoutTrailingZeros(native.mFraction));
}

DateParts InUTC(DateParts date) {
    using namespace std::chrono;
    const auto day = sys_days(year(date.mYear) / date.mMonth.value_or(1) / date.mDay.value_or(1));
    const int minute = date.mHour.value_or(0) * 60 + date.mMinute.value_or(0) - date.mZone.value_or(0);
    const int shift = minute < 0 ? -1 : minute >= kMinutesADay ? 1 : 0;
    const year_month_day shifted(day + days(shift));
    const int ofDay = minute - shift * kMinutesADay;
    date.mYear = int(shifted.year());
    date.mMonth = static_cast<int>(unsigned(shifted.month()));
    date.mDay = static_cast<int>(unsigned(shifted.day()));
    date.mHour = ofDay / 60;
    date.mMinute = ofDay % 60;
    date.mZone = 0;
    return date;
}

}  // namespace zephmetadata::media
