#pragma once

#include <cstdint>
#include <string_view>

#include "xmp/core/toolkit.h"

/// Dates as XMP writes them: the profile of ISO 8601 in the XMP specification part 1, 8.2.1.1.
namespace zephmetadata::toolkit {

struct DateTime {
    bool mHasDate = false;
    bool mHasMonth = false;
    bool mHasDay = false;
    bool mHasTime = false;
    bool mHasSeconds = false;
    bool mHasTimeZone = false;
    std::int32_t mYear = 0;   ///< -9999 to 9999... as written
    std::int32_t mMonth = 0;  ///< 1 to 12, 0 when not given
    std::int32_t mDay = 0;    ///< 1 to 31, 0 when not given
    std::int32_t mHour = 0, mMinute = 0, mSecond = 0;
    std::int32_t mNanosecond = 0;
    std::int32_t mFractionDigits = 0;  ///< digits of the fraction as written, at most 9
    std::int32_t mZoneSign = 0;        ///< -1 west, 0 UTC ("Z"), +1 east
    std::int32_t mZoneHour = 0, mZoneMinute = 0;
};

/// Accepts YYYY, YYYY-MM, YYYY-MM-DD, each of the last followed by Thh:mm[:ss[.fraction]][zone], and a time alone (Thh:mm... or
/// hh:mm...); zone is Z, +hh:mm or -hh:mm. Throws XMPError for anything else (empty text, month 13, 31 April, 29 February of a common year, trailing text).
DateTime ConvertToDate(std::string_view text);
/// The canonical text: partial dates stay partial, the zone is kept, fractions keep their digits without trailing zeros.
UTF8String ConvertFromDate(const DateTime& date);
/// The same instant in UTC; a value without time zone or without time is unchanged.
DateTime ConvertToUTCTime(const DateTime& date);
/// The same instant in the time zone of the process; a value without time zone or time is unchanged.
DateTime ConvertToLocalTime(const DateTime& date);
/// Now, to the second, with the local time zone.
DateTime CurrentDateTime();

}  // namespace zephmetadata::toolkit
