#include "cli/cli_runner.h"

namespace cli {
namespace {

using ::testing::HasSubstr;
using Panels = CliTest;

TEST_F(Panels, ReadLikeAPhotographersNotes) {
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--view", "camera"}),
              (Outcome{0,
                       "Camera Data\n"
                       "  Camera Information\n"
                       "    Camera Make   Lumenta\n"
                       "    Camera Model  Lumenta L40\n"
                       "    Lens          Lumenta 24-70mm F4\n"
                       "  Shot Information\n"
                       "    Focal Length  50 mm (50 mm in 35 mm film)\n"
                       "    Exposure      1/250 sec, f/8, ISO 200, Aperture Priority, Pattern\n"
                       "    Orientation   Normal\n"
                       "    Resolution    72 pixels per inch\n"
                       "    Flash         Did Not Fire, Mode: Compulsory Suppression\n",
                       ""}));
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--view", "com.corvid.xmp.view.gps"}).mOutput,
              "GPS Data\n"
              "  Camera Location\n"
              "    Coordinates  58° 58' 11.89\" N, 5° 43' 59.2\" E\n"
              "    Altitude     4 m above sea level\n"
              "\n"
              "    GPS Version  2.3.0.0\n");
}

/// The first item with a path, wherever it is nested; null when there is none.
Json Find(const Json& items, const std::string& path) {
    for (const Json& item : items) {
        if (item.value("path", "") == path) {
            return item;
        }
        if (Json found = Find(item.value("items", Json::array()), path); !found.is_null()) {
            return found;
        }
    }
    return nullptr;
}

TEST_F(Panels, AsJsonHoldWhatAnotherProgramNeedsToDrawThem) {
    ASSERT_EQ(Zephmeta({"set", "harbour.jpg", "plus:ImageCreator[1]/plus:ImageCreatorName=Ines",
                        "Iptc4xmpExt:LocationShown[1]/Iptc4xmpExt:City=Kiel",
                        "Iptc4xmpExt:LocationShown[2]/Iptc4xmpExt:City=Hamburg"})
                  .mStatus,
              0);
    const Json basic = Json::parse(Zephmeta({"panel", "harbour.jpg", "--json"}).mOutput);
    EXPECT_EQ(basic.at("view"), "com.corvid.xmp.view.basic");
    EXPECT_EQ(basic.at("files"), Json({"harbour.jpg"}));
    const Json marked = Find(basic.at("items"), "xmpRights:Marked");
    EXPECT_EQ(marked.at("kind"), "property");
    EXPECT_EQ(marked.at("widget"), "dropdown");
    EXPECT_EQ(marked.at("state"), "value");
    EXPECT_EQ(marked.at("value"), "Copyrighted");
    EXPECT_EQ(marked.at("raw"), "True");
    EXPECT_EQ(marked.at("writable"), true);
    EXPECT_EQ(marked.at("choices").size(), 3U);
    const Json absent = Find(basic.at("items"), "tessera:CaptionWriter");
    EXPECT_EQ(absent.at("state"), "none");
    EXPECT_FALSE(absent.contains("value"));

    const Json extension =
        Json::parse(Zephmeta({"panel", "harbour.jpg", "--view", "iptcextension", "--format", "json"}).mOutput);
    const Json location = Find(extension.at("items"), "Iptc4xmpExt:LocationShown");
    EXPECT_EQ(location.at("items").at(1).at("kind"), "section");
    EXPECT_EQ(Find(location.at("items"), "Iptc4xmpExt:LocationShown[2]/Iptc4xmpExt:City").at("value"), "Hamburg");
    EXPECT_EQ(Find(extension.at("items"), "plus:ImageCreator[1]/plus:ImageCreatorName").at("value"), "Ines");
}

TEST_F(Panels, BeginWithWhatPeopleWantToKnow) {
    const Outcome overview = Zephmeta({"panel", "harbour.jpg"});
    std::size_t last = 0;
    for (const char* const part : {"harbour.jpg\n", "\n  Camera ", "\n  Date ", "\nDescription\n", "  Title ",
                                   "\nPeople and Rights\n", "\nPlace\n", "\nCamera\n", "\nNot recorded: Source\n"}) {
        const std::size_t at = overview.mOutput.find(part);
        ASSERT_NE(at, std::string::npos) << part << overview;
        EXPECT_GE(at, last) << part << overview;
        last = at;
    }
    EXPECT_THAT(overview.mOutput, ::testing::Not(HasSubstr("Date Created"))) << "said once";
    // The view has the fields of another schema, which programs get to know.
    EXPECT_THAT(Zephmeta({"panel", "harbour.jpg", "--view", "origin"}).mOutput,
                ::testing::ContainsRegex("  City +Marlhaven\n"));
    EXPECT_THAT(Zephmeta({"panel", "harbour.jpg", "--view", "origin", "--json"}).mOutput,
                HasSubstr("\"tessera:City\""));
}

TEST_F(Panels, LeaveOutValuesThatSayNothing) {
    ASSERT_EQ(Zephmeta({"set", "harbour.jpg", "exif:GPSAltitude=0/0", "exif:FocalLength=0/1",
                        "xmp:CreateDate=2024-07-24T10:25:57+05:30", "xmp:Rating=0", "dc:date[1]=2024-07-24",
                        "Iptc4xmpExt:LocationCreated[1]/exif:GPSLatitude=59,54.5N"})
                  .mStatus,
              0);
    const std::string text = Zephmeta({"panel", "harbour.jpg"}).mOutput;
    for (const char* const senseless : {"sea level", "0 mm (", ", 0\n", "Not Specified", "No Detection", "Rating  "}) {
        EXPECT_EQ(text.find(senseless), std::string::npos) << senseless << '\n' << text;
    }
    for (const char* const shown :
         {"7/24/2024 10:25:57\u202FAM UTC+05:30\n", " 7/24/2024\n", " 59\u00b0 54' 30\" N\n"}) {
        EXPECT_THAT(text, HasSubstr(shown));
    }
}

TEST_F(Panels, SayWhatCannotBeShown) {
    EXPECT_EQ(Zephmeta({"panel", "plain.png"}), (Outcome{0, "plain.png: nothing recorded\n", ""}));
    EXPECT_EQ(Zephmeta({"panel", "plain.png", "--view", "camera"}),
              (Outcome{0, "Camera Data: nothing recorded\n", ""}));
    EXPECT_EQ(Zephmeta({"panel", "broken-packet.jpg"}), (Outcome{1, "", kBrokenPacket}));
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--view", "nope"}),
              (Outcome{1, "", "zephmeta: no view is named \"nope\"; \"zephmeta views\" lists them\n"}));
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--view", "camra"}),
              (Outcome{1, "", "zephmeta: no view is named \"camra\"; did you mean camera?\n"}));
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--format", "pdf"}).mStatus, 2);
    EXPECT_EQ(Zephmeta({"panel", "harbour.jpg", "--all", "--view", "gps"}).mStatus, 2);
}

TEST_F(Panels, AreListedWithTheirItems) {
    const std::string list = Zephmeta({"views"}).mOutput;
    EXPECT_EQ(std::count(list.begin(), list.end(), '\n'), 12) << "with the overview and that of the IPTC standard";
    EXPECT_THAT(list, ::testing::ContainsRegex("^overview +Overview\n"));
    EXPECT_THAT(list, ::testing::ContainsRegex("\ncom.corvid.xmp.view.gps +GPS Data\n"));
    EXPECT_THAT(Zephmeta({"views", "overview"}).mOutput, HasSubstr("\n    dc:subject  Keywords\n"));
    const std::string origin = Zephmeta({"views", "origin"}).mOutput;
    EXPECT_THAT(origin, HasSubstr("  tessera:Country  Country\n  [separator]\n  tessera:Credit  Credit Line\n"));
    const Json views = Json::parse(Zephmeta({"views", "--json", "--lang", "de"}).mOutput);
    ASSERT_EQ(views.size(), 11U);
    EXPECT_EQ(views.at(2).at("pruneEmptyProperties"), true);
    EXPECT_EQ(views.at(2).at("items").at(0).at("kind"), "section");
    EXPECT_EQ(Zephmeta({"views", "nope"}).mStatus, 1);
}

TEST_F(Panels, SpeakTheLanguageThatIsAskedFor) {
    const std::string text = Zephmeta({"--lang", "de_AT", "panel", "harbour.jpg"}).mOutput;
    EXPECT_THAT(text, HasSubstr("  Titel "));
    EXPECT_EQ(text.find("$$$"), std::string::npos);
    EXPECT_EQ(text.find("Title"), std::string::npos);
}

TEST_F(Panels, TakeNoTextOfAFileForAnEscape) {
    ASSERT_EQ(Zephmeta({"set", "harbour.jpg", "exifEX:BodySerialNumber=#{U+41}#{quot}1"}).mStatus, 0);
    EXPECT_THAT(Zephmeta({"panel", "harbour.jpg", "--view", "camera"}).mOutput,
                HasSubstr("(serial number #{U+41}#{quot}1)"));
}

}  // namespace
}  // namespace cli
