#include "cli/cli_runner.h"

namespace cli {
namespace {

constexpr const char* kHostile =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
    "<dc:source>one&#xA;two&#9;three&#x9B;31m</dc:source></rdf:Description></rdf:RDF></x:xmpmeta>";

/// An internal property, one that no definition describes, an array of structures, and an array that is empty.
constexpr const char* kOdd =
    "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
    "<rdf:Description rdf:about='' xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:odd='http://odd.example/' "
    "xmlns:xmpMM='http://ns.adobe.com/xap/1.0/mm/' xmlns:stEvt='http://ns.adobe.com/xap/1.0/sType/ResourceEvent#'>"
    "<dc:format>image/jpeg</dc:format><odd:list><rdf:Bag><rdf:li>a</rdf:li><rdf:li>b;c</rdf:li></rdf:Bag></odd:list>"
    "<xmpMM:History><rdf:Seq><rdf:li rdf:parseType='Resource'><stEvt:action>saved</stEvt:action></rdf:li></rdf:Seq>"
    "</xmpMM:History></rdf:Description></rdf:RDF></x:xmpmeta>";

class ReadingFiles : public CliTest {
protected:
    ReadingFiles() {
        Write("hostile.xmp", kHostile);
        Write("odd.xmp", kOdd);
        Write("notes.txt", "no picture");
        Write("na\x1bme.xmp", kHostile);
        Write("-dash.xmp", kHostile);
        Write("two words=\xff.xmp", kHostile);
        std::filesystem::create_directory(At("folder"));
    }
};

struct ReadingRow {
    const char* mLabel;
    Arguments mArguments;
    Outcome mOutcome;
};

class Reading : public ReadingFiles, public ::testing::WithParamInterface<ReadingRow> {};

TEST_P(Reading, Prints) {
    EXPECT_EQ(Zephmeta(GetParam().mArguments), GetParam().mOutcome) << ::testing::PrintToString(GetParam().mArguments);
}

const char* const kSidecarText =
    "sidecar.xmp\n"
    "  dc:title                                      Title     langalt  Low tide\n"
    "                                                                   [de] Ebbe\n"
    "  dc:subject                                    Keywords  bag      boats; \"dawn; early\"\n"
    "  dc:creator                                    Creator   seq      Ines Calder; Tomas Wren\n"
    "  xmp:Rating                                    Rating    rating   4\n"
    "  Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity  City      text     Marlhaven\n"
    "  Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiEmailWork  Email(s)  text     ines@calder.example\n";
const char* const kHostileText = "  dc:source  Source  text  one\\ntwo\\tthree\\x9b31m\n";

const ReadingRow kReadingRows[] = {
    {"Dump", {"dump", "sidecar.xmp"}, {0, kSidecarText, ""}},
    {"DumpWithoutXMP", {"dump", "plain.png"}, {0, "plain.png\n  no XMP\n", ""}},
    {"DumpWithoutXMPAsJson",
     {"dump", "--json", "plain.png"},
     {0, "{\"file\":\"plain.png\",\"hasXMP\":false,\"properties\":[]}\n", ""}},
    {"DumpOfGoodAndBadFiles",
     {"dump", "nowhere.jpg", "plain.png", "folder", "notes.txt", "broken-packet.jpg", "sidecar.xmp"},
     {1, std::string("plain.png\n  no XMP\n\n") + kSidecarText,
      "folder: is a folder; -r takes the files in it\n"
      "nowhere.jpg: no such file\n"
      "notes.txt: not a media file of a known format\n" +
          std::string(kBrokenPacket)}},
    {"DumpOfControlCharacters", {"dump", "hostile.xmp"}, {0, std::string("hostile.xmp\n") + kHostileText, ""}},
    {"DumpOfAControlCharacterInAName",
     {"dump", "na\x1bme.xmp"},
     {0, std::string("na\\x1bme.xmp\n") + kHostileText, ""}},
    {"DumpOfAnOddName", {"dump", "two words=\xff.xmp"}, {0, std::string("two words=\xff.xmp\n") + kHostileText, ""}},
    {"ProblemWithAControlCharacter", {"dump", "\x1b[31m\n"}, {1, "", "\\x1b[31m\\n: no such file\n"}},
    {"NameThatLooksLikeAnOption", {"get", "--", "-dash.xmp", "dc:source"}, {0, "one\ntwo\tthree\\x9b31m\n", ""}},
    {"NameThatLooksLikeAnOptionLast",
     {"dump", "plain.png", "--", "-dash.xmp"},
     {0, std::string("plain.png\n  no XMP\n\n./-dash.xmp\n") + kHostileText, ""}},
    {"Get",
     {"get", "packet.png", "dc:title", "dc:title[?xml:lang=\"de\"]", "dc:subject", "dc:subject[2]", "xmp:Rating",
      "Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity"},
     {0, "Low tide\nEbbe\nboats; \"dawn; early\"\ndawn; early\n4\nMarlhaven\n", ""}},
    {"GetRaw",
     {"get", "--raw", "packet.png", "dc:title", "dc:subject", "dc:subject[2]", "xmp:Rating"},
     {0, "Low tide\nboats; dawn; early\ndawn; early\n4\n", ""}},
    {"GetOfWhatIsNotThere",
     {"get", "packet.png", "xmp:Label", "xmp:Rating", "dc:title[?xml:lang=\"fr\"]", "dc:subject[9]", "nope:x",
      "dc:titel"},
     {1, "\n4\n\n\n\n\n",
      "packet.png: xmp:Label: no value\n"
      "packet.png: dc:title[?xml:lang=\"fr\"]: no value\n"
      "packet.png: dc:subject[9]: no value\n"
      "packet.png: nope:x: unknown prefix \"nope\"\n"
      "packet.png: dc:titel: no such property; did you mean dc:title?\n"}},
    {"GetRawOfAStructure",
     {"get", "--raw", "packet.png", "Iptc4xmpCore:CreatorContactInfo"},
     {1, "\n", "packet.png: Iptc4xmpCore:CreatorContactInfo: no value\n"}},
    {"GetAsJson",
     {"get", "--json", "packet.png", "dc:title", "xmp:Label"},
     {1, "{\"dc:title\":\"Low tide\",\"xmp:Label\":null}\n", "packet.png: xmp:Label: no value\n"}},
    {"GetFromNoFile", {"get", "nowhere.jpg", "dc:title"}, {1, "", "nowhere.jpg: no such file\n"}},
};

INSTANTIATE_TEST_SUITE_P(Rows, Reading, ::testing::ValuesIn(kReadingRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(ReadingFiles, DumpWhatIsLeftOfADamagedFileAndSaySo) {
    const Outcome outcome = Zephmeta({"dump", "truncated.jpg"});
    EXPECT_EQ(outcome.mStatus, 1) << outcome;
    EXPECT_NE(outcome.mOutput.find("Lumenta L40"), std::string::npos) << outcome;
    EXPECT_THAT(outcome.mErrors,
                ::testing::EndsWith("truncated.jpg: the file is damaged (a segment is damaged or cut off)\n"));
}

TEST_F(ReadingFiles, DumpAsJsonWithEveryMember) {
    const std::string dc = "http://purl.org/dc/elements/1.1/";
    const std::string mm = "http://ns.adobe.com/xap/1.0/mm/";
    const Outcome outcome = Zephmeta({"--json", "dump", "odd.xmp", "packet.png"});
    const std::size_t line = outcome.mOutput.find('\n');
    ASSERT_NE(line, std::string::npos) << outcome;
    const Json properties = Json::array({
        {{"path", "dc:format"},
         {"namespace", dc},
         {"label", "Format"},
         {"type", "mimetype"},
         {"internal", true},
         {"defined", true},
         {"origin", "xmp"},
         {"raw", "image/jpeg"},
         {"display", "image/jpeg"}},
        {{"path", "odd:list"},
         {"namespace", "http://odd.example/"},
         {"label", ""},
         {"type", "bag"},
         {"internal", false},
         {"defined", false},
         {"origin", "xmp"},
         {"raw", "a; b;c"},
         {"display", "a; b;c"},
         {"items", {"a", "b;c"}}},
        {{"path", "xmpMM:History[1]/stEvt:action"},
         {"namespace", mm},
         {"label", "Action"},
         {"type", "openchoice"},
         {"internal", true},
         {"defined", true},
         {"origin", "xmp"},
         {"raw", "saved"},
         {"display", "saved"}},
    });
    const Json expected = {{"file", "odd.xmp"}, {"hasXMP", true}, {"properties", properties}};
    EXPECT_EQ(Json::parse(outcome.mOutput.substr(0, line)), expected);

    const Json packet = Json::parse(outcome.mOutput.substr(line));
    const Json& title = packet.at("properties").at(0);
    EXPECT_EQ(title.at("languages"), Json({{"x-default", "Low tide"}, {"de", "Ebbe"}}));
    EXPECT_EQ(title.at("raw"), "Low tide");
}

/// What dump prints can be asked for and set again, whatever the path.
TEST_F(ReadingFiles, AreValidated) {
    ASSERT_EQ(Zephmeta({"set", "packet.png", "dc:source=x"}).mStatus, 0);
    EXPECT_EQ(Zephmeta({"validate", "packet.png"}), (Outcome{0, "", ""}));
    EXPECT_EQ(Zephmeta({"validate", "exif-only.jpg"}), (Outcome{0, "", ""})) << "it has no packet";
    EXPECT_EQ(Zephmeta({"validate", "--native", "packet.png", "exif-only.jpg", "broken-packet.jpg"}),
              (Outcome{1,
                       "exif-only.jpg: error: tiff:ResolutionUnit: \"1\" is none of: 2, 3 [choice]\n"
                       "exif-only.jpg: warning: exif:ISOSpeedRatings: is deprecated [deprecated]\n",
                       kBrokenPacket}));
    const Json found = Json::parse(Zephmeta({"validate", "--native", "--json", "exif-only.jpg"}).mOutput);
    EXPECT_EQ(found.at("file"), "exif-only.jpg");
    EXPECT_EQ(found.at("findings").at(0), Json({{"path", "tiff:ResolutionUnit"},
                                                {"severity", "error"},
                                                {"rule", "choice"},
                                                {"message", "\"1\" is none of: 2, 3"}}));
}

TEST_F(ReadingFiles, EveryPathOfDumpLeadsBackToItsValue) {
    const Json dumped = Json::parse(Zephmeta({"dump", "--json", "harbour.jpg"}).mOutput);
    Arguments paths;
    Arguments assignments = {"set", "harbour.jpg"};
    Json displayed = Json::object();
    for (const Json& property : dumped.at("properties")) {
        const std::string path = property.at("path");
        displayed[path] = property.at("display");
        paths.push_back(path);
        // Exif stores the components as a list, which no text of the property's choices stands for.
        if (property.at("defined") && path != "exif:ComponentsConfiguration") {
            // Internal values are shown in a form for people, which is none to set.
            const bool isStored = property.at("internal") && !property.contains("items");
            assignments.push_back(path + "=" + property.at(isStored ? "raw" : "display").get<std::string>());
        }
    }
    ASSERT_GT(assignments.size(), 50U);
    Json shown = Get("harbour.jpg", paths);
    const Json forPeople = shown.at("display");
    shown.erase("display");
    for (const auto& [path, text] : forPeople.items()) {
        shown[path] = text;
    }
    EXPECT_EQ(shown, displayed);
    EXPECT_EQ(Zephmeta(assignments), (Outcome{0, "harbour.jpg: unchanged\n", ""}));
    EXPECT_EQ(Bytes("harbour.jpg"), Sample("harbour.jpg"));
}

}  // namespace
}  // namespace cli
