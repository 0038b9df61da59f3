#pragma once

#include <optional>

#include "zephcore/base.h"

namespace zephcore {

// Dates and times in the forms of the user's locale, which is that of LC_ALL, LC_TIME or LANG, the first that is set;
// en_US when none is. Absent where the locale's calendar cannot show them. Threads may call these at the same time.

/// The short form of a day of the Gregorian calendar; months and days count from 1.
std::optional<UTF16String> FormatShortDate(int year, int month, int day);
/// Its form in numbers with all digits of the year.
ZEPHCORE_EXPORT std::optional<UTF16String> FormatNumericDate(int year, int month, int day);
/// The medium form of a time of day, with seconds.
ZEPHCORE_EXPORT std::optional<UTF16String> FormatMediumTime(int hour, int minute, int second);

}  // namespace zephcore
