#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "cli/cli_runner.h"

namespace cli {
namespace {

using ::testing::HasSubstr;
using namespace std::string_view_literals;

/// Values on their way out of files and back.
class Tables : public CliTest {
protected:
    void Export(const std::string& form, const std::string& table, const Arguments& more = {}) const {
        Arguments arguments = {"export", "packet.png", "packet.jpg", "plain.png", mOdd, form, table};
        arguments.insert(arguments.end(), more.begin(), more.end());
        std::filesystem::copy_file(At("packet.png"), At(mOdd), std::filesystem::copy_options::skip_existing);
        ASSERT_EQ(Zephmeta(arguments), (Outcome{0, "", ""}));
    }
    /// The table again with a part of it replaced.
    void Edit(const std::string& table, const std::string& from, const std::string& to) const {
        std::string text = Bytes(table);
        ASSERT_NE(text.find(from), std::string::npos) << text;
        Write(table, text.replace(text.find(from), from.size(), to));
    }

    const std::string mOdd = "odd\xff\n\"n,.png";
};

TEST_F(Tables, ChangeNothingWhereNothingWasEdited) {
    for (const char* const form : {"--csv", "--json"}) {
        const std::string table = std::string("table") + form;
        Export(form, table);
        EXPECT_EQ(Zephmeta({"import", "-q", table, "--delete-empty"}), (Outcome{0, "", ""})) << Bytes(table);
        for (const char* file : {"packet.png", "packet.jpg", "plain.png"}) {
            EXPECT_EQ(Bytes(file), Sample(file)) << form;
        }
        EXPECT_EQ(Bytes(mOdd), Sample("packet.png"));
        EXPECT_EQ(Zephmeta({"export", "packet.png", form, table}), (Outcome{1, "", table + ": is there already\n"}));
    }
}

struct EditRow {
    const char* mLabel;
    const char* mForm;
    const char* mFrom;
    const char* mTo;
    Arguments mOptions;
    Json mValues;  // of packet.png afterwards, by path
};

class EditedTables : public Tables, public ::testing::WithParamInterface<EditRow> {};

/// Only the first row that has the text is edited, which is that of packet.png.
TEST_P(EditedTables, ChangeWhatWasEdited) {
    const EditRow& row = GetParam();
    Export(row.mForm, "table", {"--only", "dc:title,dc:subject,xmp:Rating,dc:creator,dc:rights"});
    Edit("table", row.mFrom, row.mTo);
    Arguments arguments = {"import", "table"};
    arguments.insert(arguments.end(), row.mOptions.begin(), row.mOptions.end());
    EXPECT_EQ(Zephmeta(arguments).mOutput,
              "packet.png: written\npacket.jpg: unchanged\nplain.png: unchanged\n"
              "odd\xff\\n\"n,.png: unchanged\n")
        << Bytes("table");
    for (const auto& [path, value] : row.mValues.items()) {
        EXPECT_EQ(Get("packet.png", {path}).at(path), value) << path;
    }
    EXPECT_THAT(Zephmeta(arguments).mOutput, HasSubstr("packet.png: unchanged\n")) << "the second time";
}

const EditRow kEditRows[] = {
    {"Text", "--csv", "Low tide", "\"Ebb, \"\"low\"\"\r\ntide\"", {}, {{"dc:title", "Ebb, \"low\"\r\ntide"}}},
    {"Language", "--csv", "Ebbe", "Flut", {}, {{"dc:title[?xml:lang=\"de\"]", "Flut"}, {"dc:title", "Low tide"}}},
    {"List",
     "--csv",
     "\"boats; \"\"dawn; early\"\"\"",
     "\"a; \"\"b;c\"\"; \"\"say \"\"\"\"x\"\"\"\"\"\"\"",
     {},
     {{"dc:subject", {"a", "b;c", "say \"x\""}}}},
    {"EmptiedCell",
     "--csv",
     "Ebbe,4",
     "Ebbe,",
     {"--delete-empty"},
     {{"xmp:Rating", nullptr}, {"dc:title", "Low tide"}}},
    {"Number", "--json", "\"xmp:Rating\":\"4\"", "\"xmp:Rating\":2", {}, {{"xmp:Rating", "2"}}},
    {"Null", "--json", "\"xmp:Rating\":\"4\"", "\"xmp:Rating\":null", {}, {{"xmp:Rating", nullptr}}},
    {"NullOfALanguage",
     "--json",
     "\"de\":\"Ebbe\"",
     "\"de\":null",
     {},
     {{"dc:title[?xml:lang=\"de\"]", nullptr}, {"dc:title", "Low tide"}}},
    {"Items", "--json", "[\"boats\",", "[", {}, {{"dc:subject", Json::array({"dawn; early"})}}},
};

INSTANTIATE_TEST_SUITE_P(Rows, EditedTables, ::testing::ValuesIn(kEditRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(Tables, AreDoneAsFarAsTheyMakeSense) {
    Write("table",
          "\xEF\xBB\xBF"
          "\r\nfile;dc:titel;xmpMM:InstanceID;xmp:Rating\r\n"
          "packet.png;x;x;3\r\npacket.jpg;;;9\r\ngone.jpg;;;1\r\npacket.gif;x\r\npacket.png;;;1\r\nplain.png;;;\r\n"
          "packet.tif;;;\"1");
    EXPECT_EQ(Zephmeta({"import", "table"}),
              (Outcome{1, "packet.png: written\nplain.png: unchanged\n",
                       "zephmeta: dc:titel: no such property; did you mean dc:title?; the column is passed over\n"
                       "zephmeta: xmpMM:InstanceID: is kept by programs and not taken; the column is passed over\n"
                       "table: row 6: has 2 fields where the header has 4; it is passed over\n"
                       "table: row 7: \"packet.png\" stands in row 3 already; it is passed over\n"
                       "table: row 9: a quote is not closed; it is passed over\n"
                       "packet.jpg: xmp:Rating: \"9\" is more than 5; nothing was written\n"
                       "gone.jpg: no such file\n"}));
    EXPECT_EQ(Get("packet.png", {"xmp:Rating"}).at("xmp:Rating"), "3");
    const std::pair<std::string_view, const char*> wrong[] = {
        {"name,dc:title\n", "table: has no column \"file\"\n"},
        {"file,dc:title,,,dc:title\n", "table: has two columns \"dc:title\"\n"},
        {"{\"file\":\"packet.gif\",", "table: row 1: is no JSON object; it is passed over\n"},
        {"[{\"file\":\"packet.gif\",\"dc:title\":{\"de\":{}}}]",
         "packet.gif: dc:title: is neither a text, nor a list, nor texts by language\n"},
        {"[\0{\"file\":\"packet.gif\"}]"sv, "table: row 1: is no JSON object; it is passed over\n"},
        {"SQLite format 3", "table: is a database; CSV and JSON can be imported\n"},
    };
    for (const auto& [bytes, problem] : wrong) {
        Write("table", bytes);
        EXPECT_EQ(Zephmeta({"import", "table"}), (Outcome{1, "", problem})) << bytes;
    }
}

TEST_F(Tables, AreReadFromPipes) {
    ASSERT_EQ(mkfifo(At("pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    const std::jthread writer([&] { std::ofstream(At("pipe")) << "file,xmp:Rating\npacket.png,2\n"; });
    EXPECT_EQ(Zephmeta({"import", "pipe"}), (Outcome{0, "packet.png: written\n", ""}));
}

TEST_F(Tables, AreIndexesThatFollowTheFiles) {
    std::filesystem::create_directory(At("tree"));
    for (const char* const file : {"packet.png", "packet.jpg", "plain.png", "broken-packet.jpg"}) {
        std::filesystem::copy_file(At(file), At("tree") / file);
    }
    std::filesystem::copy_file(At("packet.png"), At("tree") / mOdd);
    const Outcome broken = {1, "", "tree/" + kBrokenPacket};
    EXPECT_EQ(Zephmeta({"export", "-r", "tree", "--sqlite", "index"}), broken);
    EXPECT_EQ(Zephmeta({"find", "--index", "index", "-0", "--text", "TIDE", "xmp:Rating=4"}).mOutput,
              "tree/" + mOdd + std::string("\0tree/packet.jpg\0tree/packet.png\0", 33));
    const auto update = [&](const std::string& counts) {
        EXPECT_EQ(Zephmeta({"export", "-r", "tree", "--sqlite", "index", "--update"}),
                  (Outcome{1, "index: " + counts + "\n", broken.mErrors}));
    };
    update("1 read, 4 unchanged, 0 gone");
    std::filesystem::remove(At("tree") / mOdd);
    ASSERT_EQ(Zephmeta({"set", "-q", "tree/packet.png", "dc:title=Quayside"}).mStatus, 0);
    ASSERT_EQ(Zephmeta({"set", "-q", "--sidecar", "always", "tree/plain.png", "dc:title=Quayside"}).mStatus, 0);
    update("3 read, 1 unchanged, 1 gone");
    EXPECT_EQ(Zephmeta({"find", "--index", "index", "--text", "quay*"}).mOutput, "tree/packet.png\ntree/plain.png\n");
    EXPECT_EQ(Zephmeta({"find", "--index", "index"}).mOutput, "tree/packet.jpg\ntree/packet.png\ntree/plain.png\n");
    const std::string bytes = Bytes("index");
    std::string foreign = bytes;
    foreign[71] ^= 1;  // the application of the database
    Write("foreign", foreign);
    Write("left-journal", "");
    Write("cut", bytes.substr(0, bytes.size() / 2));
    const std::string noRoom(236, 'n');  // for the name of a journal
    const std::pair<Arguments, std::string> refused[] = {
        {{"export", "plain.png", "--sqlite", "index"},
         "index: is there already; --update brings an index up to date\n"},
        {{"export", "plain.png", "--sqlite", "plain.png", "--update"}, "plain.png: is damaged, or no database\n"},
        {{"find", "--index", "foreign"}, "foreign: is no index that zephmeta made\n"},
        {{"find", "--index", "cut", "dc:title"}, "cut: is damaged, or no database\n"},
        {{"find", "--index", "none"}, "none: no such file\n"},
        {{"export", "plain.png", "--sqlite", "left"},
         "left: cannot be made (a journal of a database of this name is there)\n"},
        {{"export", "plain.png", "--sqlite", noRoom}, noRoom + ": unable to open database file\n"},
    };
    for (const auto& [arguments, problem] : refused) {
        EXPECT_EQ(Zephmeta(arguments), (Outcome{1, "", problem}));
    }
    EXPECT_EQ(Zephmeta({"find", "--index", "index", "--text", "\"tide"}).mStatus, 2);
    EXPECT_EQ(Bytes("index"), bytes);
    for (const auto& entry : std::filesystem::directory_iterator(At(""))) {
        EXPECT_NE(entry.path().filename().native().front(), '.') << "what was not finished is gone";
    }
    EXPECT_EQ(Bytes("plain.png"), Sample("plain.png"));
}

}  // namespace
}  // namespace cli
