#include "media/native/iim/iim_dates.h"

#include <algorithm>

namespace zephmetadata::media {

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool AreDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), &IsDigit);
}

/// Two digits as a number.
int Pair(std::string_view digits, std::size_t at) {
    return (digits[at] - '0') * 10 + (digits[at + 1] - '0');
}

bool IsDate(std::string_view digits) {
    return digits.size() == 8 && AreDigits(digits) && digits.substr(0, 4) != "0000" && Pair(digits, 4) <= 12 &&
           Pair(digits, 6) <= 31;
}
bool IsTime(std::string_view digits) {
    return digits.size() == 6 && AreDigits(digits) && Pair(digits, 0) < 24 && Pair(digits, 2) < 60 &&
           Pair(digits, 4) <= 60;  // a leap second
}
bool IsZone(std::string_view zone) {
    return zone.size() == 5 && (zone[0] == '+' || zone[0] == '-') && AreDigits(zone.substr(1)) && Pair(zone, 1) < 24 &&
           Pair(zone, 3) < 60;
}

std::string Without(std::string_view text, std::string_view characters) {
    std::string rest(text);
    std::erase_if(rest, [&](char c) { return characters.find(c) != std::string_view::npos; });
    return rest;
}

/// The digits without a day of an unknown month, which says nothing.
std::string KnownPart(std::string digits) {
    if (IsDate(digits) && Pair(digits, 4) == 0) {
        digits.replace(6, 2, "00");
    }
    return digits;
}

/// Puts a time with or without a zone into the date; one that is none, or of an unknown day, is left out.
void SetTime(IIMDate& date, std::string_view digits) {
    const std::string_view time = digits.substr(0, 6);
    const std::string_view zone = digits.substr(time.size());
    if (IsTime(time) && date.mDate.substr(6) != "00") {
        date.mTime = time;
        date.mZone = IsZone(zone) ? zone : "";
    }
}

/// "T07:08:09.123+02:00" as IIM has it; empty when it is none.
std::string IIMTime(std::string_view text) {
    const std::size_t zoneAt = std::min(text.find_first_of("+-Z"), text.size());
    const std::string_view zone = text.substr(zoneAt);
    std::string time = Without(text.substr(0, std::min(zoneAt, text.find('.'))), "T:");
    time += time.size() == 4 ? "00" : "";  // XMP may leave out the seconds
    return time + (zone == "Z" ? "+0000" : Without(zone, ":"));
}

}  // namespace

std::optional<IIMDate> DateFromIIM(std::string_view date, std::string_view time) {
    IIMDate result{KnownPart(Without(date, ":-/. ")), {}, {}};
    if (!IsDate(result.mDate)) {
        return std::nullopt;
    }
    SetTime(result, Without(time, ": "));
    return result;
}

std::optional<IIMDate> DateFromXMP(std::string_view text) {
    const std::size_t timeAt = std::min(text.find('T'), text.size());
    IIMDate result{KnownPart(Without(text.substr(0, timeAt), "-")), {}, {}};
    if (result.mDate.size() == 4 || result.mDate.size() == 6) {
        result.mDate.resize(8, '0');
    }
    if (!IsDate(result.mDate)) {
        return std::nullopt;
    }
    if (timeAt < text.size()) {
        SetTime(result, IIMTime(text.substr(timeAt)));
    }
    return result;
}

std::string XMPDate(const IIMDate& date) {
    std::string text = date.mDate.substr(0, 4);
    for (std::size_t at = 4; at < 8 && date.mDate.substr(at, 2) != "00"; at += 2) {
        text.append("-").append(date.mDate, at, 2);
    }
    if (date.mTime.empty()) {
        return text;
    }
    text.append("T").append(date.mTime, 0, 2).append(":").append(date.mTime, 2, 2).append(":");
    text.append(date.mTime, 4, 2);
    if (date.mZone == "+0000") {
        return text.append("Z");
    }
    return date.mZone.empty() ? text : text.append(date.mZone, 0, 3).append(":").append(date.mZone, 3, 2);
}

bool AreSameDates(const IIMDate& left, const IIMDate& right) {
    return left.mDate == right.mDate && left.mTime == right.mTime &&
           (left.mZone == right.mZone || left.mZone.empty() || right.mZone.empty() ||
            (left.mZone.substr(1) == "0000" && right.mZone.substr(1) == "0000"));
}

}  // namespace zephmetadata::media
