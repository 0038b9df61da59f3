#include <fcntl.h>
#include <sys/stat.h>

#include "cli/cli_runner.h"

namespace cli {
namespace {

constexpr const char* kCity = "Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity";

struct SetRow {
    const char* mLabel;
    Arguments mArguments;    // of "set", the file first
    Json mValues;            // by path, afterwards
    bool mCanRepeat = true;  // whether a second time finds nothing to change
};

class Setting : public CliTest, public ::testing::WithParamInterface<SetRow> {};

TEST_P(Setting, WritesAndReadsBack) {
    const SetRow& row = GetParam();
    SCOPED_TRACE(::testing::PrintToString(row.mArguments));
    const std::string& file = row.mArguments.front();
    Arguments arguments = {"set"};
    arguments.insert(arguments.end(), row.mArguments.begin(), row.mArguments.end());
    EXPECT_EQ(Zephmeta(arguments), (Outcome{0, file + ": written\n", ""}));
    Arguments paths;
    for (const auto& item : row.mValues.items()) {
        paths.push_back(item.key());
    }
    Json values = Get(file, paths);
    values.erase("display");
    EXPECT_EQ(values, row.mValues);

    if (!row.mCanRepeat) {
        return;
    }
    const std::string written = Bytes(file);
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat(At(file).c_str(), &before), 0);
    EXPECT_EQ(Zephmeta(arguments), (Outcome{0, file + ": unchanged\n", ""})) << "the second time";
    ASSERT_EQ(stat(At(file).c_str(), &after), 0);
    EXPECT_EQ(Bytes(file), written);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

const SetRow kSetRows[] = {
    {"Values",
     {"packet.png", "dc:title=New", "xmp:Rating=2"},
     {{"dc:title", "New"}, {"dc:title[?xml:lang=\"de\"]", "Ebbe"}, {"xmp:Rating", "2"}}},
    {"Items",
     {"packet.png", "dc:subject=pier; \"mist; fog\""},
     {{"dc:subject[1]", "pier"}, {"dc:subject[2]", "mist; fog"}}},
    {"OneItem", {"packet.png", "dc:subject[2]=dusk"}, {{"dc:subject", {"boats", "dusk"}}}},
    {"Field", {"packet.png", std::string(kCity) + "=Westmoor"}, {{kCity, "Westmoor"}}},
    {"FieldOfAStructureThatWasMissing", {"plain.png", std::string(kCity) + "=Westmoor"}, {{kCity, "Westmoor"}}},
    {"Language",
     {"packet.png", "dc:title[?xml:lang=\"de\"]=Flut", "dc:title[?xml:lang=\"zh-Hant\"]=Marée"},
     {{"dc:title", "Low tide"}, {"dc:title[?xml:lang=\"de\"]", "Flut"}, {"dc:title[?xml:lang=\"ZH-hant\"]", "Marée"}}},
    {"TextWithSignsOfTheSyntax", {"packet.png", "dc:source=a=\"b\" <&>; c\nd"}, {{"dc:source", "a=\"b\" <&>; c\nd"}}},
    {"AddToABag",
     {"packet.png", "--add", "dc:subject=a;b", "--add", "dc:subject=pier"},
     {{"dc:subject", {"boats", "dawn; early", "a;b", "pier"}}}},
    {"AddToASequence",
     {"packet.png", "--add", "dc:creator=Ines Calder"},
     {{"dc:creator", {"Ines Calder", "Tomas Wren", "Ines Calder"}}},
     false},
    {"AddToNothing", {"packet.png", "--add", "dc:publisher=Calder"}, {{"dc:publisher", Json::array({"Calder"})}}},
    {"DeleteAValue", {"packet.png", "--delete", "xmp:Rating"}, {{"xmp:Rating", nullptr}, {"dc:title", "Low tide"}}},
    {"DeleteAnItem",
     {"packet.png", "--delete", "dc:subject[1]"},
     {{"dc:subject", Json::array({"dawn; early"})}},
     false},
    {"DeleteALanguage",
     {"packet.png", "--delete", "dc:title[?xml:lang=\"de\"]"},
     {{"dc:title", "Low tide"}, {"dc:title[?xml:lang=\"de\"]", nullptr}}},
    {"DeleteAList", {"packet.png", "--delete", "dc:creator"}, {{"dc:creator", nullptr}, {"dc:title", "Low tide"}}},
    {"RemoveAnItemByItsText",
     {"packet.png", "--remove", "dc:subject=boats"},
     {{"dc:subject", Json::array({"dawn; early"})}}},
    {"RenameAnItem", {"packet.png", "--rename", "dc:subject=boats=ships"}, {{"dc:subject", {"ships", "dawn; early"}}}},
    {"CopyWithin", {"packet.png", "--copy", "dc:source=dc:title"}, {{"dc:source", "Low tide"}}},
    {"From",
     {"plain.png", "--from", "packet.png", "--only", "dc:title", "--only", "dc:subject"},
     {{"dc:title[?xml:lang=\"de\"]", "Ebbe"}, {"dc:subject", {"boats", "dawn; early"}}, {"xmp:Rating", nullptr}}},
    {"Template", {"packet.png", "dc:source={dc:title} {none} {xmp:Rating}"}, {{"dc:source", "Low tide {none} 4"}}},
    {"TemplateOfATagOfTIFF", {"packet.jpg", "dc:source={exif:Model}"}, {{"dc:source", "Lumenta L40"}}},
    {"Position",
     {"plain.png", "--gps", "53.5461,-9.9661,-12.5m"},
     {{"exif:GPSLatitude", "53,32.766N"},
      {"exif:GPSLongitude", "9,57.966W"},
      {"exif:GPSAltitude", "25/2"},
      {"exif:GPSAltitudeRef", "1"}}},
    {"AsPeopleType",
     {"plain.png", "exif:FNumber=f/8", "exif:ExposureTime=1/250", "exif:MeteringMode=spot",
      "xmp:CreateDate=2026-05-01 10:00"},
     {{"exif:FNumber", "8/1"},
      {"exif:ExposureTime", "1/250"},
      {"exif:MeteringMode", "3"},
      {"xmp:CreateDate", "2026-05-01T10:00"}}},
    {"SidecarThatIsMade", {"new.xmp", "dc:title=First"}, {{"dc:title", "First"}}},
    {"FirstXMPOfAJpeg", {"plain.jpg", "dc:title=First"}, {{"dc:title", "First"}}},
    {"FirstXMPOfAPng", {"plain.png", "--add", "dc:subject=first"}, {{"dc:subject", Json::array({"first"})}}},
    {"Gif", {"packet.gif", "xmp:Rating=2"}, {{"xmp:Rating", "2"}, {"dc:title[?xml:lang=\"de\"]", "Ebbe"}}},
    {"Tiff", {"packet.tif", "xmp:Rating=2"}, {{"xmp:Rating", "2"}, {"dc:title[?xml:lang=\"de\"]", "Ebbe"}}},
    {"Sidecar", {"sidecar.xmp", "xmp:Rating=2"}, {{"xmp:Rating", "2"}, {"dc:title[?xml:lang=\"de\"]", "Ebbe"}}},
};

INSTANTIATE_TEST_SUITE_P(Rows, Setting, ::testing::ValuesIn(kSetRows),
                         [](const auto& row) { return row.param.mLabel; });

struct RefusalRow {
    const char* mLabel;
    Arguments mArguments;  // of "set"
    std::string mErrors;
};

class Refusing : public CliTest, public ::testing::WithParamInterface<RefusalRow> {};

TEST_P(Refusing, SaysWhyAndLeavesTheFileAlone) {
    Write("notes.txt", "no picture");
    Write("broken.xmp", "<x:xmpmeta");
    std::filesystem::create_directory(At("folder"));
    Arguments arguments = {"set"};
    arguments.insert(arguments.end(), GetParam().mArguments.begin(), GetParam().mArguments.end());
    EXPECT_EQ(Zephmeta(arguments), (Outcome{1, "", GetParam().mErrors})) << ::testing::PrintToString(arguments);
    for (const char* file : {"packet.png", "packet.jpg", "broken-packet.jpg", "truncated.jpg"}) {
        EXPECT_EQ(Bytes(file), Sample(file)) << file;
    }
    EXPECT_EQ(Bytes("broken.xmp"), "<x:xmpmeta");
    EXPECT_FALSE(std::filesystem::exists(At("nowhere.jpg")));
}

const RefusalRow kRefusalRows[] = {
    {"UnknownPrefix", {"packet.png", "nope:x=1"}, "packet.png: nope:x: unknown prefix \"nope\"\n"},
    {"NoDefinition", {"packet.png", "dc:nope=1"}, "packet.png: dc:nope: no definition describes it\n"},
    {"NoNumber", {"packet.png", "xmp:Rating=many"}, "packet.png: xmp:Rating: \"many\" is not a number\n"},
    {"OutOfBounds", {"packet.png", "xmp:Rating=9"}, "packet.png: xmp:Rating: \"9\" is more than 5\n"},
    {"NoChoice",
     {"packet.png", "tiff:Orientation=12"},
     "packet.png: tiff:Orientation: \"12\" is none of: 1, 2, 3, 4, 5, 6, 7, 8\n"},
    {"NoDate",
     {"packet.png", "xmp:CreateDate=2024-13-01"},
     "packet.png: xmp:CreateDate: \"2024-13-01\" is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00\n"},
    {"Structure",
     {"packet.png", "xmpMM:DerivedFrom=x"},
     "packet.png: xmpMM:DerivedFrom: it is a structure; set its fields\n"},
    {"EmptyValues",
     {"packet.png", "dc:source=", "--add", "dc:subject="},
     "packet.png: dc:source: a value cannot be empty; delete it instead\n"
     "packet.png: dc:subject: an item cannot be empty\n"},
    {"AdditionToNoList", {"packet.png", "--add", "dc:title=x"}, "packet.png: dc:title: it is no list; set its value\n"},
    {"ItemFarPastTheEnd",
     {"packet.png", "xmp:Rating=2", "dc:subject[50]=x"},
     "packet.png: dc:subject[50]: it cannot be changed like this; nothing was written\n"},
    {"TextThatXMLCannotCarry",
     {"packet.png", "dc:source=a\x01"},
     "packet.png: dc:source: it holds control characters or bytes that are no UTF-8\n"},
    {"TextThatIsNoUTF8",
     {"packet.png", "dc:source=a\xff"},
     "packet.png: dc:source: it holds control characters or bytes that are no UTF-8\n"},
    {"BadFiles",
     {"nowhere.jpg", "folder", "notes.txt", "truncated.jpg", "broken-packet.jpg", "broken.xmp", "xmp:Rating=2"},
     "folder: is a folder; -r takes the files in it\n"
     "nowhere.jpg: no such file\n"
     "notes.txt: not a media file of a known format\n"
     "truncated.jpg: the file is damaged (a segment is damaged or cut off)\n" +
         kBrokenPacket + "broken.xmp: its XMP is damaged and left as it is\n"},
    {"MistypedNames",
     {"packet.png", "dc:titel=x", "dc:source={dc:creater} {no:path}", "cd:title[1]=x"},
     "packet.png: dc:titel: no such property; did you mean dc:title?\n"
     "packet.png: dc:creater: no such property; did you mean dc:creator?\n"
     "packet.png: cd:title[1]: unknown prefix \"cd\"; did you mean dc:title[1]?\n"},
    {"NoLanguageTag",
     {"packet.png", "dc:title[?xml:lang=\"Deutsch!\"]=x", "dc:title[?xml:lang=\"en-\"]=x"},
     "packet.png: dc:title[?xml:lang=\"Deutsch!\"]: \"Deutsch!\" is not a language tag such as de, en-US or x-default\n"
     "packet.png: dc:title[?xml:lang=\"en-\"]: \"en-\" is not a language tag such as de, en-US or x-default\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, Refusing, ::testing::ValuesIn(kRefusalRows),
                         [](const auto& row) { return row.param.mLabel; });

class SetCommand : public CliTest {};

TEST_F(SetCommand, MovesDatesAndStatesTheirZone) {
    struct Row {
        const char* mDate;
        Arguments mOptions;
        const char* mMoved;
    };
    const Row rows[] = {
        {"2024-02-28T23:30:15.5+01:00", {"--shift", "xmp:CreateDate+1d00h45m"}, "2024-03-01T00:15:15.5+01:00"},
        {"2024-01-01T00:10", {"--shift", "xmp:CreateDate-00:15"}, "2023-12-31T23:55"},
        {"2024-01-01T00:10", {"--shift", "xmp:CreateDate+20s"}, "2024-01-01T00:10:20"},
        {"2024-01-31", {"--shift", "xmp:CreateDate+1d"}, "2024-02-01"},
        {"2024-01-31T10:00:00", {"--zone", "+02:00"}, "2024-01-31T10:00:00+02:00"}};
    for (const Row& row : rows) {
        ASSERT_EQ(Zephmeta({"set", "packet.png", std::string("xmp:CreateDate=") + row.mDate}).mStatus, 0);
        EXPECT_EQ(Zephmeta({"set", "packet.png", row.mOptions[0], row.mOptions[1]}).mErrors, "");
        EXPECT_EQ(Get("packet.png", {"xmp:CreateDate"}).at("xmp:CreateDate"), row.mMoved) << row.mDate;
    }
    EXPECT_EQ(Zephmeta({"set", "packet.png", "xmp:CreateDate=2024", "xmp:Rating=1"}).mStatus, 0);
    EXPECT_EQ(Zephmeta({"set", "packet.png", "--shift", "xmp:CreateDate+1h"}),
              (Outcome{1, "", "packet.png: xmp:CreateDate: \"2024\" cannot be moved by that; nothing was written\n"}));
}

TEST_F(SetCommand, TellsBeforeItDoesAndKeepsWhatWas) {
    EXPECT_EQ(Zephmeta({"set", "packet.png", "--dry-run", "dc:title=New", "xmp:Rating=2", "--delete", "dc:creator"}),
              (Outcome{0,
                       "packet.png: would change\n  dc:creator: removed \"Ines Calder; Tomas Wren\"\n"
                       "  dc:title: \"Low tide [de] Ebbe\" becomes \"New [de] Ebbe\"\n"
                       "  xmp:Rating: \"4\" becomes \"2\"\n",
                       ""}));
    EXPECT_EQ(Bytes("packet.png"), Sample("packet.png"));
    const timespec old[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, At("packet.png").c_str(), old, 0), 0);
    EXPECT_EQ(Zephmeta({"set", "packet.png", "--backup", "--keep-time", "xmp:Rating=2"}).mStatus, 0);
    EXPECT_EQ(Bytes("packet.png.orig"), Sample("packet.png"));
    struct stat status {};
    ASSERT_EQ(stat(At("packet.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000000);
}

TEST_F(SetCommand, ReportsAsJsonAndNamesEachChangeOnce) {
    const Arguments arguments = {"set",   "--json",         "packet.png", "xmp:Rating=2",  "dc:title=Low tide",
                                 "--add", "dc:publisher=a", "--add",      "dc:publisher=b"};
    EXPECT_EQ(Zephmeta(arguments).mOutput,
              "{\"file\":\"packet.png\",\"written\":true,\"changed\":[\"xmp:Rating\",\"dc:publisher\"]}\n");
    EXPECT_EQ(Zephmeta(arguments).mOutput, "{\"file\":\"packet.png\",\"written\":false,\"changed\":[]}\n");
}

TEST_F(SetCommand, TakesFilesAfterTheMark) {
    std::filesystem::rename(At("packet.png"), At("-x.png"));
    EXPECT_EQ(Zephmeta({"set", "xmp:Rating=2", "--", "-x.png"}), (Outcome{0, "./-x.png: written\n", ""}));
}

TEST_F(SetCommand, DeletesFromAFileWithoutXMPWithoutGivingItAny) {
    EXPECT_EQ(Zephmeta({"set", "plain.png", "--delete", "xmp:Rating"}), (Outcome{0, "plain.png: unchanged\n", ""}));
    EXPECT_EQ(Bytes("plain.png"), Sample("plain.png"));
}

TEST_F(SetCommand, KeepsASidecarASidecar) {
    EXPECT_EQ(Zephmeta({"set", "sidecar.xmp", "xmp:Rating=2"}).mStatus, 0);
    EXPECT_TRUE(Bytes("sidecar.xmp").starts_with("<?xpacket begin=")) << Bytes("sidecar.xmp").substr(0, 60);
}

TEST_F(SetCommand, KeepsLinksAndMode) {
    std::filesystem::create_hard_link(At("packet.jpg"), At("hard.jpg"));
    std::filesystem::create_symlink("packet.jpg", At("soft.jpg"));
    ASSERT_EQ(chmod(At("packet.jpg").c_str(), 0640), 0);
    EXPECT_EQ(Zephmeta({"set", "soft.jpg", "xmp:Rating=2"}), (Outcome{0, "soft.jpg: written\n", ""}));
    EXPECT_TRUE(std::filesystem::is_symlink(At("soft.jpg")));
    EXPECT_TRUE(std::filesystem::equivalent(At("packet.jpg"), At("hard.jpg")));
    EXPECT_EQ(Get("hard.jpg", {"xmp:Rating"}).at("xmp:Rating"), "2");
    EXPECT_EQ(static_cast<int>(std::filesystem::status(At("packet.jpg")).permissions()), 0640);
}

}  // namespace
}  // namespace cli
