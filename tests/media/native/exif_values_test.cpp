#include "media/native/exif/exif_values.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "media/native/exif_fixture.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using enum TiffType;

struct Reading {
    const char* mName;
    std::vector<TiffField> mFields;
    const char* mProperty;
    std::string mSaid;
    ByteOrder mOrder = ByteOrder::kBig;
};

class ExifReadingTest : public testing::TestWithParam<Reading> {};

TEST_P(ExifReadingTest, SaysWhatTheFieldsMean) {
    const TiffFields fields = Fields(GetParam().mFields, GetParam().mOrder);
    EXPECT_EQ(Said(fields, GetParam().mProperty), GetParam().mSaid);
    for (const NativeValue& value : ExifValues(fields)) {
        EXPECT_TRUE(ExifAgrees(fields, value)) << value.mProperty;
    }
}

const std::string kDate = "2020:01:02 03:04:05\0"s;

const std::vector<Reading> kTexts = {
    {"BlanksAndNulAtTheEnd", {Main(0x10F, kAscii, "Maker  \0\0"s)}, "Make", "Maker"},
    {"NoNul", {Main(0x110, kAscii, "Model"s)}, "Model", "Model"},
    {"NothingButBlanks", {Main(0x10E, kAscii, "        \0"s)}, "description", ""},
    {"DefaultLanguage", {Main(0x10E, kAscii, "Hafen\0"s)}, "description", "x-default=Hafen"},
    {"UTF8InAscii", {Main(0x10F, kAscii, "caf\xC3\xA9\0"s)}, "Make", "caf\xC3\xA9"},
    {"TypeUTF8", {Main(0x10F, kUTF8, "caf\xC3\xA9\0"s)}, "Make", "caf\xC3\xA9"},
    {"Windows1252", {Main(0x10F, kAscii, "\x80 caf\xE9\0"s)}, "Make", "\xE2\x82\xAC caf\xC3\xA9"},
    {"OverlongIsNoUTF8", {Main(0x10F, kAscii, "\xC0\xAF\0"s)}, "Make", "\xC3\x80\xC2\xAF"},
    {"ControlsBecomeSpaces", {Main(0x10F, kAscii, "a\x01\x1Fz\0"s)}, "Make", "a  z"},
    {"TextInBytes", {GPS(9, kByte, "A\0"s)}, "GPSStatus", "A"},
    {"NumbersAreNoText", {Main(0x10F, kShort, Shorts({65}))}, "Make", ""},
    {"PhotographerAndEditor", {Main(0x8298, kAscii, "P\0E\0"s)}, "rights", "x-default=P\nE"},
    {"EditorAlone", {Main(0x8298, kAscii, " \0E\0"s)}, "rights", "x-default= \nE"},
    {"PhotographerAlone", {Main(0x8298, kAscii, "P\0 \0"s)}, "rights", "x-default=P"},
    {"Creators", {Main(0x13B, kAscii, "A; B;C ;; \0"s)}, "creator", "A | B | C"},
    {"QuotedCreators",
     {Main(0x13B, kAscii, "\"A;B\"; \"C \"\"D\"\"\"; E \"F\"\0"s)},
     "creator",
     "A;B | C \"D\" | E \"F\""},
    {"QuoteWithoutEnd", {Main(0x13B, kAscii, "\"A; B"s)}, "creator", "A; B"},
    {"Comment", {Exif(0x9286, kUndefined, "ASCII\0\0\0abc  "s)}, "UserComment", "x-default=abc"},
    {"CommentOfNoSet", {Exif(0x9286, kUndefined, "\0\0\0\0\0\0\0\0abc\0\0"s)}, "UserComment", "x-default=abc"},
    {"CommentWithoutSet", {Exif(0x9286, kUndefined, "bare text here"s)}, "UserComment", "x-default=bare text here"},
    {"BlankComment", {Exif(0x9286, kUndefined, "ASCII\0\0\0    "s)}, "UserComment", ""},
    {"ShortComment", {Exif(0x9286, kUndefined, "ASCI"s)}, "UserComment", "x-default=ASCI"},
    {"JISOfAsciiAlone", {Exif(0x9286, kUndefined, "JIS\0\0\0\0\0abc"s)}, "UserComment", "x-default=abc"},
    {"JISWithEscapes", {Exif(0x9286, kUndefined, "JIS\0\0\0\0\0\x1B$B!!"s)}, "UserComment", ""},
    {"UTF16",
     {Exif(0x9286, kUndefined, "UNICODE\0\0A\xD8\x3D\xDE\x00\0B"s)},
     "UserComment",
     "x-default=A\xF0\x9F\x98\x80"
     "B"},
    {"UTF16OfTheStream",
     {Exif(0x9286, kUndefined, "UNICODE\0\x42\x30\x44\x30"s)},
     "UserComment",
     "x-default=\xE3\x81\x82\xE3\x81\x84",
     ByteOrder::kLittle},
    {"UTF16InTheOtherOrder", {Exif(0x9286, kUndefined, "UNICODE\0A\0B\0"s)}, "UserComment", "x-default=AB"},
    {"UTF16WithMark",
     {Exif(0x9286, kUndefined, "UNICODE\0\xFF\xFE\x42\x30"s)},
     "UserComment",
     "x-default=\xE3\x81\x82"},
    {"HalfASurrogate",
     {Exif(0x9286, kUndefined, "UNICODE\0\xD8\x3D\0A"s)},
     "UserComment",
     "x-default=\xEF\xBF\xBD"
     "A"},
    {"Method", {GPS(0x1B, kUndefined, "ASCII\0\0\0GPS"s)}, "GPSProcessingMethod", "GPS"},
    {"Version", {Exif(0x9000, kUndefined, "0232"s)}, "ExifVersion", "0232"},
    {"VersionOfNumbers", {Exif(0x9000, kUndefined, "\0\2\3\2"s)}, "ExifVersion", ""},
    {"GPSVersion", {GPS(0, kByte, "\2\3\0\0"s)}, "GPSVersionID", "2.3.0.0"},
    {"GPSVersionInLetters", {GPS(0, kAscii, "2300"s)}, "GPSVersionID", "2.3.0.0"},
};
INSTANTIATE_TEST_SUITE_P(Texts, ExifReadingTest, testing::ValuesIn(kTexts),
                         [](const auto& test) { return test.param.mName; });

const std::vector<Reading> kNumbers = {
    {"Short", {Main(0x112, kShort, Shorts({6}))}, "Orientation", "6"},
    {"LongForShort", {Main(0x112, kLong, Longs({6}))}, "Orientation", "6"},
    {"TextForNumber", {Main(0x112, kAscii, "6\0"s)}, "Orientation", "6"},
    {"WordForNumber", {Main(0x112, kAscii, "up\0"s)}, "Orientation", ""},
    {"NoValue", {Main(0x112, kShort, ""s)}, "Orientation", ""},
    {"UndefinedByte", {Exif(0xA300, kUndefined, "\3"s)}, "FileSource", "3"},
    {"UndefinedBytes", {Exif(0x9101, kUndefined, "\1\2\3\0"s)}, "ComponentsConfiguration", "1 | 2 | 3 | 0"},
    {"Several", {Exif(0x8827, kShort, Shorts({100, 200}))}, "ISOSpeedRatings", "100 | 200"},
    {"FirstOfSeveral",
     {Exif(0x9000, kUndefined, "0230"s), Exif(0x8827, kShort, Shorts({100, 200}))},
     "PhotographicSensitivity",
     "100"},
    {"SensitivityBefore23",
     {Exif(0x9000, kUndefined, "0221"s), Exif(0x8827, kShort, Shorts({100}))},
     "PhotographicSensitivity",
     ""},
    {"RationalAsStored", {Exif(0x9102, kRational, Longs({4, 2}))}, "CompressedBitsPerPixel", "4/2"},
    {"NothingByNothing", {Exif(0x829A, kRational, Longs({0, 0}))}, "ExposureTime", "0/0"},
    {"LargestUnsigned", {Exif(0x9206, kRational, Longs({4294967295, 1}))}, "SubjectDistance", "4294967295/1"},
    {"Signed", {Exif(0x9204, kSRational, Longs({-4, 6}))}, "ExposureBiasValue", "-4/6"},
    {"UnsignedForSigned", {Exif(0x9204, kRational, Longs({1, 3}))}, "ExposureBiasValue", "1/3"},
    {"IntegerForRational", {Exif(0x829D, kShort, Shorts({8}))}, "FNumber", "8/1"},
    {"DoubleForRational", {Exif(0x829D, kDouble, Numbers(8, {0x4006000000000000}))}, "FNumber", "11/4"},
    {"NoNumberForRational", {Exif(0x829D, kDouble, Numbers(8, {0x7FF8000000000000}))}, "FNumber", ""},
    {"Lens",
     {Exif(0xA432, kRational, Longs({24, 1, 70, 1, 0, 0, 0, 0}))},
     "LensSpecification",
     "24/1 | 70/1 | 0/0 | 0/0"},
    {"LensInOneText", {Exif(0xA432, kRational, Longs({24, 1, 70, 1, 0, 0, 0, 0}))}, "LensInfo", "24/1 70/1 0/0 0/0"},
    {"SubjectArea", {Exif(0x9214, kShort, Shorts({1, 2, 3}))}, "SubjectArea", "1 | 2 | 3"},
    {"Flash",
     {Exif(0x9209, kShort, Shorts({0x5D}))},
     "Flash",
     "exif:Fired=True | exif:Return=2 | exif:Mode=3 | exif:Function=False | exif:RedEyeMode=True"},
    {"ColorFilter",
     {Exif(0xA302, kUndefined, "\0\2\0\1\1\2"s)},
     "CFAPattern",
     "exif:Columns=2 | exif:Rows=1 | exif:Values[1]=1 | exif:Values[2]=2"},
    {"ColorFilterInTheOtherOrder",
     {Exif(0xA302, kUndefined, "\0\2\0\1\1\2"s)},
     "CFAPattern",
     "exif:Columns=2 | exif:Rows=1 | exif:Values[1]=1 | exif:Values[2]=2",
     ByteOrder::kLittle},
    {"ColorFilterCutOff", {Exif(0xA302, kUndefined, "\0\2\0\2\1\2"s)}, "CFAPattern", ""},
    {"Conversion",
     {Exif(0x8828, kUndefined, "\0\1\0\1A\0"s + Longs({-1, 2}))},
     "OECF",
     "exif:Columns=1 | exif:Rows=1 | exif:Names[1]=A | exif:Values[1]=-1/2"},
    {"ConversionCutOff", {Exif(0x8828, kUndefined, "\0\1\0\1A"s)}, "OECF", ""},
    {"Settings",
     {Exif(0xA40B, kUndefined, "\0\1\0\2\0A\0B\0\0\0C\0\0"s)},
     "DeviceSettingDescription",
     "exif:Columns=1 | exif:Rows=2 | exif:Settings[1]=AB | exif:Settings[2]=C"},
    {"Composite",
     {Exif(0xA462, kUndefined,
           Longs({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}) + Shorts({2, 1}) + Longs({1, 2}))},
     "CompositeImageExposureTimes",
     "exifEX:TotalExposurePeriod=1/2 | exifEX:SumOfExposureTimesOfAll=3/4 | exifEX:SumOfExposureTimesOfUsed=5/6 | "
     "exifEX:MaxExposureTimesOfAll=7/8 | "
     "exifEX:MaxExposureTimesOfUsed=9/10 | exifEX:MinExposureTimesOfAll=11/12 | exifEX:MinExposureTimesOfUsed=13/14 | "
     "exifEX:NumberOfSequences=2 | "
     "exifEX:NumberOfImagesInSequences=1 | exifEX:Values[1]=1/2"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, ExifReadingTest, testing::ValuesIn(kNumbers),
                         [](const auto& test) { return test.param.mName; });

Reading Dated(const char* name, const std::string& text, const char* said, const std::string& zone = {},
              const std::string& fraction = {}) {
    std::vector<TiffField> fields = {Exif(0x9003, kAscii, text)};
    if (!zone.empty()) {
        fields.push_back(Exif(0x9011, kAscii, zone));
    }
    if (!fraction.empty()) {
        fields.push_back(Exif(0x9291, kAscii, fraction));
    }
    return {name, std::move(fields), "DateTimeOriginal", said};
}

const std::vector<Reading> kDates = {
    Dated("Plain", kDate, "2020-01-02T03:04:05"),
    Dated("NoNul", "2005:08:13 09:47:23", "2005-08-13T09:47:23"),
    Dated("WholeMinute", "2026:05:01 10:00:00\0"s, "2026-05-01T10:00:00"),
    Dated("Unknown", "0000:00:00 00:00:00\0"s, ""),
    Dated("Blank", "    :  :     :  :  \0"s, ""),
    Dated("OtherSeparators", "2020/01/02 03.04.05\0"s, "2020-01-02T03:04:05"),
    Dated("FormOfXMP", "2020-01-02T03:04:05.25+02:00\0"s, "2020-01-02T03:04:05.25+02:00"),
    Dated("YearAlone", "2020:00:00 00:00:00\0"s, "2020"),
    Dated("MonthAlone", "2020:05:  \0"s, "2020-05"),
    Dated("NoTime", "2020:05:06   :  :  \0"s, "2020-05-06"),
    Dated("NoSeconds", "2020:05:06 10:11:  \0"s, "2020-05-06T10:11:00"),
    Dated("NoSuchDay", "2021:02:29 10:11:12\0"s, ""),
    Dated("NoSuchHour", "2020:05:06 25:11:12\0"s, "2020-05-06"),
    Dated("Words", "yesterday\0"s, ""),
    Dated("Zone", kDate, "2020-01-02T03:04:05+03:00", "+03:00\0"s),
    Dated("ZoneOfUTC", kDate, "2020-01-02T03:04:05Z", "+00:00\0"s),
    Dated("ZoneWithoutColon", kDate, "2020-01-02T03:04:05-04:30", "-0430\0"s),
    Dated("BlankZone", kDate, "2020-01-02T03:04:05", "   :  \0"s),
    Dated("Fraction", kDate, "2020-01-02T03:04:05.007", {}, "007 \0"s),
    Dated("FractionOfNothing", kDate, "2020-01-02T03:04:05", {}, "00\0"s),
    Dated("BothBesideADay", "2020:05:06\0"s, "2020-05-06", "+03:00\0"s, "5\0"s),
    {"CaptureDate", {Exif(0x9003, kAscii, kDate)}, "DateCreated", "2020-01-02T03:04:05"},
    {"Digitized", {Exif(0x9004, kAscii, kDate), Exif(0x9012, kAscii, "Z\0"s)}, "CreateDate", "2020-01-02T03:04:05Z"},
    {"Modified",
     {Main(0x132, kAscii, kDate), Exif(0x9010, kAscii, "+01:00\0"s), Exif(0x9290, kAscii, "5\0"s)},
     "ModifyDate",
     "2020-01-02T03:04:05.5+01:00"},
    {"TimeOfPosition",
     {GPS(7, kRational, Longs({10, 1, 11, 1, 125, 10})), GPS(0x1D, kAscii, "2020:01:02\0"s)},
     "GPSTimeStamp",
     "2020-01-02T10:11:12.5Z"},
    {"DayOfThePicture",
     {GPS(7, kRational, Longs({10, 1, 11, 1, 12, 1})), Exif(0x9003, kAscii, kDate)},
     "GPSTimeStamp",
     "2020-01-02T10:11:12Z"},
    {"NoDay", {GPS(7, kRational, Longs({10, 1, 11, 1, 12, 1}))}, "GPSTimeStamp", ""},
    {"NoTimeOfDay",
     {GPS(7, kRational, Longs({24, 1, 0, 1, 0, 1})), GPS(0x1D, kAscii, "2020:01:02\0"s)},
     "GPSTimeStamp",
     ""},
};
INSTANTIATE_TEST_SUITE_P(Dates, ExifReadingTest, testing::ValuesIn(kDates),
                         [](const auto& test) { return test.param.mName; });

Reading Placed(const char* name, const std::vector<std::int64_t>& parts, const char* letter, const char* said,
               TiffType type = kRational) {
    return {name, {GPS(1, kAscii, letter + "\0"s), GPS(2, type, Longs(parts))}, "GPSLatitude", said};
}

const std::vector<Reading> kPlaces = {
    Placed("WholeSeconds", {48, 1, 12, 1, 36, 1}, "N", "48,12,36N"),
    Placed("WholeInOtherParts", {48, 1, 12, 1, 360, 10}, "S", "48,12,36S"),
    Placed("SecondsThatComeOutEven", {48, 1, 12, 1, 3456, 100}, "N", "48,12.576N"),
    Placed("SecondsThatDoNot", {60, 1, 8, 1, 4814, 100}, "N", "60,8.80233N"),
    Placed("SignedRationals", {60, 1, 8, 1, 4814, 100}, "N", "60,8.80233N", kSRational),
    Placed("DecimalMinutes", {11, 1, 305, 10, 0, 1}, "N", "11,30.5N"),
    Placed("DecimalDegrees", {48123456, 1000000, 0, 1, 0, 1}, "N", "48,7.40736N"),
    Placed("MinutesAbove60", {1, 1, 90, 1, 0, 1}, "N", "2,30,0N"),
    Placed("JustBelowAMinute", {1, 1, 59, 1, 4294967295, 71582789}, "N", "1,59.99999998952N"),
    Placed("Negative", {-48, 1, 0, 1, 0, 1}, "N", "48,0,0S", kSRational),
    Placed("UnknownSeconds", {48, 1, 12, 1, 0, 0}, "N", "48,12,0N"),
    Placed("UnknownDegrees", {0, 0, 0, 0, 0, 0}, "N", ""),
    Placed("DegreesAlone", {48, 1}, "N", "48,0,0N"),
    Placed("TooFar", {90, 1, 0, 1, 1, 1}, "N", ""),
    Placed("SmallLetter", {48, 1, 12, 1, 36, 1}, "n", "48,12,36N"),
    Placed("WrongLetter", {48, 1, 12, 1, 36, 1}, "E", ""),
    {"NoLetter", {GPS(2, kRational, Longs({48, 1, 12, 1, 36, 1}))}, "GPSLatitude", ""},
    {"East",
     {GPS(0x15, kAscii, "E\0"s), GPS(0x16, kRational, Longs({179, 1, 59, 1, 59, 1}))},
     "GPSDestLongitude",
     "179,59,59E"},
    {"DepthBelowTheSea", {GPS(5, kByte, "\1"s), GPS(6, kRational, Longs({2001, 4}))}, "GPSAltitudeRef", "1"},
};
INSTANTIATE_TEST_SUITE_P(Places, ExifReadingTest, testing::ValuesIn(kPlaces),
                         [](const auto& test) { return test.param.mName; });

// ---- agreement

struct Agreement {
    const char* mName;
    std::vector<TiffField> mFields;
    const char* mProperty;
    const char* mPacket;
    bool mAgrees;
};

class ExifAgreementTest : public testing::TestWithParam<Agreement> {};

TEST_P(ExifAgreementTest, HoldsAsFarAsTheFieldsCanCarry) {
    EXPECT_EQ(ExifAgrees(Fields(GetParam().mFields), Value(GetParam().mProperty, GetParam().mPacket)),
              GetParam().mAgrees);
}

const std::vector<TiffField> kDay = {Exif(0x9003, kAscii, kDate)};
const std::vector<TiffField> kZoned = {Exif(0x9003, kAscii, kDate), Exif(0x9011, kAscii, "+03:00\0"s)};
const std::vector<TiffField> kTenths = {Exif(0x9003, kAscii, kDate), Exif(0x9291, kAscii, "50\0"s)};
const std::vector<TiffField> kPlace = {GPS(1, kAscii, "N\0"s), GPS(2, kRational, Longs({60, 1, 8, 1, 4814, 100}))};
const std::vector<TiffField> kTime = {GPS(7, kRational, Longs({23, 1, 11, 1, 12, 1})),
                                      GPS(0x1D, kAscii, "2020:01:02\0"s)};
const std::vector<TiffField> kTimeAlone = {GPS(7, kRational, Longs({23, 1, 11, 1, 12, 1})),
                                           Exif(0x9003, kAscii, kDate)};
const std::vector<TiffField> kThird = {Exif(0x829A, kRational, Longs({1, 3}))};
const std::vector<TiffField> kMarks = {Main(0x10E, kAscii, "caf? ??\0"s)};
const std::vector<TiffField> kNames = {Main(0x13B, kAscii, "A; B\0"s)};

const std::vector<Agreement> kAgreements = {
    {"ZoneOfThePacketAlone", kDay, "DateTimeOriginal", "2020-01-02T03:04:05+02:00", true},
    {"FractionOfThePacketAlone", kDay, "DateTimeOriginal", "2020-01-02T03:04:05.25", true},
    {"SecondsThatArePlainlyNone",
     {Exif(0x9003, kAscii, "2020:01:02 03:04:00\0"s)},
     "DateTimeOriginal",
     "2020-01-02T03:04",
     true},
    {"OtherSecond", kDay, "DateTimeOriginal", "2020-01-02T03:04:06", false},
    {"PacketOfADayAlone", kDay, "DateTimeOriginal", "2020-01-02", false},
    {"SameZone", kZoned, "DateTimeOriginal", "2020-01-02T03:04:05+03:00", true},
    {"OtherZone", kZoned, "DateTimeOriginal", "2020-01-02T02:04:05+02:00", false},
    {"ZoneOfTheFieldsAlone", kZoned, "DateTimeOriginal", "2020-01-02T03:04:05", false},
    {"SameFraction", kTenths, "DateTimeOriginal", "2020-01-02T03:04:05.5", true},
    {"LongerFraction", kTenths, "DateTimeOriginal", "2020-01-02T03:04:05.512", true},
    {"OtherFraction", kTenths, "DateTimeOriginal", "2020-01-02T03:04:05.6", false},
    {"NoDate", kDay, "DateTimeOriginal", "in 2020", false},
    {"SameInstant", kTime, "GPSTimeStamp", "2020-01-03T01:11:12+02:00", true},
    {"OtherDay", kTime, "GPSTimeStamp", "2020-01-03T23:11:12Z", false},
    {"GuessedDay", kTimeAlone, "GPSTimeStamp", "2020-01-01T23:11:12Z", true},
    {"GuessedDayAtAnotherTime", kTimeAlone, "GPSTimeStamp", "2020-01-01T23:11:13Z", false},
    {"FewerDigitsOfPosition", kPlace, "GPSLatitude", "60,8.80N", true},
    {"MoreDigitsOfPosition", kPlace, "GPSLatitude", "60,8.8023333N", true},
    {"SecondsOfPosition", kPlace, "GPSLatitude", "60,8,48N", true},
    {"OtherPosition", kPlace, "GPSLatitude", "60,8.81N", false},
    {"OtherHemisphere", kPlace, "GPSLatitude", "60,8.80S", false},
    {"NoPosition", kPlace, "GPSLatitude", "60.1467N", false},
    {"EqualRationals", kThird, "ExposureTime", "2/6", true},
    {"RoundedDecimal", kThird, "ExposureTime", "0.3333", true},
    {"OtherDecimal", kThird, "ExposureTime", "0.334", false},
    {"OtherRational", kThird, "ExposureTime", "3334/10000", false},
    {"HugeRational", kThird, "ExposureTime", "9223372036854775807/-9223372036854775808", false},
    {"BlanksInTexts", {GPS(0x12, kAscii, "WGS-84   \0"s)}, "GPSMapDatum", "WGS-84", true},
    {"MarksForLetters", kMarks, "description", "x-default=caf\xC3\xA9 \xC3\xA9\xC3\xA9", true},
    {"MarksForBytes", {Main(0x10E, kAscii, "caf??\0"s)}, "description", "x-default=caf\xC3\xA9", true},
    {"MarkForALetterOfAscii", kMarks, "description", "x-default=cafe ee", false},
    {"DefaultAmongLanguages", kMarks, "description", "de=Haus | x-default=caf\xC3\xA9 ??", true},
    {"Names", kNames, "creator", "A | B", true},
    {"NamesInOneItem", kNames, "creator", "A; B", true},
    {"OtherOrderOfNames", kNames, "creator", "B | A", false},
    {"Number", {Main(0x112, kShort, Shorts({6}))}, "Orientation", "06", true},
    {"OtherNumber", {Main(0x112, kShort, Shorts({6}))}, "Orientation", "8", false},
    {"Word", {Main(0x112, kShort, Shorts({6}))}, "Orientation", "top", false},
    {"FewerItems", {Exif(0x8827, kShort, Shorts({100, 200}))}, "ISOSpeedRatings", "100", false},
    {"FlashInOtherLetters",
     {Exif(0x9209, kShort, Shorts({1}))},
     "Flash",
     "exif:Fired=true | exif:Return=0 | exif:Mode=0 | exif:Function=FALSE | exif:RedEyeMode=False",
     true},
    {"OtherFlash",
     {Exif(0x9209, kShort, Shorts({1}))},
     "Flash",
     "exif:Fired=False | exif:Return=0 | exif:Mode=0 | exif:Function=False | exif:RedEyeMode=False",
     false},
    {"NothingInTheFields", {}, "Orientation", "8", true},
};
INSTANTIATE_TEST_SUITE_P(All, ExifAgreementTest, testing::ValuesIn(kAgreements),
                         [](const auto& test) { return test.param.mName; });

// ---- the table

TEST(ExifTableTest, NamesEachPropertyOnceAndNoFieldTwiceInOneNamespace) {
    std::set<std::pair<std::string_view, std::string_view>> properties;
    std::set<std::tuple<TiffDirectory, std::uint16_t, std::string_view>> fields;
    std::set<std::uint16_t> companions;
    for (const ExifRow& row : ExifRows()) {
        EXPECT_TRUE(properties.emplace(row.mNamespace, row.mProperty).second) << row.mProperty;
        EXPECT_TRUE(fields.emplace(row.mDirectory, row.mTag, row.mNamespace).second) << row.mProperty;
        EXPECT_TRUE(MirrorsExif(row.mNamespace, row.mProperty));
        EXPECT_FALSE((row.mFlags & kExifRow_Structural) != 0 && (row.mFlags & kExifRow_MakesBlock) != 0);
        EXPECT_LE(row.mCount.mLeast, row.mCount.mMost);
    }
    EXPECT_FALSE(MirrorsExif("http://ns.adobe.com/tiff/1.0/", "Rating"));
    EXPECT_FALSE(MirrorsExif("http://ns.adobe.com/exif/1.0/", "Make"));
}

TEST(ExifTableTest, KnowsWhatIsNeverWrittenAndWhatMakesABlock) {
    for (const char* const name : {"ImageWidth", "Compression", "BitsPerSample", "PixelXDimension", "ExifVersion"}) {
        EXPECT_TRUE(IsStructural(Row(name).mNamespace, name)) << name;
    }
    for (const char* const name : {"Orientation", "DateTimeOriginal", "GPSLatitude", "GPSLongitude"}) {
        EXPECT_TRUE(MakesNewExif(Row(name).mNamespace, name)) << name;
        EXPECT_FALSE(IsStructural(Row(name).mNamespace, name)) << name;
    }
    for (const char* const name : {"creator", "description", "rights", "DateCreated", "Make"}) {
        EXPECT_FALSE(MakesNewExif(Row(name).mNamespace, name)) << name;
    }
}

/// Bytes of any kind in fields of any type: nothing is read beyond them, and what is said can be XMP.
TEST(ExifReadingTest, SaysOnlyWhatXMLCarriesOfRandomBytes) {
    std::mt19937 random(20260501);
    const std::vector<TiffType> types = {kByte,  kAscii,     kShort, kLong,   kRational, kSByte,  kUndefined, kSShort,
                                         kSLong, kSRational, kFloat, kDouble, kLong8,    kSLong8, kUTF8};
    std::size_t said = 0;
    for (int round = 0; round < 60; ++round) {
        for (const ExifRow& row : ExifRows()) {
            std::vector<TiffField> made;
            const auto add = [&](TiffDirectory directory, std::uint16_t tag, TiffType type) {
                std::string bytes(random() % 40 / TiffTypeBytes(type) * TiffTypeBytes(type), '\0');
                for (char& byte : bytes) {
                    byte = static_cast<char>(random() % 4 == 0 ? random() % 4 : random());
                }
                made.push_back(Field(directory, tag, type, bytes));
            };
            add(row.mDirectory, row.mTag, round % 2 == 0 ? row.mType : types[random() % types.size()]);
            add(row.CompanionDirectory(), row.mCompanions[0], kAscii);
            const TiffFields fields = Fields(std::move(made), round % 3 == 0 ? ByteOrder::kBig : ByteOrder::kLittle);
            for (const NativeValue& value : ExifValues(fields)) {
                ++said;
                EXPECT_TRUE(ExifAgrees(fields, value)) << value.mProperty << ": " << ItemsText(value.mItems);
                for (const NativeItem& item : value.mItems) {
                    const bool isClean = std::none_of(item.mText.begin(), item.mText.end(), [](char c) {
                        return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
                    });
                    EXPECT_TRUE(isClean) << value.mProperty;
                }
            }
        }
    }
    EXPECT_GT(said, 1000U);
}

}  // namespace
}  // namespace zephmetadata::media
