#include "cli/cli_runner.h"

namespace cli {
namespace {

/// Commands over several files.
class SeveralFiles : public CliTest {
protected:
    std::vector<Json> Values(const Arguments& files, const std::string& path) const {
        std::vector<Json> values;
        for (const std::string& file : files) {
            values.push_back(Get(file, {path}).at(path));
        }
        return values;
    }
};

TEST_F(SeveralFiles, AreReadAsOne) {
    EXPECT_EQ(Zephmeta({"get", "--together", "packet.jpg", "packet.png", "dc:creator", "dc:title"}),
              Zephmeta({"get", "packet.jpg", "dc:creator", "dc:title"}))
        << "equal files";
    const Outcome outcome =
        Zephmeta({"get", "--together", "--json", "packet.jpg", "harbour.jpg", "dc:creator", "dc:title"});
    EXPECT_EQ(outcome.mStatus, 0);
    const Json shown = Json::parse(outcome.mOutput);
    EXPECT_EQ(shown, (Json{{"dc:creator", {"Ines Calder", "Tomas Wren"}},
                           {"dc:title", {{"state", "mixed"}}},
                           {"display", {{"dc:creator", "Ines Calder; Tomas Wren"}}}}));
    EXPECT_EQ(Zephmeta({"get", "--together", "packet.jpg", "plain.jpg", "dc:title"}),
              (Outcome{0, "(different values)\n", ""}))
        << "a file without XMP has no title";
}

TEST_F(SeveralFiles, HaveALineEach) {
    struct Row {
        const char* mOption;
        std::string mOutput;
    };
    for (const Row& row :
         {Row{"--raw", "packet.jpg: 4\tboats; dawn; early\nplain.jpg: \t\n"},
          Row{"--csv", "file,xmp:Rating,dc:subject\npacket.jpg,4,\"boats; \"\"dawn; early\"\"\"\nplain.jpg,,\n"},
          Row{"--tsv", "file\txmp:Rating\tdc:subject\npacket.jpg\t4\tboats; \"dawn; early\"\nplain.jpg\t\t\n"},
          Row{"--json",
              "{\"file\":\"packet.jpg\",\"xmp:Rating\":\"4\",\"dc:subject\":[\"boats\",\"dawn; early\"],"
              "\"display\":{\"dc:subject\":\"boats; \\\"dawn; early\\\"\"}}\n"
              "{\"file\":\"plain.jpg\",\"xmp:Rating\":null,\"dc:subject\":null}\n"
              "{\"file\":\"broken-packet.jpg\",\"error\":\"its XMP is damaged and left as it is\"}\n"}}) {
        EXPECT_EQ(
            Zephmeta({"get", row.mOption, "packet.jpg", "plain.jpg", "broken-packet.jpg", "xmp:Rating", "dc:subject"}),
            (Outcome{1, row.mOutput, kBrokenPacket}));
    }
}

TEST_F(SeveralFiles, ShareAPanel) {
    const Outcome outcome = Zephmeta({"panel", "packet.jpg", "harbour.jpg", "packet.jpg", "--json"});
    EXPECT_EQ(outcome.mStatus, 0) << outcome;
    const Json panel = Json::parse(outcome.mOutput);
    EXPECT_EQ(panel.at("files"), (Json{"packet.jpg", "harbour.jpg"})) << "each once";
    Json states = Json::object();
    for (const Json& item : panel.at("items")) {
        if (item.contains("path")) {
            states[item.at("path").get<std::string>()] = item.at("state");
        }
    }
    EXPECT_EQ(states.at("dc:title"), "mixed");
    EXPECT_EQ(states.at("dc:creator"), "value");
}

TEST_F(SeveralFiles, AreEditedTogetherAndKeepWhatIsTheirOwn) {
    const Arguments files = {"harbour.jpg", "packet.png", "plain.jpg"};
    const std::vector<Json> titles = Values(files, "dc:title");
    EXPECT_EQ(Zephmeta({"set", "--together", "harbour.jpg", "packet.png", "plain.jpg", "broken-packet.jpg",
                        "dc:source=Together", "--add", "dc:subject=new", "dc:title[?xml:lang=\"de\"]=Hafen"}),
              (Outcome{1, "harbour.jpg: written\npacket.png: written\nplain.jpg: written\n",
                       "broken-packet.jpg: its XMP is damaged and left as it is\n"}));
    EXPECT_EQ(Values(files, "dc:source"), (std::vector<Json>{"Together", "Together", "Together"}));
    EXPECT_EQ(Values(files, "dc:subject"), (std::vector<Json>{Json{"harbour", "boats", "dawn; early", "sea", "new"},
                                                              Json{"boats", "dawn; early", "new"}, Json{"new"}}));
    EXPECT_EQ(Values(files, "dc:title"), (std::vector<Json>{titles[0], titles[1], "Hafen"}));
    const std::vector<Json> documents = Values(files, "xmpMM:DocumentID");
    EXPECT_EQ(std::set<Json>(documents.begin(), documents.end()).size(), files.size()) << "each is its own document";
}

TEST_F(SeveralFiles, AreEditedTogetherAsTheOptionsSay) {
    const auto set = [&](const Arguments& options) {
        Arguments arguments = {"set",  "--together", "packet.jpg",         "harbour.jpg", "plain.jpg",
                               "--if", "dc:title",   "dc:source=Together", "--backup"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Zephmeta(arguments);
    };
    EXPECT_EQ(set({"--dry-run"}), (Outcome{0,
                                           "packet.jpg: would change\n  dc:source: added \"Together\"\n"
                                           "harbour.jpg: would change\n  dc:source: added \"Together\"\n",
                                           ""}));
    EXPECT_TRUE(Bytes("packet.jpg") == Sample("packet.jpg") && Bytes("harbour.jpg") == Sample("harbour.jpg"));
    EXPECT_FALSE(std::filesystem::exists(At("packet.jpg.orig")));
    const std::filesystem::file_time_type longAgo{};
    std::filesystem::last_write_time(At("packet.jpg"), longAgo);
    EXPECT_EQ(set({"--keep-time", "-q"}), (Outcome{0, "", ""}));
    EXPECT_EQ(std::filesystem::last_write_time(At("packet.jpg")), longAgo);
    EXPECT_EQ(Bytes("packet.jpg.orig"), Sample("packet.jpg"));
    EXPECT_EQ(Bytes("plain.jpg"), Sample("plain.jpg")) << "it has no title";
    const auto get = [&](const char* condition) {
        return Zephmeta({"get", "--together", "--if", condition, "harbour.jpg", "plain.jpg", "dc:source"});
    };
    EXPECT_EQ(get("dc:title"), (Outcome{0, "Together\n", ""}));
    EXPECT_EQ(get("dc:title=").mStatus, 2) << "no condition";
}

TEST_F(SeveralFiles, RefuseWhatMakesSenseForOneAlone) {
    for (const char* const assignment : {"dc:subject[1]=x", "xmpMM:DocumentID=x"}) {
        const std::string first = Bytes("harbour.jpg");
        const std::string second = Bytes("packet.png");
        const Outcome outcome = Zephmeta({"set", "--together", "harbour.jpg", "packet.png", assignment});
        EXPECT_EQ(outcome.mStatus, 1) << assignment;
        EXPECT_EQ(outcome.mOutput, "") << assignment;
        EXPECT_THAT(outcome.mErrors, ::testing::HasSubstr("packet.png: ")) << assignment;
        EXPECT_TRUE(Bytes("harbour.jpg") == first && Bytes("packet.png") == second) << assignment;
    }
}

}  // namespace
}  // namespace cli
