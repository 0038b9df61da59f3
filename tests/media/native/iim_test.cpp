#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "media/native/iim/iim_edit.h"
#include "media/native/iim/iim_values.h"

namespace zephmetadata::media {

void PrintTo(const NativeValue& value, std::ostream* out) {
    *out << value.mProperty;
    for (const NativeItem& item : value.mItems) {
        *out << " [" << item.mName << "] " << item.mText;
    }
}

namespace {

using std::string_literals::operator""s;

constexpr const char* kCore = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
constexpr const char* kDC = "http://purl.org/dc/elements/1.1/";
constexpr const char* kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";
constexpr const char* kXMP = "http://ns.adobe.com/xap/1.0/";

std::string D(std::uint8_t number, std::string_view data) {
    return IIMDatasetBytes(2, number, data);
}
const std::string kUTF8 = IIMDatasetBytes(1, 90, "\x1B%G");
const std::string kLatin1 = IIMDatasetBytes(1, 90, "\x1B.A");
const std::string kGreek = IIMDatasetBytes(1, 90, "\x1B-F");
const std::string kVersion = D(0, "\0\4"s);
const std::string kPreview = D(202, "\xFF\xD8\xC3\xA9\xE9");

NativeValue Value(const char* nameSpace, const char* property, std::vector<std::string> items,
                  ValueForm form = ValueForm::kSimple) {
    NativeValue value{nameSpace, property, form, {}};
    for (std::string& item : items) {
        value.mItems.push_back({form == ValueForm::kLangAlt ? "x-default" : "", std::move(item)});
    }
    return value;
}
NativeValue City(std::string text) {
    return Value(kPhotoshop, "City", {std::move(text)});
}
NativeValue Created(std::string text) {
    return Value(kPhotoshop, "DateCreated", {std::move(text)});
}
NativeValue Keywords(std::vector<std::string> items) {
    return Value(kDC, "subject", std::move(items), ValueForm::kBag);
}
NativeValue Subjects(std::vector<std::string> items) {
    return Value(kCore, "SubjectCode", std::move(items), ValueForm::kBag);
}
NativeValue Title(std::string text) {
    return Value(kDC, "title", {std::move(text)}, ValueForm::kLangAlt);
}

struct ReadCase {
    const char* mName;
    std::string mStream;
    std::vector<NativeValue> mValues;
    bool mIsWhole = true;
};
class IIMReadTest : public testing::TestWithParam<ReadCase> {};

TEST_P(IIMReadTest, SaysWhatTheDatasetsSay) {
    const IIMRecords records = ReadIIM(GetParam().mStream);
    EXPECT_EQ(records.mIsWhole, GetParam().mIsWhole);
    EXPECT_EQ(IIMValues(records), GetParam().mValues);
    for (const NativeValue& value : GetParam().mValues) {
        EXPECT_TRUE(HasIIM(records, value.mNamespace, value.mProperty)) << value.mProperty;
        EXPECT_TRUE(IIMAgrees(records, value)) << value.mProperty;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Streams, IIMReadTest,
    testing::Values(ReadCase{"Nothing", "", {}}, ReadCase{"Padding", D(90, "Oslo") + "\0\0\0"s, {City("Oslo")}},
                    ReadCase{"Garbage", D(90, "Oslo") + "\0\1"s, {City("Oslo")}, false},
                    ReadCase{"CutData", D(90, "Oslo") + D(101, "Norway").substr(0, 9), {City("Oslo")}, false},
                    ReadCase{"CutTag", D(90, "Oslo") + "\x1C\2", {City("Oslo")}, false},
                    ReadCase{"Extended", "\x1C\2\x5A\x80\4\0\0\0\4Oslo"s, {City("Oslo")}},
                    ReadCase{"ExtendedTooFar", "\x1C\2\x5A\x80\x08\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFFOslo"s, {}, false},
                    ReadCase{"ExtendedTooLong", "\x1C\2\x5A\xFF\xFF\0\0\0\4Oslo"s, {}, false},
                    ReadCase{"OtherRecord", IIMDatasetBytes(3, 90, "Oslo"), {}},
                    ReadCase{"Empty", D(90, "") + D(95, " ") + D(25, ""), {}},
                    ReadCase{"Cleaned", D(90, "A\rB\r\nC\1D \0"s), {City("A\nB\nC D")}},
                    ReadCase{"Lists",
                             D(25, "a") + D(80, "x") + D(25, "b") + D(80, "y"),
                             {Keywords({"a", "b"}), Value(kDC, "creator", {"x", "y"}, ValueForm::kSeq)}},
                    ReadCase{"FirstOfSingle", D(90, "Oslo") + D(90, "Bergen"), {City("Oslo")}},
                    ReadCase{
                        "Codes",
                        D(4, "001:Current") + D(12, "IPTC:01002000:arts::") + D(12, "01003000") + D(12, "IPTC:x:y"),
                        {Value(kCore, "IntellectualGenre", {"Current"}), Subjects({"01002000", "01003000"})}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

INSTANTIATE_TEST_SUITE_P(
    Charsets, IIMReadTest,
    testing::Values(ReadCase{"DeclaredUTF8", kUTF8 + D(90, "Troms\xC3\xB8"), {City("Tromsø")}},
                    ReadCase{"DeclaredUTF8Cut", kUTF8 + D(90, "Troms\xC3"), {City("Troms")}},
                    ReadCase{"DeclaredUTF8ButIsNot", kUTF8 + D(90, "G\xF6teborg"), {City("Göteborg")}},
                    ReadCase{"DeclaredLatin1", kLatin1 + D(90, "Troms\xC3\xB8"), {City("TromsÃ¸")}},
                    ReadCase{"DeclaredOther",
                             kGreek + D(90, "\xC1\xE8") + D(101, "Greece"),
                             {Value(kPhotoshop, "Country", {"Greece"})}},
                    ReadCase{"UndeclaredUTF8", D(90, "Troms\xC3\xB8"), {City("Tromsø")}},
                    ReadCase{"UndeclaredLatin1", D(90, "Troms\xF8"), {City("Tromsø")}},
                    ReadCase{"UndeclaredEach",
                             D(90, "G\xF6teborg") + D(95, "K\xC3\xA5lltorp"),
                             {City("Göteborg"), Value(kPhotoshop, "State", {"Kålltorp"})}},
                    ReadCase{"Windows", D(90, "\x80 \x93x\x94"), {City("€ “x”")}},
                    ReadCase{"Overlong", D(90, "\xC0\xAF"), {City("À¯")}},
                    ReadCase{"Surrogate", D(90, "\xED\xA0\x80"), {City("í\xC2\xA0€")}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

INSTANTIATE_TEST_SUITE_P(
    Dates, IIMReadTest,
    testing::Values(
        ReadCase{"Date", D(55, "20190506"), {Created("2019-05-06")}},
        ReadCase{"Time", D(55, "20190506") + D(60, "070809+0200"), {Created("2019-05-06T07:08:09+02:00")}},
        ReadCase{"UTC", D(55, "20190506") + D(60, "070809+0000"), {Created("2019-05-06T07:08:09Z")}},
        ReadCase{"NoZone", D(55, "20190506") + D(60, "070809"), {Created("2019-05-06T07:08:09")}},
        ReadCase{
            "Digitized", D(62, "20190506") + D(63, "070809"), {Value(kXMP, "CreateDate", {"2019-05-06T07:08:09"})}},
        ReadCase{"Month", D(55, "20190500"), {Created("2019-05")}},
        ReadCase{"Year", D(55, "20190000") + D(60, "070809"), {Created("2019")}},
        ReadCase{"DayOfNoMonth", D(55, "20190006") + D(60, "070809"), {Created("2019")}},
        ReadCase{"Separators", D(55, "2019:05:06") + D(60, "07:08:09+02:00"), {Created("2019-05-06T07:08:09+02:00")}},
        ReadCase{"BadTime", D(55, "20190506") + D(60, "SE"), {Created("2019-05-06")}},
        ReadCase{"BadDates", D(55, "00000000") + D(62, "20191301"), {}},
        ReadCase{"TimeAlone", D(60, "070809+0200"), {}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

struct AgreeCase {
    const char* mName;
    std::string mStream;
    NativeValue mXMP;
    bool mAgrees;
};
class IIMAgreeTest : public testing::TestWithParam<AgreeCase> {};

TEST_P(IIMAgreeTest, SaysTheSameAsFarAsItGoes) {
    EXPECT_EQ(IIMAgrees(ReadIIM(GetParam().mStream), GetParam().mXMP), GetParam().mAgrees);
}

const std::string kLong(100, 'x');
const NativeValue kTwoLanguages{kDC, "title", ValueForm::kLangAlt, {{"de-DE", "Stadt"}, {"x-default", "Town"}}};

INSTANTIATE_TEST_SUITE_P(
    Values, IIMAgreeTest,
    testing::Values(
        AgreeCase{"Other", D(90, "Oslo"), City("Bergen"), false}, AgreeCase{"Missing", "", City("Bergen"), false},
        AgreeCase{"MissingEmpty", "", City(" "), true},
        AgreeCase{"NotCarried", "", Value(kCore, "IntellectualGenre", {"Own"}), true},
        AgreeCase{"OtherGenre", D(4, "001:Current"), Value(kCore, "IntellectualGenre", {"Own"}), false},
        AgreeCase{"NoPlace", D(90, "Oslo"), Value(kXMP, "Label", {"Red"}), true},
        AgreeCase{"Cut", D(90, kLong.substr(0, 32)), City(kLong), true},
        AgreeCase{"CutTooEarly", D(90, kLong.substr(0, 31)), City(kLong), false},
        AgreeCase{"CutLater", D(90, kLong.substr(0, 50)), City(kLong), true},
        AgreeCase{"TooLongInIIM", D(90, kLong + "a"), City(kLong + "b"), false},
        AgreeCase{"CutCharacter", kUTF8 + D(90, std::string(31, 'x') + "\xC3"), City(std::string(31, 'x') + "ø"), true},
        AgreeCase{"Unmappable", D(90, "G\xF6teborg ?"), City("Göteborg Ω"), true},
        AgreeCase{"BothUnmappable", D(90, "\xCF\x9B"), City("Ω"), false},
        AgreeCase{"MappableInUTF8", kUTF8 + D(90, "?"), City("Ω"), false},
        AgreeCase{"LineEnds", D(120, "a\rb"), Value(kDC, "description", {"a\nb"}, ValueForm::kLangAlt), true},
        AgreeCase{"Language", D(5, "Town"), kTwoLanguages, true},
        AgreeCase{"OtherLanguage", D(5, "Stadt"), kTwoLanguages, false},
        AgreeCase{"BagOrder", D(25, "a") + D(25, "b"), Keywords({"b", "a"}), true},
        AgreeCase{"BagMore", D(25, "a"), Keywords({"b", "a"}), false},
        AgreeCase{"SeqOrder", D(80, "a") + D(80, "b"), Value(kDC, "creator", {"b", "a"}, ValueForm::kSeq), false},
        AgreeCase{"CodeIsWhole", D(10, "1"), Value(kPhotoshop, "Urgency", {"10"}), false},
        AgreeCase{"ZoneOnlyInIIM", D(55, "20190506") + D(60, "070809+0000"), Created("2019-05-06T07:08:09.5"), true},
        AgreeCase{"ZoneOnlyInXMP", D(55, "20190506") + D(60, "070800"), Created("2019-05-06T07:08-11:00"), true},
        AgreeCase{"OtherZone", D(55, "20190506") + D(60, "070809+0000"), Created("2019-05-06T07:08:09+01:00"), false},
        AgreeCase{"TimeOnlyInXMP", D(55, "20190506"), Created("2019-05-06T07:08:09"), false},
        AgreeCase{"OtherDay", D(55, "20190506"), Created("2019-05-07"), false}),
    [](const auto& instance) { return std::string(instance.param.mName); });

struct EditCase {
    const char* mName;
    std::string mStream;
    std::vector<NativeValue> mChanges;  // a value without items: removed
    std::optional<std::string> mResult;
};
class IIMEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(IIMEditTest, ChangesWhatWasAskedAlone) {
    std::vector<MirrorChange> changes;
    for (const NativeValue& value : GetParam().mChanges) {
        changes.push_back(
            {value.mNamespace, value.mProperty, value.mItems.empty() ? std::nullopt : std::optional(value)});
    }
    const std::optional<std::string> edited = EditedIIM(GetParam().mStream, changes);
    EXPECT_EQ(edited, GetParam().mResult);
    // A second time nothing is left to do.
    EXPECT_EQ(edited ? EditedIIM(*edited, changes) : std::nullopt, GetParam().mResult);
}

INSTANTIATE_TEST_SUITE_P(
    Streams, IIMEditTest,
    testing::Values(
        EditCase{"New", "", {City("Oslo"), Title("T")}, kUTF8 + kVersion + D(5, "T") + D(90, "Oslo")},
        EditCase{"NothingOfNothing", "", {Keywords({}), Value(kXMP, "Label", {"Red"})}, ""},
        EditCase{"Damaged", D(90, "Oslo") + "x", {City("Bergen")}, {}},
        EditCase{"Agrees", kVersion + D(90, "Oslo\r") + "\0"s, {City("Oslo")}, kVersion + D(90, "Oslo\r") + "\0"s},
        EditCase{"InPlace",
                 kVersion + D(105, "H") + D(90, "Oslo") + D(5, "T") + kPreview + IIMDatasetBytes(7, 10, "\1"),
                 {City("Bergen")},
                 kVersion + D(105, "H") + D(90, "Bergen") + D(5, "T") + kPreview + IIMDatasetBytes(7, 10, "\1")},
        EditCase{"InOrder",
                 IIMDatasetBytes(1, 0, "\0\4"s) + kVersion + D(5, "T") + D(105, "H") + IIMDatasetBytes(7, 10, "\1"),
                 {City("Oslo"), Created("2019-05"), Value(kDC, "description", {"x\ny"}, ValueForm::kLangAlt)},
                 IIMDatasetBytes(1, 0, "\0\4"s) + kVersion + D(5, "T") + D(55, "20190500") + D(90, "Oslo") +
                     D(105, "H") + D(120, "x\ry") + IIMDatasetBytes(7, 10, "\1")},
        EditCase{"VersionIsMade", D(90, "Oslo"), {City("Bergen")}, kVersion + D(90, "Bergen")},
        EditCase{"Removed",
                 kVersion + D(25, "a") + D(90, "Oslo") + D(25, "b") + D(55, "20190506") + D(60, "070809"),
                 {Keywords({}), Value(kPhotoshop, "DateCreated", {})},
                 kVersion + D(90, "Oslo")},
        EditCase{"Lists",
                 kVersion + D(25, "a") + D(90, "Oslo") + D(25, "b" + kLong),
                 {Keywords({"c", "b" + kLong, kLong})},
                 kVersion + D(25, "c") + D(25, "b" + kLong) + D(25, kLong.substr(0, 64)) + D(90, "Oslo")},
        EditCase{"Codes",
                 kVersion + D(12, "IPTC:01002000:arts::"),
                 {Subjects({"01003000", "01002000", "no code"}), Value(kCore, "IntellectualGenre", {"Feature"})},
                 kVersion + D(4, "005:Feature") + D(12, "IPTC:01003000:::") + D(12, "IPTC:01002000:arts::")},
        EditCase{"NotHeld", kVersion + D(10, "5"), {Value(kPhotoshop, "Urgency", {"10"})}, kVersion},
        EditCase{"Dates",
                 kVersion + D(55, "20190506") + D(60, "070809+0200") + D(62, "20190506") + D(63, "070809"),
                 {Created("2019-05-07"), Value(kXMP, "CreateDate", {"2019-05-06T10:00:01.5-03:30"})},
                 kVersion + D(55, "20190507") + D(62, "20190506") + D(63, "100001-0330")}),
    [](const auto& instance) { return std::string(instance.param.mName); });

const std::string kAllBytes = "\x81\xE9";  // and one that Windows-1252 leaves open
INSTANTIATE_TEST_SUITE_P(
    Charsets, IIMEditTest,
    testing::Values(
        EditCase{"UTF8", kUTF8 + kVersion + D(5, "\xE9"), {City("Ωx")}, kUTF8 + kVersion + D(5, "\xE9") + D(90, "Ωx")},
        EditCase{"ASCIIBecomesUTF8", kVersion + D(5, "T"), {City("ø")}, kUTF8 + kVersion + D(5, "T") + D(90, "ø")},
        EditCase{"UndeclaredUTF8", kVersion + D(5, "Ü"), {City("ø")}, kUTF8 + kVersion + D(5, "Ü") + D(90, "ø")},
        EditCase{"UndeclaredStays", kVersion + D(5, "\xE9"), {City("Oslo")}, kVersion + D(5, "\xE9") + D(90, "Oslo")},
        EditCase{"UndeclaredFits", kVersion + D(5, "\xE9"), {City("€ø")}, kVersion + D(5, "\xE9") + D(90, "\x80\xF8")},
        EditCase{"UndeclaredWouldMisread",
                 kVersion + D(5, "\xE9"),
                 {City("Ã¸")},
                 kUTF8 + kVersion + D(5, "\xC3\xA9") + D(90, "Ã¸")},
        EditCase{"UndeclaredConverts",
                 kVersion + D(5, kAllBytes) + kPreview,
                 {City("Ω")},
                 kUTF8 + kVersion + D(5, "\xC2\x81\xC3\xA9") + D(90, "Ω") + kPreview},
        EditCase{"UndeclaredOutgrows",
                 kVersion + D(5, std::string(64, '\xE9')),
                 {City("Ω")},
                 kVersion + D(5, std::string(64, '\xE9')) + D(90, "Ω")},
        EditCase{"Latin1Fits",
                 kLatin1 + kVersion + D(5, "\xE9"),
                 {City("Ã¸")},
                 kLatin1 + kVersion + D(5, "\xE9") + D(90, "\xC3\xB8")},
        EditCase{"Latin1Converts",
                 kLatin1 + kVersion + D(5, "\xC3\xA9"),
                 {City("Ω")},
                 kUTF8 + kVersion + D(5, "Ã©") + D(90, "Ω")},
        EditCase{"Latin1Outgrows",
                 kLatin1 + kVersion + D(5, std::string(64, '\xE9')),
                 {City("Ωø")},
                 kLatin1 + kVersion + D(5, std::string(64, '\xE9')) + D(90, "?\xF8")},
        EditCase{"UnknownBesideASCII",
                 kGreek + kVersion + D(5, "A") + D(90, "\xC1"),
                 {City("Ωx")},
                 kUTF8 + kVersion + D(5, "A") + D(90, "Ωx")},
        EditCase{"QuestionMarkInUTF8",
                 kVersion + D(5, "ø") + D(90, "?"),
                 {City("Ω"), Title("Я")},
                 kUTF8 + kVersion + D(5, "Я") + D(90, "Ω")},
        EditCase{"UnknownAndASCII",
                 kGreek + kVersion + D(5, "\xC1"),
                 {City("x")},
                 kGreek + kVersion + D(5, "\xC1") + D(90, "x")},
        EditCase{"Unknown", kGreek + kVersion + D(5, "\xC1"), {City("Ωx")}, std::nullopt},
        EditCase{"CutAtCharacter",
                 kUTF8 + kVersion,
                 {City(std::string(31, 'x') + "ø")},
                 kUTF8 + kVersion + D(90, std::string(31, 'x'))}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(IIMTest, EveryPropertyComesBackAsItWasWritten) {
    std::vector<MirrorChange> changes;
    for (const IIMRow& row : IIMRows()) {
        const bool isDate = row.mCarriage == IIMCarriage::kDate;
        const char* const text = isDate                                   ? "2019-05-06T07:08:09+02:00"
                                 : row.mCarriage == IIMCarriage::kGenre   ? "Analysis"
                                 : row.mCarriage == IIMCarriage::kSubject ? "01002000"
                                                                          : "5";
        const std::string name = row.mForm == ValueForm::kLangAlt ? "x-default" : "";
        changes.push_back(
            {row.mNamespace, row.mProperty, NativeValue{row.mNamespace, row.mProperty, row.mForm, {{name, text}}}});
    }
    const std::optional<std::string> stream = EditedIIM("", changes);
    ASSERT_TRUE(stream);
    const std::vector<NativeValue> values = IIMValues(ReadIIM(*stream));
    ASSERT_EQ(values.size(), changes.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], *changes[i].mValue);
    }
    for (MirrorChange& change : changes) {
        change.mValue.reset();
    }
    EXPECT_EQ(EditedIIM(*stream, changes), kUTF8 + kVersion);
}

TEST(IIMTest, CutsAndFlipsAreReadAsFarAsTheyGo) {
    const std::string stream =
        kUTF8 + kVersion + D(5, "T\xC3\xA9") + "\x1C\2\x5A\x80\4\0\0\0\4Oslo"s + D(55, "20190506");
    const std::vector<MirrorChange> changes = {{kPhotoshop, "City", City("Bergen")}};
    for (std::size_t at = 0; at < stream.size(); ++at) {
        const IIMRecords cut = ReadIIM(std::string_view(stream).substr(0, at));
        EXPECT_EQ(EditedIIM(cut.mBytes, changes).has_value(), cut.mIsWhole) << at;
        for (const char flip : {'\1', '\x80', '\xFF'}) {
            std::string flipped = stream;
            flipped[at] = static_cast<char>(flipped[at] ^ flip);
            const IIMRecords records = ReadIIM(flipped);
            const std::optional<std::string> edited = EditedIIM(flipped, changes);
            EXPECT_EQ(edited.has_value(), records.mIsWhole) << at;
            if (edited) {
                EXPECT_TRUE(ReadIIM(*edited).mIsWhole) << at;
                EXPECT_THAT(IIMValues(ReadIIM(*edited)), testing::Contains(City("Bergen"))) << at;
            }
        }
    }
}

}  // namespace
}  // namespace zephmetadata::media
