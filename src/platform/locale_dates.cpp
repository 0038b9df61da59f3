#include "zephcore/locale_dates.h"

#include <unicode/calendar.h>
#include <unicode/datefmt.h>
#include <unicode/gregocal.h>

#include <memory>
#include <mutex>
#include <string>

#include "platform/environment_locale.h"

namespace zephcore {

namespace {

/// The forms of one locale. Making them costs far more than using them, so those used last are kept.
class DateForms {
public:
    explicit DateForms(std::string locale) : mLocale(std::move(locale)) {
        const icu::Locale icuLocale(mLocale.c_str());
        mDate.reset(icu::DateFormat::createDateInstance(icu::DateFormat::kShort, icuLocale));
        mTime.reset(icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, icuLocale));
        UErrorCode error = U_ZERO_ERROR;
        mNumericDate.reset(icu::DateFormat::createInstanceForSkeleton("yMd", icuLocale, error));
        mCalendar = std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), error);
        mIsUsable = U_SUCCESS(error) && mDate && mTime && mNumericDate;
        if (mIsUsable) {
            for (const auto* const format : {&mDate, &mNumericDate, &mTime}) {
                (*format)->setTimeZone(*icu::TimeZone::getGMT());
            }
        }
    }

    const std::string& Locale() const { return mLocale; }

    std::optional<UTF16String> Date(int year, int month, int day) const { return Date(*mDate, year, month, day); }
    std::optional<UTF16String> NumericDate(int year, int month, int day) const {
        return Date(*mNumericDate, year, month, day);
    }
    std::optional<UTF16String> Time(int hour, int minute, int second) const {
        mCalendar->clear();
        mCalendar->set(1970, 0, 1, hour, minute, second);
        return Formatted(*mTime);
    }
    bool IsUsable() const { return mIsUsable; }

private:
    std::optional<UTF16String> Date(const icu::DateFormat& format, int year, int month, int day) const {
        mCalendar->clear();
        mCalendar->set(year, month - 1, day);
        return Formatted(format);
    }

    std::optional<UTF16String> Formatted(const icu::DateFormat& format) const {
        UErrorCode error = U_ZERO_ERROR;
        const UDate time = mCalendar->getTime(error);
        if (U_FAILURE(error)) {
            return std::nullopt;
        }
        icu::UnicodeString text;
        format.format(time, text);
        return UTF16String(text.getBuffer(), static_cast<std::size_t>(text.length()));
    }

    std::string mLocale;
    std::unique_ptr<icu::DateFormat> mDate;
    std::unique_ptr<icu::DateFormat> mNumericDate;
    std::unique_ptr<icu::DateFormat> mTime;
    std::unique_ptr<icu::GregorianCalendar> mCalendar;
    bool mIsUsable = false;
};

/// Calls @p format with the forms of the current locale.
template <typename Format>
std::optional<UTF16String> WithForms(const Format& format) {
    static std::mutex mutex;
    static std::unique_ptr<DateForms> forms;
    const std::lock_guard lock(mutex);
    std::string locale = EnvironmentLocale({"LC_ALL", "LC_TIME", "LANG"});
    if (!forms || forms->Locale() != locale) {
        forms = std::make_unique<DateForms>(std::move(locale));
    }
    return forms->IsUsable() ? format(*forms) : std::nullopt;
}

}  // namespace

std::optional<UTF16String> FormatShortDate(int year, int month, int day) {
    return WithForms([=](const DateForms& forms) { return forms.Date(year, month, day); });
}

std::optional<UTF16String> FormatNumericDate(int year, int month, int day) {
    return WithForms([=](const DateForms& forms) { return forms.NumericDate(year, month, day); });
}

std::optional<UTF16String> FormatMediumTime(int hour, int minute, int second) {
    return WithForms([=](const DateForms& forms) { return forms.Time(hour, minute, second); });
}

}  // namespace zephcore
