#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Dates of Exif ("2020:01:02 03:04:05") and of XMP ("2020-01-02T03:04:05.5+02:00").
namespace zephmetadata::media {

/// A date as far as it is known: what comes after an unknown part is unknown too.
struct DateParts {
    int mYear = 0;  ///< of four digits, and not 0
    std::optional<int> mMonth, mDay;
    std::optional<int> mHour, mMinute, mSecond;  ///< none without a day; no hour without a minute
    std::string mFraction;                       ///< digits of the second
    std::optional<int> mZone;                    ///< minutes east of UTC; none without a time
};

/// Either form, with any of the separators that are found in files; parts that are blank or 0 are unknown. Absent when
/// the year is, or when what is there cannot be a date. A time that cannot be is left out.
std::optional<DateParts> ParseDate(std::string_view text);
/// "+03:00", "-0430", "Z".
std::optional<int> ParseZone(std::string_view text);

/// The form of XMP; whole minutes have seconds.
std::string XMPDate(const DateParts& date);
/// The form of Exif, with blanks for what is unknown.
std::string ExifDate(const DateParts& date);
std::string ExifZone(int minutes);

/// Whether @p packet says all that @p native does; it may say more.
bool SaysDate(const DateParts& packet, const DateParts& native);
/// The same instant in UTC; only for one with a time, of which a missing zone is UTC.
DateParts InUTC(DateParts date);

}  // namespace zephmetadata::media
