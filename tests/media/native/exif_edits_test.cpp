#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif_fixture.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;
using enum TiffType;

MirrorChange Change(std::string_view property, const char* text) {
    const ExifRow& row = Row(property);
    return {row.mNamespace, row.mProperty, text == nullptr ? std::nullopt : std::optional(Value(property, text))};
}

/// A stream with what it holds.
struct Stream {
    std::string mBytes;
    TiffFields mFields;

    explicit Stream(std::string bytes) : mBytes(std::move(bytes)), mFields(ReadTiff(MemorySource(mBytes))) {}
    /// The stream that edits make of this one.
    void Apply(const std::vector<TiffEdit>& edits) {
        const MemorySource source(mBytes);
        const auto plan = PlanTiffEdits(source, edits);
        ASSERT_TRUE(plan);
        *this = Stream(Carried(*plan, source).value_or(std::string{}));
    }
};

struct Editing {
    const char* mName;
    std::vector<TiffField> mFields;
    std::vector<std::pair<const char*, const char*>> mChanges;  // a null text removes
    std::vector<TiffEdit> mEdits;
};

class ExifEditingTest : public testing::TestWithParam<Editing> {};

TEST_P(ExifEditingTest, EditsTheFieldsBehindThePropertiesAndNoOther) {
    std::vector<MirrorChange> changes;
    for (const auto& [property, text] : GetParam().mChanges) {
        changes.push_back(Change(property, text));
    }
    std::vector<RefusedProperty> refused;
    EXPECT_EQ(ExifEdits(Fields(GetParam().mFields), changes, &refused), GetParam().mEdits);
    EXPECT_TRUE(refused.empty());
}

constexpr TiffDirectory kMain = TiffDirectory::kMain;
constexpr TiffDirectory kExif = TiffDirectory::kExif;
constexpr TiffDirectory kGPS = TiffDirectory::kGPS;

const std::string kDate = "2020:01:02 03:04:05\0"s;
const TiffField kOriginal = Exif(0x9003, kAscii, kDate);
const TiffField kZone = Exif(0x9011, kAscii, "+03:00\0"s);
const TiffField kFraction = Exif(0x9291, kAscii, "50\0"s);
const TiffField kNorth = GPS(1, kAscii, "N\0"s);
const TiffField kLatitude = GPS(2, kRational, Longs({60, 1, 8, 1, 4814, 100}));
const TiffField kGPSVersion = GPS(0, kByte, "\2\3\0\0"s);

const std::vector<Editing> kEditings = {
    {"NewText", {}, {{"Make", "Caf\xC3\xA9"}}, {{kMain, 0x10F, kAscii, "Caf\xC3\xA9\0"s}}},
    {"TextOfTypeUTF8", {Main(0x10F, kUTF8, "A\0"s)}, {{"Make", "B"}}, {{kMain, 0x10F, kUTF8, "B\0"s}}},
    {"TextThatIsThere", {GPS(0x12, kAscii, "WGS-84   \0"s)}, {{"GPSMapDatum", "WGS-84"}}, {}},
    {"DefaultLanguageAlone", {}, {{"description", "de=Haus | x-default=House"}}, {{kMain, 0x10E, kAscii, "House\0"s}}},
    {"BlankText", {Main(0x10F, kAscii, "A\0"s)}, {{"Make", " "}}, {{kMain, 0x10F, kAscii, ""}}},
    {"Creators", {}, {{"creator", "A | B; C | \"D\" E"}}, {{kMain, 0x13B, kAscii, "A; \"B; C\"; \"\"\"D\"\" E\"\0"s}}},
    {"PhotographerAndEditor", {}, {{"rights", "x-default=P\nE"}}, {{kMain, 0x8298, kAscii, "P\0E\0"s}}},
    {"AsciiComment", {}, {{"UserComment", "x-default=abc"}}, {{kExif, 0x9286, kUndefined, "ASCII\0\0\0abc"s}}},
    {"Comment", {}, {{"UserComment", "x-default=\xC3\xA9"}}, {{kExif, 0x9286, kUndefined, "UNICODE\0\0\xE9"s}}},
    {"Integer", {Main(0x112, kLong, Longs({1}))}, {{"Orientation", "6"}}, {{kMain, 0x112, kShort, "\0\6"s}}},
    {"Several", {}, {{"SubjectArea", "1 | 2 | 3"}}, {{kExif, 0x9214, kShort, Shorts({1, 2, 3})}}},
    {"RationalAsWritten", {}, {{"FNumber", "162/20"}}, {{kExif, 0x829D, kRational, Longs({162, 20})}}},
    {"Decimal", {}, {{"FNumber", "8.1"}}, {{kExif, 0x829D, kRational, Longs({81, 10})}}},
    {"WholeForRational", {}, {{"FNumber", "8"}}, {{kExif, 0x829D, kRational, Longs({8, 1})}}},
    {"NegativeDecimal", {}, {{"ExposureBiasValue", "-0.50"}}, {{kExif, 0x9204, kSRational, Longs({-1, 2})}}},
    {"SameRational", {Exif(0x829D, kRational, Longs({810, 100}))}, {{"FNumber", "8.1"}}, {}},
    {"RationalBeyond32Bits", {}, {{"FNumber", "42949672960/8589934592"}}, {{kExif, 0x829D, kRational, Longs({5, 1})}}},
    {"LensInOneText",
     {},
     {{"LensInfo", "24/1 70/1 0/0 0/0"}},
     {{kExif, 0xA432, kRational, Longs({24, 1, 70, 1, 0, 0, 0, 0})}}},
    {"Flash",
     {},
     {{"Flash", "exif:Fired=True | exif:Mode=3 | exif:RedEyeMode=True"}},
     {{kExif, 0x9209, kShort, Shorts({0x59})}}},
    {"DateWithoutMore",
     {},
     {{"DateTimeOriginal", "2020-01-02T03:04"}},
     {{kExif, 0x9003, kAscii, "2020:01:02 03:04:00\0"s}}},
    {"DateOfADay", {}, {{"DateCreated", "2020-01-02"}}, {{kExif, 0x9003, kAscii, "2020:01:02   :  :  \0"s}}},
    {"DateWithZoneAndFraction",
     {kOriginal},
     {{"DateTimeOriginal", "2020-01-02T03:04:05.007-04:30"}},
     {{kExif, 0x9011, kAscii, "-04:30\0"s}, {kExif, 0x9291, kAscii, "007\0"s}}},
    {"DateThatLosesBoth",
     {kOriginal, kZone, kFraction},
     {{"DateTimeOriginal", "2021-01-02T03:04:05"}},
     {{kExif, 0x9003, kAscii, "2021:01:02 03:04:05\0"s}, {kExif, 0x9011, kAscii, ""}, {kExif, 0x9291, kAscii, ""}}},
    {"DateInItsOwnForm",
     {Exif(0x9003, kAscii, "2020/01/02 03:04:05"s)},
     {{"DateTimeOriginal", "2020-01-02T03:04:05Z"}},
     {{kExif, 0x9011, kAscii, "+00:00\0"s}}},
    {"RemovedDate",
     {kOriginal, kZone, kFraction, Exif(0x9004, kAscii, kDate)},
     {{"DateTimeOriginal", nullptr}},
     {{kExif, 0x9003, kAscii, ""}, {kExif, 0x9011, kAscii, ""}, {kExif, 0x9291, kAscii, ""}}},
    {"SharedField",
     {},
     {{"DateCreated", "2021-01-02"}, {"DateTimeOriginal", "2020-01-02T03:04:05"}},
     {{kExif, 0x9003, kAscii, kDate}}},
    {"ZoneOfTheModification",
     {},
     {{"ModifyDate", "2020-01-02T03:04:05+01:00"}},
     {{kMain, 0x132, kAscii, kDate}, {kExif, 0x9010, kAscii, "+01:00\0"s}}},
    {"NewPosition",
     {},
     {{"GPSLatitude", "48,12,36S"}},
     {{kGPS, 1, kAscii, "S\0"s}, {kGPS, 2, kRational, Longs({48, 1, 12, 1, 36, 1})}, {kGPS, 0, kByte, "\2\3\0\0"s}}},
    {"HalfAMinute",
     {kGPSVersion},
     {{"GPSLatitude", "37,25.5N"}},
     {{kGPS, 1, kAscii, "N\0"s}, {kGPS, 2, kRational, Longs({37, 1, 255, 10, 0, 1})}}},
    {"OtherHemisphere",
     {kGPSVersion, kNorth, kLatitude},
     {{"GPSLatitude", "60,8.80233S"}},
     {{kGPS, 1, kAscii, "S\0"s}}},
    {"MoreDigitsOfTheSamePosition", {kGPSVersion, kNorth, kLatitude}, {{"GPSLatitude", "60,8.8023333N"}}, {}},
    {"FewerDigitsOnPurpose",
     {kGPSVersion, kNorth, kLatitude},
     {{"GPSLatitude", "60,8.8N"}},
     {{kGPS, 2, kRational, Longs({60, 1, 88, 10, 0, 1})}}},
    {"RemovedPosition",
     {kGPSVersion, kNorth, kLatitude},
     {{"GPSLatitude", nullptr}},
     {{kGPS, 2, kAscii, ""}, {kGPS, 1, kAscii, ""}}},
    {"TimeOfPosition",
     {kGPSVersion},
     {{"GPSTimeStamp", "2020-01-01T00:30:12.5+02:00"}},
     {{kGPS, 7, kRational, Longs({22, 1, 30, 1, 125, 10})}, {kGPS, 0x1D, kAscii, "2019:12:31\0"s}}},
    {"Structural", {Main(0x100, kLong, Longs({100}))}, {{"ImageWidth", "200"}, {"ImageLength", nullptr}}, {}},
    {"RemovedWithoutBeingThere", {}, {{"Make", nullptr}, {"GPSLatitude", nullptr}}, {}},
};
INSTANTIATE_TEST_SUITE_P(All, ExifEditingTest, testing::ValuesIn(kEditings),
                         [](const auto& test) { return test.param.mName; });

TEST(ExifEditsTest, RefusesWhatExifCannotCarry) {
    const std::vector<std::pair<const char*, const char*>> changes = {
        {"Orientation", "up"},
        {"Orientation", "65536"},
        {"Orientation", "-1"},
        {"Orientation", "6.5"},
        {"FNumber", "wide"},
        {"FNumber", "-1/2"},
        {"FNumber", "8,1"},
        {"FNumber", "4294967296"},
        {"FNumber", "1/2/3"},
        {"FNumber", "."},
        {"SubjectArea", "1"},
        {"LensSpecification", "1/1 | 2/1"},
        {"LensInfo", "24-70mm f/2.8"},
        {"DateTimeOriginal", "spring 2020"},
        {"DateTimeOriginal", "2021-02-29"},
        {"DateTimeOriginal", "2020-01-02T25:00:00"},
        {"GPSTimeStamp", "2020-01-02"},
        {"GPSLatitude", "48.5"},
        {"GPSLatitude", "91,0,0N"},
        {"GPSLatitude", "48,60,0N"},
        {"GPSLatitude", "48,12,36E"},
        {"GPSLatitude", "48N"},
        {"GPSLatitude", "-48,12,36N"},
        {"GPSVersionID", "2.3"},
        {"GPSVersionID", "2.3.0.300"},
        {"Flash", "exif:Fired=perhaps"},
        {"Flash", "exif:Mode=4"},
        {"CFAPattern", "exif:Columns=2 | exif:Rows=1 | exif:Values[1]=1"},
        {"OECF", "exif:Columns=1"},
        {"FileSource", "256"}};
    const TiffFields fields = Fields({Main(0x112, kShort, Shorts({1})), kOriginal, kNorth, kLatitude});
    for (const auto& [property, text] : changes) {
        const std::vector<MirrorChange> change = {Change(property, text)};
        std::vector<RefusedProperty> refused;
        EXPECT_EQ(ExifEdits(fields, change, &refused), std::vector<TiffEdit>{}) << property << " " << text;
        const std::vector<RefusedProperty> expected = {{change[0].mNamespace, change[0].mProperty}};
        EXPECT_EQ(refused, expected) << property << " " << text;
    }
}

TEST(ExifEditsTest, MakesABlockOnlyForWhatOthersLookForNowhereElse) {
    const std::vector<MirrorChange> changes = {Change("Orientation", "6"), Change("Make", "M"),
                                               Change("description", "x-default=D")};
    const std::vector<TiffEdit> expected = {{kMain, 0x112, kShort, "\0\6"s}};
    EXPECT_EQ(ExifEdits({}, changes), expected);
    const std::vector<MirrorChange> others = {Change("Make", "M"), Change("DateCreated", "2020-01-02")};
    EXPECT_TRUE(ExifEdits({}, others).empty());
}

TEST(ExifEditsTest, RefusesAValueOfAnotherForm) {
    MirrorChange change = Change("Make", "M");
    change.mValue->mForm = ValueForm::kBag;
    std::vector<RefusedProperty> refused;
    EXPECT_TRUE(ExifEdits(Fields({}), std::vector{change}, &refused).empty());
    EXPECT_EQ(refused.size(), 1U);
}

// ---- every row, random values: what was set is said

class Values {
public:
    explicit Values(unsigned seed) : mRandom(seed) {}

    std::string Of(const ExifRow& row) {
        const std::string_view codec = row.mCodec->mName;
        if (codec == "coordinate") {
            return Coordinate(row.mTag == 2 || row.mTag == 0x14);
        }
        if (codec == "date" || codec == "time of the position") {
            return Date(codec == "date");
        }
        const ExifCount count = row.mForm == ValueForm::kSeq ? row.mCount : ExifCount{1, 1};
        std::string text;
        for (std::size_t i = Below(2) == 0 ? count.mLeast : std::min<std::size_t>(count.mMost, 4); i > 0; --i) {
            text += (text.empty() ? "" : " | ") + Item(row, codec);
        }
        return text;
    }

private:
    std::size_t Below(std::size_t end) { return mRandom() % end; }

    std::string Padded(std::size_t value, std::size_t size) {
        const std::string text = std::to_string(value);
        return std::string(size - std::min(size, text.size()), '0') + text;
    }
    std::string Digits(std::size_t most) {
        std::string text(1 + Below(most), '0');
        std::generate(text.begin(), text.end(), [&] { return static_cast<char>('0' + Below(10)); });
        text.back() = static_cast<char>('1' + Below(9));
        return text;
    }
    std::string Ratio(bool isSigned) {
        const std::string sign = isSigned && Below(2) == 0 ? "-" : "";
        return sign + std::to_string(Below(2147483648)) + "/" + std::to_string(Below(2147483648));
    }
    std::string Word() {
        constexpr std::string_view kLetters[] = {"a",  "Z", " b", "\xC3\xA9", "\xE3\x81\x82", "\xF0\x9F\x98\x80",
                                                 "\"", "?", "'"};
        std::string text = "w";
        for (std::size_t i = Below(20); i > 0; --i) {
            text += kLetters[Below(std::size(kLetters))];
        }
        return text;
    }
    std::string Date(bool isLocal) {
        std::string text = std::to_string(1900 + Below(300)) + "-" + Padded(1 + Below(12), 2) + "-" +
                           Padded(1 + Below(28), 2) + "T" + Padded(Below(24), 2) + ":" + Padded(Below(60), 2) + ":" +
                           Padded(Below(60), 2);
        text += Below(2) == 0 ? "." + Digits(isLocal ? 9 : 7) : "";
        if (!isLocal) {
            return text + "Z";
        }
        return text + (Below(2) == 0 ? "" : "+0" + std::to_string(1 + Below(9)) + ":30");
    }
    std::string Coordinate(bool isLatitude) {
        const std::string letter(1, (isLatitude ? "NS" : "EW")[Below(2)]);
        const std::string place = std::to_string(Below(isLatitude ? 90 : 180)) + "," + std::to_string(Below(60));
        return place + (Below(3) == 0 ? "," + std::to_string(Below(60)) : "." + Digits(7)) + letter;
    }
    std::string Structure(std::uint16_t tag) {
        switch (tag) {
            case 0x9209:
                return "exif:Fired=True | exif:Return=" + std::to_string(Below(4)) +
                       " | exif:Mode=" + std::to_string(Below(4)) + " | exif:Function=False | exif:RedEyeMode=True";
            case 0xA302:
                return "exif:Columns=1 | exif:Rows=2 | exif:Values[1]=" + std::to_string(Below(256)) +
                       " | exif:Values[2]=7";
            case 0xA40B:
                return "exif:Columns=1 | exif:Rows=2 | exif:Settings[1]=" + Word() + " | exif:Settings[2]=" + Word();
            case 0xA462: {
                std::string text;
                for (const char* const name :
                     {"TotalExposurePeriod", "SumOfExposureTimesOfAll", "SumOfExposureTimesOfUsed",
                      "MaxExposureTimesOfAll", "MaxExposureTimesOfUsed", "MinExposureTimesOfAll",
                      "MinExposureTimesOfUsed"}) {
                    text += "exifEX:" + std::string(name) + "=" + Ratio(false) + " | ";
                }
                return text + "exifEX:NumberOfSequences=2 | exifEX:NumberOfImagesInSequences=3 | exifEX:Values[1]=" +
                       Ratio(false);
            }
            default:
                return "exif:Columns=2 | exif:Rows=1 | exif:Names[1]=" + Word() + " | exif:Names[2]=" + Word() +
                       " | exif:Values[1]=" + Ratio(tag == 0x8828) + " | exif:Values[2]=1/3";
        }
    }
    std::string Item(const ExifRow& row, std::string_view codec) {
        if (row.mForm == ValueForm::kStruct) {
            return Structure(row.mTag);
        }
        if (codec == "dotted version") {
            return "2." + std::to_string(Below(10)) + ".0.0";
        }
        if (codec == "rationals in one text") {
            return Ratio(false) + " " + Ratio(false) + " " + Ratio(false) + " " + Ratio(false);
        }
        if (codec == "rational") {
            return Ratio(row.mType == kSRational);
        }
        const bool isNumber = codec.starts_with("integer");
        return isNumber ? std::to_string(Below(TiffTypeBytes(row.mType) == 1 ? 256 : 65536)) : Word();
    }

    std::mt19937 mRandom;
};

TEST(ExifEditsTest, WhatWasSetIsSaidInEitherByteOrder) {
    Values values(20260501);
    std::size_t set = 0;
    for (int round = 0; round < 40; ++round) {
        const std::vector<TiffEdit> first = {{kExif, 0x9000, kUndefined, "0232"}};
        Stream stream(NewTiff(first, round % 2 == 0 ? ByteOrder::kBig : ByteOrder::kLittle));
        const TiffFields& fields = stream.mFields;
        for (const ExifRow& row : ExifRows()) {
            if ((row.mFlags & kExifRow_Structural) != 0) {
                continue;
            }
            const MirrorChange change = Change(row.mProperty, values.Of(row).c_str());
            std::vector<RefusedProperty> refused;
            const auto edits = ExifEdits(fields, std::vector{change}, &refused);
            ASSERT_TRUE(refused.empty()) << row.mProperty << ": " << ItemsText(change.mValue->mItems);
            stream.Apply(edits);
            ASSERT_TRUE(ExifAgrees(fields, *change.mValue))
                << row.mProperty << ": " << ItemsText(change.mValue->mItems);
            ASSERT_EQ(Said(fields, row.mProperty), ItemsText(change.mValue->mItems)) << row.mProperty;
            ASSERT_TRUE(ExifEdits(fields, std::vector{change}).empty()) << row.mProperty;
            ++set;
        }
        // All of it again away, and nothing is left but what is never written.
        for (const ExifRow& row : ExifRows()) {
            stream.Apply(ExifEdits(fields, std::vector{Change(row.mProperty, nullptr)}));
        }
        ASSERT_EQ(Said(fields, "ExifVersion"), "0232");
        ASSERT_LE(ExifValues(fields).size(), 1U);
    }
    EXPECT_GT(set, 4000U);
}

TEST(ExifEditsTest, LeavesOtherFieldsAlone) {
    Values values(7);
    for (const ExifRow& row : ExifRows()) {
        std::vector<TiffField> all;
        for (const ExifRow& other : ExifRows()) {
            const bool isOwn = other.mDirectory == row.mDirectory && other.mTag == row.mTag;
            if (!isOwn) {
                all.push_back(Field(other.mDirectory, other.mTag, kUndefined, "\x01\x02\x03"s));
            }
        }
        const auto touches = [&](const TiffEdit& edit) {
            const bool isCompanion =
                edit.mDirectory == row.CompanionDirectory() && edit.mTag != 0 &&
                std::find(row.mCompanions.begin(), row.mCompanions.end(), edit.mTag) != row.mCompanions.end();
            return isCompanion || (edit.mDirectory == row.mDirectory && edit.mTag == row.mTag);
        };
        const auto edits = ExifEdits(Fields(all), std::vector{Change(row.mProperty, values.Of(row).c_str())});
        EXPECT_TRUE(std::all_of(edits.begin(), edits.end(), touches)) << row.mProperty;
    }
}

}  // namespace
}  // namespace zephmetadata::media
