#include <optional>

#include "xmp/dates/xmp_dates.h"
#include "zephcore/locale_dates.h"
#include "zephcore/text.h"
#include "zephmetadata/formatting.h"

namespace zephmetadata {

namespace {

using toolkit::DateTime;

std::optional<DateTime> LocalDate(const UTF8String& value) {
    try {
        return toolkit::ConvertToLocalTime(toolkit::ConvertToDate(value));
    } catch (const XMPError&) {
        return std::nullopt;
    }
}

/// Whether the locale's forms can show it: they have no place for a year or month alone, and calendars before the
/// Gregorian one are no matter of formatting.
bool CanBeShown(const DateTime& date) {
    constexpr int kFirstYear = 1601;
    return (date.mHasDate || date.mHasTime) && (!date.mHasDate || (date.mHasDay && date.mYear >= kFirstYear));
}

}  // namespace

UTF8String FormatDate(const UTF8String& value) {
    const std::optional<DateTime> date = LocalDate(value);
    if (!date || !CanBeShown(*date)) {
        return value;
    }
    UTF16String text;
    if (date->mHasDate) {
        const auto day = zephcore::FormatShortDate(date->mYear, date->mMonth, date->mDay);
        if (!day) {
            return value;
        }
        text = *day;
    }
    if (date->mHasTime) {
        const auto time = zephcore::FormatMediumTime(date->mHour, date->mMinute, date->mSecond);
        if (!time) {
            return value;
        }
        text += (text.empty() ? u"" : u" ") + *time;
    }
    return zephcore::UTF16to8(text);
}

}  // namespace zephmetadata
