#include "xmp/dates/xmp_dates.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string>

#include "xmp/core/exempi_handles.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::int32_t kMinutesOfDay = 24 * 60;
constexpr std::int32_t kMaxFractionDigits = 9;

[[noreturn]] void ThrowNoDate(std::string_view text) {
    constexpr std::size_t kShown = 80;
    ThrowError(XMPErr_BadValue, UTF8String("date \"").append(text.substr(0, kShown)).append("\""));
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

class DateReader {
public:
    explicit DateReader(std::string_view text) : mText(text), mRest(text) {}

    DateTime Read() {
        constexpr std::size_t kHourSize = 2;
        const bool timeAlone = mText.starts_with('T') || (mText.size() > kHourSize && mText[kHourSize] == ':');
        if (timeAlone) {
            Skip('T');
            ReadTime();
        } else {
            ReadDate();
        }
        if (!mRest.empty()) {
            ThrowNoDate(mText);
        }
        return mDate;
    }

private:
    bool Skip(char c) {
        const bool found = mRest.starts_with(c);
        mRest.remove_prefix(found ? 1 : 0);
        return found;
    }

    void Require(char c) {
        if (!Skip(c)) {
            ThrowNoDate(mText);
        }
    }

    std::int32_t Number(std::size_t digits, std::int32_t least, std::int32_t most) {
        std::int32_t value = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            if (i >= mRest.size() || !IsDigit(mRest[i])) {
                ThrowNoDate(mText);
            }
            value = value * 10 + (mRest[i] - '0');
        }
        if (value < least || value > most) {
            ThrowNoDate(mText);
        }
        mRest.remove_prefix(digits);
        return value;
    }

    void ReadDate() {
        const bool negative = Skip('-');
        mDate.mHasDate = true;
        mDate.mYear = Number(4, 0, 9999) * (negative ? -1 : 1);
        if (!Skip('-')) {
            return;
        }
        mDate.mHasMonth = true;
        mDate.mMonth = Number(2, 1, 12);
        if (!Skip('-')) {
            return;
        }
        mDate.mHasDay = true;
        mDate.mDay = Number(2, 1, LastDay());
        if (Skip('T')) {
            ReadTime();
        }
    }

    std::int32_t LastDay() const {
        const std::chrono::year_month_day_last last{
            std::chrono::year(mDate.mYear),
            std::chrono::month_day_last(std::chrono::month(static_cast<unsigned>(mDate.mMonth)))};
        return static_cast<std::int32_t>(static_cast<unsigned>(last.day()));
    }

    void ReadTime() {
        mDate.mHasTime = true;
        mDate.mHour = Number(2, 0, 23);
        Require(':');
        mDate.mMinute = Number(2, 0, 59);
        if (Skip(':')) {
            mDate.mHasSeconds = true;
            mDate.mSecond = Number(2, 0, 59);
            if (Skip('.')) {
                ReadFraction();
            }
        }
        ReadZone();
    }

    // Digits beyond the nanosecond are read and dropped.
    void ReadFraction() {
        if (mRest.empty() || !IsDigit(mRest.front())) {
            ThrowNoDate(mText);
        }
        for (; !mRest.empty() && IsDigit(mRest.front()); mRest.remove_prefix(1)) {
            if (mDate.mFractionDigits < kMaxFractionDigits) {
                mDate.mNanosecond = mDate.mNanosecond * 10 + (mRest.front() - '0');
                ++mDate.mFractionDigits;
            }
        }
        for (std::int32_t digit = mDate.mFractionDigits; digit < kMaxFractionDigits; ++digit) {
            mDate.mNanosecond *= 10;
        }
    }

    void ReadZone() {
        if (Skip('Z')) {
            mDate.mHasTimeZone = true;
            return;
        }
        const std::int32_t sign = Skip('+') ? 1 : Skip('-') ? -1 : 0;
        if (sign != 0) {
            mDate.mHasTimeZone = true;
            mDate.mZoneSign = sign;
            mDate.mZoneHour = Number(2, 0, 23);
            Require(':');
            mDate.mZoneMinute = Number(2, 0, 59);
        }
    }

    std::string_view mText;
    std::string_view mRest;
    DateTime mDate;
};

void AppendNumber(UTF8String& to, std::int32_t value, std::size_t digits) {
    const UTF8String text = std::to_string(std::abs(value));
    to.append(value < 0 ? "-" : "").append(digits > text.size() ? digits - text.size() : 0, '0').append(text);
}

void AppendTime(UTF8String& to, const DateTime& date) {
    to.push_back('T');
    AppendNumber(to, date.mHour, 2);
    to.push_back(':');
    AppendNumber(to, date.mMinute, 2);
    if (date.mHasSeconds) {
        to.push_back(':');
        AppendNumber(to, date.mSecond, 2);
    }
    if (date.mHasSeconds && date.mNanosecond != 0) {
        to.push_back('.');
        AppendNumber(to, date.mNanosecond, kMaxFractionDigits);
        to.erase(to.find_last_not_of('0') + 1);
    }
    if (!date.mHasTimeZone) {
        return;
    }
    if (date.mZoneSign == 0) {
        to.push_back('Z');
        return;
    }
    to.push_back(date.mZoneSign < 0 ? '-' : '+');
    AppendNumber(to, date.mZoneHour, 2);
    to.push_back(':');
    AppendNumber(to, date.mZoneMinute, 2);
}

std::chrono::sys_days DayOf(const DateTime& date) {
    return std::chrono::sys_days{std::chrono::year(date.mYear) /
                                 std::chrono::month(static_cast<unsigned>(date.mMonth)) /
                                 std::chrono::day(static_cast<unsigned>(date.mDay))};
}

// Zones differ by whole minutes, so seconds and fractions stay.
void AddMinutes(DateTime& date, std::int32_t minutes) {
    const std::int32_t sum = date.mHour * 60 + date.mMinute + minutes;
    const std::int32_t days = sum >= 0 ? sum / kMinutesOfDay : -((kMinutesOfDay - 1 - sum) / kMinutesOfDay);
    const std::int32_t ofDay = sum - days * kMinutesOfDay;
    date.mHour = ofDay / 60;
    date.mMinute = ofDay % 60;
    if (date.mHasDay && days != 0) {
        const std::chrono::year_month_day moved{DayOf(date) + std::chrono::days(days)};
        date.mYear = static_cast<int>(moved.year());
        date.mMonth = static_cast<std::int32_t>(static_cast<unsigned>(moved.month()));
        date.mDay = static_cast<std::int32_t>(static_cast<unsigned>(moved.day()));
    }
}

void SetZone(DateTime& date, std::int32_t minutesEast) {
    date.mHasTimeZone = true;
    date.mZoneSign = minutesEast < 0 ? -1 : minutesEast > 0 ? 1 : 0;
    date.mZoneHour = std::abs(minutesEast) / 60;
    date.mZoneMinute = std::abs(minutesEast) % 60;
}

// How far the time zone of the process was east of UTC then, in minutes.
std::int32_t LocalMinutesEast(std::time_t when) {
    // A host may have changed the zone. What tzset changes is the whole process's, and not every system locks it.
    static std::mutex mutex;
    const std::scoped_lock lock(mutex);
    ::tzset();
    std::tm local{};
    return ::localtime_r(&when, &local) == nullptr ? 0 : static_cast<std::int32_t>(local.tm_gmtoff / 60);
}

}  // namespace

DateTime ConvertToDate(std::string_view text) {
    return DateReader(text).Read();
}

UTF8String ConvertFromDate(const DateTime& date) {
    UTF8String text;
    if (date.mHasDate) {
        AppendNumber(text, date.mYear, 4);
        if (date.mHasMonth) {
            text.push_back('-');
            AppendNumber(text, date.mMonth, 2);
        }
        if (date.mHasMonth && date.mHasDay) {
            text.push_back('-');
            AppendNumber(text, date.mDay, 2);
        }
    }
    if (date.mHasTime) {
        AppendTime(text, date);
    }
    return text;
}

DateTime ConvertToUTCTime(const DateTime& date) {
    DateTime utc = date;
    if (date.mHasTime && date.mHasTimeZone) {
        AddMinutes(utc, -date.mZoneSign * (date.mZoneHour * 60 + date.mZoneMinute));
        SetZone(utc, 0);
    }
    return utc;
}

// A time without a date is left alone as well: what the local time zone is depends on the day.
DateTime ConvertToLocalTime(const DateTime& date) {
    if (!date.mHasTime || !date.mHasTimeZone || !date.mHasDay) {
        return date;
    }
    DateTime local = ConvertToUTCTime(date);
    const std::chrono::sys_seconds when = DayOf(local) + std::chrono::hours(local.mHour) +
                                          std::chrono::minutes(local.mMinute) + std::chrono::seconds(local.mSecond);
    const std::int32_t minutesEast = LocalMinutesEast(when.time_since_epoch().count());
    AddMinutes(local, minutesEast);
    SetZone(local, minutesEast);
    return local;
}

DateTime CurrentDateTime() {
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const auto midnight = std::chrono::floor<std::chrono::days>(now);
    const std::chrono::year_month_day day{midnight};
    const std::chrono::hh_mm_ss time{now - midnight};
    DateTime utc;
    utc.mHasDate = utc.mHasMonth = utc.mHasDay = utc.mHasTime = utc.mHasSeconds = utc.mHasTimeZone = true;
    utc.mYear = static_cast<int>(day.year());
    utc.mMonth = static_cast<std::int32_t>(static_cast<unsigned>(day.month()));
    utc.mDay = static_cast<std::int32_t>(static_cast<unsigned>(day.day()));
    utc.mHour = static_cast<std::int32_t>(time.hours().count());
    utc.mMinute = static_cast<std::int32_t>(time.minutes().count());
    utc.mSecond = static_cast<std::int32_t>(time.seconds().count());
    return ConvertToLocalTime(utc);
}

}  // namespace zephmetadata::toolkit
