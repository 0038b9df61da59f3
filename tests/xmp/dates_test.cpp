#include "xmp/dates/xmp_dates.h"

#include <cstdlib>
#include <ctime>

#include "xmp/toolkit_fixture.h"

namespace zephmetadata::toolkit {
namespace {

struct DateRow {
    const char* mLabel;
    const char *mText, *mCanonical, *mUTC;
};

class DateTest : public ::testing::TestWithParam<DateRow> {};

TEST_P(DateTest, IsReadAndWritten) {
    const DateTime date = ConvertToDate(GetParam().mText);
    EXPECT_EQ(ConvertFromDate(date), GetParam().mCanonical);
    EXPECT_EQ(ConvertFromDate(ConvertToUTCTime(date)), GetParam().mUTC);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DateTest,
    ::testing::Values(
        DateRow{"Year", "2010", "2010", "2010"}, DateRow{"Month", "2010-05", "2010-05", "2010-05"},
        DateRow{"Day", "2010-05-06", "2010-05-06", "2010-05-06"}, DateRow{"YearZero", "0000", "0000", "0000"},
        DateRow{"BeforeChrist", "-0044-03-15", "-0044-03-15", "-0044-03-15"},
        DateRow{"LeapDay", "2000-02-29", "2000-02-29", "2000-02-29"},
        DateRow{"NoZone", "2010-05-06T10:20:30", "2010-05-06T10:20:30", "2010-05-06T10:20:30"},
        DateRow{"NoSeconds", "2010-05-06T10:20Z", "2010-05-06T10:20Z", "2010-05-06T10:20Z"},
        DateRow{"East", "2010-05-06T10:20:30+02:00", "2010-05-06T10:20:30+02:00", "2010-05-06T08:20:30Z"},
        DateRow{"WestOverNewYear", "2019-12-31T22:20-03:30", "2019-12-31T22:20-03:30", "2020-01-01T01:50Z"},
        DateRow{"EastOverLeapDay", "2024-03-01T00:30:00+01:00", "2024-03-01T00:30:00+01:00", "2024-02-29T23:30:00Z"},
        DateRow{"ZoneOfZero", "2010-05-06T10:20+00:00", "2010-05-06T10:20+00:00", "2010-05-06T10:20Z"},
        DateRow{"Fraction", "2010-05-06T10:20:30.0250Z", "2010-05-06T10:20:30.025Z", "2010-05-06T10:20:30.025Z"},
        DateRow{"FractionOfZeros", "2010-05-06T10:20:30.00", "2010-05-06T10:20:30", "2010-05-06T10:20:30"},
        DateRow{"LongFraction", "2010-05-06T10:20:30.1234567891", "2010-05-06T10:20:30.123456789",
                "2010-05-06T10:20:30.123456789"},
        DateRow{"TimeAlone", "T10:20", "T10:20", "T10:20"},
        DateRow{"TimeWithoutT", "23:59:59", "T23:59:59", "T23:59:59"},
        DateRow{"TimeAloneWithZone", "00:30+01:00", "T00:30+01:00", "T23:30Z"}),
    LabelOf());

TEST(Dates, OtherTextIsNoDate) {
    for (const char* const text : {"",
                                   " 2010",
                                   "2010 ",
                                   "10",
                                   "20100506",
                                   "2010-13",
                                   "2010-00",
                                   "2010-04-31",
                                   "2011-02-29",
                                   "1900-02-29",
                                   "2010-5-6",
                                   "2010-05-06T",
                                   "2010-05-06T10",
                                   "2010-05-06T24:00",
                                   "2010-05-06T10:60",
                                   "2010-05-06T10:20:60",
                                   "2010-05-06 10:20",
                                   "2010-05-06T10:20:30.",
                                   "2010-05-06T10:20:30,5",
                                   "2010-05-06T10:20+0200",
                                   "2010-05-06T10:20+24:00",
                                   "2010-05-06T10:20ZZ",
                                   "2010:05:06 10:20:30",
                                   "2010-05T10:20",
                                   "May 2010",
                                   "--2010",
                                   "T",
                                   "12:"}) {
        EXPECT_EQ(ErrorOf([&] { ConvertToDate(text); }), -5) << text;
    }
}

TEST(Dates, LocalTimeIsThatOfTheDay) {
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    const auto local = [](const char* text) { return ConvertFromDate(ConvertToLocalTime(ConvertToDate(text))); };
    EXPECT_EQ(local("2010-01-31T23:30Z"), "2010-02-01T00:30+01:00");
    EXPECT_EQ(local("2010-07-01T00:30:15-04:00"), "2010-07-01T06:30:15+02:00");
    EXPECT_EQ(local("2010-07-01T00:30:15"), "2010-07-01T00:30:15");
    EXPECT_EQ(local("2010-07"), "2010-07");
    const DateTime now = ConvertToUTCTime(CurrentDateTime());
    EXPECT_TRUE(now.mHasTimeZone && now.mHasSeconds && now.mNanosecond == 0);
    std::tm parts{};
    parts.tm_year = now.mYear - 1900;
    parts.tm_mon = now.mMonth - 1;
    parts.tm_mday = now.mDay;
    parts.tm_hour = now.mHour;
    parts.tm_min = now.mMinute;
    parts.tm_sec = now.mSecond;
    EXPECT_NEAR(static_cast<double>(::timegm(&parts)), static_cast<double>(std::time(nullptr)), 2);
}

}  // namespace
}  // namespace zephmetadata::toolkit
