#include <algorithm>
#include <array>
#include <cmath>

#include "cli/cli_runner.h"

namespace cli {
namespace {

/// What another program reads from the files that zephmeta wrote.
class EndToEnd : public CliTest {
protected:
    void SetUp() override {
        if (RunProgram("/", "/usr/bin/env", {"exiftool", "-ver"}).mStatus != 0) {
            GTEST_SKIP() << "exiftool is not installed (Debian: libimage-exiftool-perl)";
        }
    }

    /// Tags with their groups, numbers as numbers.
    Json Tags(const std::string& file) const {
        const Arguments arguments = {"exiftool", "-json", "-G1", "-struct", "-a", "-n", At(file).string()};
        return Json::parse(RunProgram("/", "/usr/bin/env", arguments).mOutput).at(0);
    }
};

struct AcceptedRow {
    std::string_view mTag;  // or the beginning of some
    const char* mReason;
};

constexpr auto kAccepted = std::to_array<AcceptedRow>({
    {"System:File", "size, times and name of the file"},
    {"XMP-x:XMPToolkit", "names the program that wrote last"},
    {"XMP-xmp:MetadataDate", "every write is dated"},
    {"XMP-xmpMM:InstanceID", "every write makes an instance"},
    {"XMP-xmpMM:OriginalDocumentID", "is made where it is missing"},
    {"XMP-xmpMM:History", "looked at on its own"},
    {"XMP-dc:Title", "set"},
    {"XMP-dc:Subject", "set"},
    {"XMP-xmp:Rating", "set"},
    {"IPTC:", "the toolkit keeps the older block in step with XMP"},
    {"Photoshop:", "belongs to that block"},
    {"File:CurrentIPTCDigest", "belongs to that block"},
    {"Composite:", "made by the reader from the others"},
    {"ExifIFD:OffsetTime", "the zone of ModifyDate, which the toolkit drops where xmp:ModifyDate has none"},
});

bool IsAccepted(const std::string& tag) {
    return std::any_of(kAccepted.begin(), kAccepted.end(), [&](const auto& row) { return tag.starts_with(row.mTag); });
}

bool IsSame(const std::string& tag, const Json& before, const Json& after) {
    if (tag == "GPS:GPSLatitude" || tag == "GPS:GPSLongitude") {
        // Coordinates pass through XMP's text form, which the toolkit gives a thousandth of a minute.
        return std::fabs(before.get<double>() - after.get<double>()) < 0.001 / 60;
    }
    return before == after;
}

/// The compressed picture: everything from its first quantisation table on.
std::string Picture(const std::string& jpeg) {
    const std::size_t start = jpeg.find(std::string("\xff\xdb\0\x43", 4));
    return start == std::string::npos ? std::string() : jpeg.substr(start);
}

TEST_F(EndToEnd, AnEditChangesWhatItNamesAndNothingElse) {
    const Json before = Tags("harbour.jpg");
    ASSERT_EQ(Zephmeta({"set", "harbour.jpg", "dc:title=New", "--add", "dc:subject=pier", "xmp:Rating=2"}),
              (Outcome{0, "harbour.jpg: written\n", ""}));
    const Json after = Tags("harbour.jpg");

    for (const auto& [tag, value] : before.items()) {
        if (!IsAccepted(tag)) {
            ASSERT_TRUE(after.contains(tag)) << tag << " is gone";
            EXPECT_TRUE(IsSame(tag, value, after.at(tag))) << tag << ": " << value << " became " << after.at(tag);
        }
    }
    for (const auto& [tag, value] : after.items()) {
        EXPECT_TRUE(before.contains(tag) || IsAccepted(tag)) << tag << " is new: " << value;
    }
    EXPECT_EQ(after.at("XMP-dc:Title"), "New");
    EXPECT_EQ(after.at("XMP-dc:Title-de"), "Hafen im Morgengrauen");
    EXPECT_EQ(after.at("XMP-dc:Title-fr"), "Le port à l’aube");
    EXPECT_EQ(after.at("XMP-dc:Subject"), Json({"harbour", "boats", "dawn; early", "sea", "pier"}));
    EXPECT_EQ(after.at("XMP-xmp:Rating"), 2);
    ASSERT_FALSE(before.contains("XMP-xmpMM:History"));
    ASSERT_EQ(after.at("XMP-xmpMM:History").size(), 1U);
    const Json& entry = after.at("XMP-xmpMM:History").at(0);
    EXPECT_EQ(entry.at("Action"), "saved");
    EXPECT_EQ(entry.at("SoftwareAgent"), "zephmeta");
    EXPECT_EQ(entry.at("Changed"), "/metadata/dc/title;/metadata/xmp/Rating;/metadata/dc/subject");
    EXPECT_EQ(entry.at("InstanceID"), after.at("XMP-xmpMM:InstanceID"));
    EXPECT_NE(Picture(Bytes("harbour.jpg")), "");
    EXPECT_EQ(Picture(Bytes("harbour.jpg")), Picture(Sample("harbour.jpg")));
}

/// Two languages, one of them x-default, are what the toolkit alone would make one of.
TEST_F(EndToEnd, TwoLanguagesSurviveAnUnrelatedEdit) {
    for (const char* file : {"packet.jpg", "packet.png", "packet.tif", "packet.gif", "packet.wav", "sidecar.xmp"}) {
        ASSERT_EQ(Zephmeta({"set", file, "xmp:Rating=3"}), (Outcome{0, std::string(file) + ": written\n", ""}));
        const Json tags = Tags(file);
        EXPECT_EQ(tags.at("XMP-dc:Title"), "Low tide") << file;
        EXPECT_EQ(tags.at("XMP-dc:Title-de"), "Ebbe") << file;
        EXPECT_EQ(tags.at("XMP-xmp:Rating"), 3) << file;
    }
}

}  // namespace
}  // namespace cli
