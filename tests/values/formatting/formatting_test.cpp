#include "zephmetadata/formatting.h"

#include <cstdlib>

#include "support/values_test.h"

namespace zephmetadata {
namespace {

struct FormatRow {
    const char* mValue;
    const char* mText;
};

class Formatting : public support::TreeTest {
protected:
    static void Check(const char* expression, std::initializer_list<FormatRow> rows) {
        const Path path = At(expression);
        for (const FormatRow& row : rows) {
            EXPECT_EQ(FormatValue(nullptr, path, row.mValue), row.mText) << expression << " = " << row.mValue;
        }
    }
};

TEST_F(Formatting, NamesExposureTimesAsCamerasAreMarked) {
    Check("exif:ExposureTime", {
                                   {"1/250", "1/250 sec"},     {"1/4", "1/4 sec"},   {"3/10", "0.3 sec"},
                                   {"5/2", "2.5 sec"},         {"1/1", "1 sec"},     {"1024/1", "1024 sec"},
                                   {"2000/1", ">1024 sec"},    {"295/10", "30 sec"},  // within two hundredths of 30
                                   {"10/2563", "1/250 sec"},    // not within those of 1/250, but 1.024 times it is
                                   {"1/16", "1/15 sec"},        // powers of two from here on
                                   {"1/32", "1/30 sec"},        //
                                   {"1/64", "1/60 sec"},        //
                                   {"1/128", "1/125 sec"},      //
                                   {"1/512", "1/500 sec"},      //
                                   {"1/1024", "1/1000 sec"},    //
                                   {"293/10", "29 sec"},        // near none: whole seconds
                                   {"308/10", "31 sec"},        //
                                   {"44/10", "4.4 sec"},        // tenths
                                   {"9/10", "0.9 sec"},         //
                                   {"35/100", "0.3 sec"},       // 1/3
                                   {"1/7", "1/7 sec"},          // whole reciprocals
                                   {"2/23", "1/12 sec"},        //
                                   {"1/37", "1/35 sec"},        // steps of 5
                                   {"1/283", "1/280 sec"},      // of 10
                                   {"1/890", "1/900 sec"},      // of 50
                                   {"1/2240", "1/2200 sec"},    // of 100
                                   {"1/40400", "1/40000 sec"},  // of 1000
                                   {"0/1", "0 sec"},           {"-1/4", "0 sec"},    {"a while", "0 sec"},
                                   {"1/0", ">1024 sec"},       {"0/0", ""},
                               });
    Check("exif:ShutterSpeedValue", {{"8/1", "1/250 sec"},
                                     {"10/1", "1/1000 sec"},
                                     {"7965784/1000000", "1/250 sec"},
                                     {"-1/1", "2 sec"},
                                     {"-11/1", ">1024 sec"},
                                     {"unknown", "1 sec"}});
}

TEST_F(Formatting, SnapsToEveryNominalExposureTime) {
    const Path path = At("exif:ExposureTime");
    for (const char* seconds : {"30",  "25", "20",  "15",  "13",  "10", "8",   "6",   "5",   "4",   "3.2", "3",
                                "2.5", "2",  "1.6", "1.5", "1.3", "1",  "0.8", "0.7", "0.6", "0.5", "0.4", "0.3"}) {
        for (const char* near : {".985", "1.015"}) {
            const std::string value = std::to_string(std::stod(seconds) * std::stod(near)) + "/1";
            EXPECT_EQ(FormatValue(nullptr, path, value), std::string(seconds) + " sec") << value;
        }
    }
    for (const int parts :
         {4,    5,    6,    8,    10,   13,   15,   20,   25,   30,   40,    45,    50,    60,   80,   90,
          100,  125,  160,  180,  200,  250,  320,  350,  400,  500,  640,   750,   800,   1000, 1250, 1500,
          1600, 2000, 2500, 3000, 3200, 4000, 5000, 6000, 6400, 8000, 10000, 12000, 12800, 16000}) {
        for (const char* near : {"985/", "1015/"}) {
            const std::string value = near + std::to_string(parts * 1000);
            EXPECT_EQ(FormatValue(nullptr, path, value), "1/" + std::to_string(parts) + " sec") << value;
        }
    }
}

TEST_F(Formatting, GivesFNumbersTheDigitsThatAreUsual) {
    Check("exif:FNumber", {{"28/10", "2.8"},
                           {"4/1", "4"},
                           {"79/10", "7.9"},
                           {"8/1", "8"},
                           {"11/1", "11"},
                           {"126/10", "13"},
                           {"95/100", "0.95"},
                           {"wide", "0"},
                           {"28/0", ""}});
    for (const char* expression : {"exif:ApertureValue", "exif:MaxApertureValue"}) {
        Check(expression, {{"6/1", "8"}, {"3/1", "2.8"}, {"694/100", "11"}, {"-1/1", "0.71"}, {"wide", "1"}});
    }
}

TEST_F(Formatting, NamesDistancesThatAreNone) {
    for (const char* expression : {"exif:SubjectDistance", "aux:ApproximateFocusDistance"}) {
        Check(expression, {{"5/2", "2.5"},
                           {"1/3", "0.33"},
                           {"4294967295/1", "\u221E"},
                           {"8589934591/1", "\u221E"},  // the lower half of the integer decides
                           {"-1/1", "\u221E"},
                           {"4294967296/1", "Unknown"},
                           {"0/1", "Unknown"},
                           {"0.5/1", "Unknown"},
                           {"0/0", "Unknown"},
                           {"5/0", ""},
                           {"1e19/1", "10000000000000000000"},
                           {"far", ""}});
    }
}

TEST_F(Formatting, DividesRationals) {
    struct Row {
        const char* mValue;
        std::uint64_t mDigits;
        const char* mText;
    };
    const Row rows[] = {{"1/3", 2, "0.33"}, {"28/10", 0, "3"},    {" 7/2", 2, "3.5"},
                        {"7x/2", 2, "3.5"}, {"1/4/8", 2, "0.25"}, {"-7/2", 1, "-3.5"},
                        {"x/2", 2, "0"},    {"1//2", 2, ""},      {"/2", 2, ""},
                        {"3/", 2, ""},      {"3", 2, ""},         {"1/0", 2, ""},
                        {"1/x", 2, ""},     {"", 2, ""},          {"1/8", ~std::uint64_t{0}, "0.125"}};
    for (const Row& row : rows) {
        EXPECT_EQ(FormatRational(row.mValue, row.mDigits), row.mText) << row.mValue;
    }
}

TEST_F(Formatting, WritesCoordinatesInDegreesMinutesAndSeconds) {
    Check("exif:GPSLatitude", {
                                  {"45,30,15N", "45\u00B0 30' 15\" N"},
                                  {"58,58.198N", "58\u00B0 58' 11.88\" N"},
                                  {"45,30N", "45\u00B0 30' N"},
                                  {"45,30,0W", "45\u00B0 30' W"},
                                  {"45,0,5S", "45\u00B0 0' 5\" S"},
                                  {"45,0,0N", "45\u00B0 N"},
                                  {"45E", "45\u00B0 E"},
                                  {"0,0.5E", "0\u00B0 0' 30\" E"},
                                  {"45,30,15.9N", "45\u00B0 30' 15\" N"},
                                  {"45,,7N", "45\u00B0 0' 7\" N"},
                                  {"north,30,0N", "0\u00B0 30' N"},
                                  {"300,0,1E", "44\u00B0 0' 1\" E"},  // a byte holds the degrees
                                  {"99999999999,0,0N", "0\u00B0"},
                                  {"0,0,0N", "0\u00B0"},
                                  {"1,2,3,4N", "0\u00B0"},
                                  {"N", "0\u00B0"},
                                  {"", ""},
                                  {"45,30,15\u00B0", ""},  // a half of its last character would stay
                              });
}

TEST_F(Formatting, GoesByTheTypeWhereNothingSpecialIsKnown) {
    Check("exif:FocalLength", {{"50/1", "50"}, {"305/100", "3.05"}, {"long", ""}});
    Check("exif:DateTimeOriginal", {{"yesterday", "yesterday"}});
    Check("dc:source", {{"1/2", ""}});
    Check("exif:Flash/exif:Fired", {{"True", ""}});
    EXPECT_EQ(FormatValue(nullptr, Path(), "1/2"), "");
    const Path exposureTime = At("exif:ExposureTime");
    Terminate();
    EXPECT_EQ(FormatValue(nullptr, exposureTime, "1/2"), "");
    Initialize();
}

/// An environment variable with another value while the object lives.
class Variable {
public:
    Variable(const char* name, const char* value) : mName(name) {
        if (const char* const old = std::getenv(name)) {
            mOld = old;
        }
        setenv(name, value, 1);
    }
    ~Variable() { mOld ? setenv(mName, mOld->c_str(), 1) : unsetenv(mName); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* mName;
    std::optional<std::string> mOld;
};

TEST(FormattingDates, FollowsLocaleAndTimeZone) {
    struct Row {
        const char* mLocale;
        const char* mZone;
        const char* mValue;
        const char* mText;
    };
    constexpr const char* kEastByTwo = "XYZ-2";  // POSIX counts to the west
    const Row rows[] = {
        {"en_US.UTF-8", "UTC", "2024-05-17", "5/17/24"},
        {"de_DE.UTF-8", "UTC", "2024-05-17", "17.05.24"},
        {"en_US.UTF-8", "UTC", "2024-05-17T09:30:05Z", "5/17/24 9:30:05\u202FAM"},
        {"de_DE.UTF-8", "UTC", "2024-05-17T09:30:05.75Z", "17.05.24 09:30:05"},
        {"de_DE.UTF-8", "UTC", "2024-05-17T09:30+02:00", "17.05.24 07:30:00"},
        {"de_DE.UTF-8", "UTC", "2024-05-17T09:30+00:00", "17.05.24 09:30:00"},
        {"de_DE.UTF-8", kEastByTwo, "2024-12-31T23:30:00Z", "01.01.25 01:30:00"},
        {"de_DE.UTF-8", kEastByTwo, "2024-05-17T09:30", "17.05.24 09:30:00"},
        {"de_DE.UTF-8", kEastByTwo, "2024-05-17", "17.05.24"},
        {"de_DE.UTF-8", "UTC", "09:30:05", "09:30:05"},
        {"en_US.UTF-8", "UTC", "T21:30", "9:30:00\u202FPM"},
        {"de_DE.UTF-8", "UTC", "1601-01-01", "01.01.01"},
        {"de_DE.UTF-8", "UTC", "1600-12-31T23:00-04:00", "01.01.01 03:00:00"},
        // As they are stored: incomplete dates, those of older calendars, and what is none.
        {"de_DE.UTF-8", "UTC", "1600-12-31", "1600-12-31"},
        {"de_DE.UTF-8", "UTC", "1601-01-01T03:00+04:00", "1601-01-01T03:00+04:00"},
        {"de_DE.UTF-8", "UTC", "2024", "2024"},
        {"de_DE.UTF-8", "UTC", "2024-05", "2024-05"},
        {"de_DE.UTF-8", "UTC", "2023-02-29", "2023-02-29"},
        {"de_DE.UTF-8", "UTC", "2024-05-17T24:00", "2024-05-17T24:00"},
        {"de_DE.UTF-8", "UTC", "yesterday", "yesterday"},
        {"de_DE.UTF-8", "UTC", "", ""},
    };
    for (const Row& row : rows) {
        const Variable locale("LC_ALL", row.mLocale);
        const Variable zone("TZ", row.mZone);
        EXPECT_EQ(FormatDate(row.mValue), row.mText) << row.mLocale << ' ' << row.mZone << ' ' << row.mValue;
    }
}

/// Removes the host's formatter, whatever the outcome of the test.
class HostFormatter : public Formatting {
protected:
    ~HostFormatter() override { RegisterValueFormatter({}); }
};

TEST_F(HostFormatter, ComesFirstAndOutlivesTheLibrary) {
    Load(
        "<exif:ExposureTime>1/16</exif:ExposureTime><exif:DateTimeOriginal>2024</exif:DateTimeOriginal>"
        "<dc:source>s</dc:source>");
    EXPECT_FALSE(RegisteredValueFormatter());
    const XMPMetaHandle tree = Tree();
    RegisterValueFormatter([tree](XMPMetaHandle given, const Path& path, const UTF8String& value) {
        return given == tree && path == At("exif:DateTimeOriginal") ? "on " + value : UTF8String();
    });
    Initialize();
    Terminate();
    EXPECT_EQ(Text("exif:DateTimeOriginal"), "on 2024");
    EXPECT_EQ(Text("exif:ExposureTime"), "1/15 sec");
    RegisterValueFormatter([](XMPMetaHandle, const Path&, const UTF8String&) { return UTF8String("host"); });
    EXPECT_EQ(Text("exif:ExposureTime"), "host");
    EXPECT_EQ(Text("dc:source"), "s") << "external values are shown as they are";
    Terminate();
    EXPECT_EQ(RegisteredValueFormatter()(nullptr, Path(), ""), "host");
    Initialize();
    RegisterValueFormatter({});
    EXPECT_FALSE(RegisteredValueFormatter());
    EXPECT_EQ(FormatValue(nullptr, At("exif:ExposureTime"), "1/16"), "1/15 sec");
}

TEST_F(HostFormatter, MayReplaceItselfKeepStateAndThrow) {
    Load("<exif:ExposureTime>1/16</exif:ExposureTime>");
    RegisterValueFormatter([calls = 0, long_ = std::string(100, 'x')](XMPMetaHandle, const Path&, auto) mutable {
        if (++calls == 3) {
            RegisterValueFormatter({});
        }
        return calls == 2 ? throw calls : std::to_string(calls) + long_;
    });
    EXPECT_EQ(Text("exif:ExposureTime"), "1" + std::string(100, 'x'));
    EXPECT_EQ(Text("exif:ExposureTime"), "1/16");
    EXPECT_THAT(Records(), ::testing::ElementsAre(Invalid(ErrorKind::ErrorReadingXMP, "exif:ExposureTime")));
    EXPECT_EQ(Text("exif:ExposureTime"), "3" + std::string(100, 'x'));
    EXPECT_EQ(Text("exif:ExposureTime"), "1/15 sec");
}

TEST_F(HostFormatter, IsLeftOutWhenEverythingIsForcedWritable) {
    Load("<exif:ExposureTime>1/16</exif:ExposureTime>");
    RegisterValueFormatter([](XMPMetaHandle, const Path&, const UTF8String&) -> UTF8String { throw 1; });
    ForcedAllMetadataWritable(true);
    EXPECT_EQ(Text("exif:ExposureTime"), "1/16");
    EXPECT_FALSE(HasErrors());
    ForcedAllMetadataWritable(false);
}

}  // namespace
}  // namespace zephmetadata
