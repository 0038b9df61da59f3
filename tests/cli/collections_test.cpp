#include <csignal>
#include <thread>

#include "cli/cli_runner.h"

namespace cli {
namespace {

/// Folders, lists and conditions.
class Collections : public CliTest {
protected:
    Collections() {
        std::filesystem::create_directories(At("tree/inner"));
        std::filesystem::create_directories(At("tree/.hidden"));
        std::filesystem::create_directory_symlink("..", At("tree/inner/loop"));
        Copy("packet.jpg", "tree/b.jpg");
        Copy("plain.jpg", "tree/a.jpg");
        Copy("packet.png", "tree/inner/c.PNG");
        Copy("packet.jpg", "tree/.hidden/no.jpg");
        Copy("packet.jpg", "tree/.no.jpg");
        Write("tree/notes.txt", "no picture");
    }
    void Copy(const std::string& from, const std::string& to) const { std::filesystem::copy_file(At(from), At(to)); }

    std::string Found(Arguments arguments) const {
        arguments.insert(arguments.begin(), "find");
        return Zephmeta(arguments).mOutput;
    }
};

TEST_F(Collections, AreWhatFoldersAndListsName) {
    Write("list", "tree/b.jpg\ntree/a.jpg\r\n\ntree/b.jpg\n");
    struct Row {
        Arguments mArguments;
        std::string mFound;
    };
    const Row rows[] = {
        {{"-r", "tree"}, "tree/a.jpg\ntree/b.jpg\ntree/inner/c.PNG\n"},
        {{"-r", "tree", "--ext", "png,txt"}, "tree/inner/c.PNG\n"},
        {{"-r", "tree/b.jpg", "tree"}, "tree/b.jpg\ntree/a.jpg\ntree/inner/c.PNG\n"},
        {{"@list"}, "tree/b.jpg\ntree/a.jpg\n"},
        {{"-0", "tree/a.jpg"}, std::string("tree/a.jpg\0", 11)},
        {{"tree"}, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Found(row.mArguments), row.mFound) << ::testing::PrintToString(row.mArguments);
    }
}

TEST_F(Collections, AreNarrowedByConditions) {
    ASSERT_EQ(
        Zephmeta({"set", "tree/b.jpg", "exif:DateTimeOriginal=2019-12-31T23:59:59", "dc:rights=Jo Calder"}).mStatus, 0);
    ASSERT_EQ(Zephmeta({"export", "-r", "tree", "--sqlite", "index"}), (Outcome{0, "", ""}));
    const std::string b = "tree/b.jpg\n";
    const std::string bc = b + "tree/inner/c.PNG\n";
    const std::pair<const char*, std::string> rows[] = {
        {"xmp:Rating>=4", bc},
        {"xmp:Rating>4.5", ""},
        {"dc:subject has boats", bc},
        {"dc:subject has \"dawn; early\" and not missing dc:rights", b},
        {"dc:rights contains CALDER", b},
        {"missing xmp:Rating or dc:rights=\"Jo Calder\"", "tree/a.jpg\n" + b},
        {"exif:DateTimeOriginal<2020", b},
        {"exif:DateTimeOriginal=2019-12", b},
        {"exif:DateTimeOriginal>2019", ""},
        {"not (dc:rights or xmp:Rating=4)", "tree/a.jpg\n"},
        {"dc:title=Ebbe and xmp:Rating!=3", bc},
        {"dc:title[?xml:lang=\"DE\"] contains ebb and dc:subject[1]=boats and Iptc4xmpCore:CreatorContactInfo", bc},
    };
    for (const auto& [condition, found] : rows) {
        EXPECT_EQ(Found({"-r", "tree", "--if", condition}), found) << condition;
        EXPECT_EQ(Zephmeta({"find", "--index", "index", condition}), (Outcome{0, found, ""})) << condition;
    }
    const std::pair<const char*, const char*> wrong[] = {
        {"xmp:Rating>", "a value is missing at the end"},
        {"(xmp:Rating", "a bracket is not closed"},
        {"xmp:Rating 4", "\"4\" is left over"},
        {"dc:titel=x", "dc:titel: no such property; did you mean dc:title?"},
        {"dc:title=\"x", "a quote is not closed"},
        {"and", "and: not a metadata path"},
    };
    for (const auto& [condition, reason] : wrong) {
        EXPECT_EQ(Zephmeta({"find", "tree/a.jpg", "--if", condition}),
                  (Outcome{2, "", std::string("zephmeta: --if: ") + reason + "\n"}));
    }
}

TEST_F(Collections, TellApartPathsAndFilesThatLookLikeThem) {
    Copy("packet.png", "dc:title=x.png");
    EXPECT_EQ(Zephmeta({"set", "dc:title=x.png", "xmp:Rating=1"}), (Outcome{0, "dc:title=x.png: written\n", ""}));
    EXPECT_EQ(Zephmeta({"get", "xmp:Rating", "--", "dc:title=x.png"}), (Outcome{0, "1\n", ""}));
}

TEST_F(Collections, HearOfAWrongPathOnce) {
    EXPECT_EQ(Zephmeta({"set", "-r", "tree", "packet.png", "dc:titel=x", "xmp:Rating=9"}),
              (Outcome{1, "",
                       "zephmeta: dc:titel: no such property; did you mean dc:title?\n"
                       "zephmeta: xmp:Rating: \"9\" is more than 5\n"}));
    Copy("packet.png", "b.png");
    EXPECT_EQ(Zephmeta({"get", "packet.png", "b.png", "xmp:Rating", "exif:Model"}),
              (Outcome{1, "packet.png: 4\t\nb.png: 4\t\n",
                       "zephmeta: exif:Model: no such property; did you mean tiff:Model?\n"}));
}

TEST_F(Collections, AreSummedUp) {
    for (int i = 0; i < 12; ++i) {
        Copy("plain.png", "tree/" + std::to_string(100 + i) + ".png");
    }
    Copy("broken-packet.jpg", "tree/z.jpg");
    const Outcome outcome = Zephmeta({"set", "-r", "tree", "-j", "4", "xmp:Rating=4"});
    EXPECT_EQ(outcome.mStatus, 1);
    EXPECT_EQ(outcome.mErrors,
              "tree/z.jpg: its XMP is damaged and left as it is\n"
              "zephmeta: 16 files: 13 written, 2 unchanged, 1 failed (1: its XMP is damaged and left as it is)\n");
    EXPECT_EQ(Zephmeta({"set", "-q", "-r", "tree", "xmp:Rating=4"}).mOutput, "");
}

TEST_F(Collections, GiveTheirPacketsAway) {
    EXPECT_EQ(Zephmeta({"extract", "tree/b.jpg", "-o", "out"}),
              (Outcome{0, "tree/b.jpg: extracted to out/b.jpg.xmp\n", ""}));
    EXPECT_EQ(Zephmeta({"get", "out/b.jpg.xmp", "dc:title"}).mOutput, "Low tide\n");
    EXPECT_EQ(Zephmeta({"extract", "tree/b.jpg", "-o", "out"}).mErrors, "tree/b.jpg: out/b.jpg.xmp is there already\n");
}

/// An interrupt lets the file at hand be finished: every file is old or new, and the summary counts them.
TEST_F(Collections, SurviveAnInterrupt) {
    constexpr int kFiles = 600;
    std::filesystem::create_directory(At("many"));
    for (int i = 0; i < kFiles; ++i) {
        Copy("packet.png", "many/" + std::to_string(1000 + i) + ".png");
    }
    const std::string script =
        "'" + Program() + "' set -r many dc:source=new > out 2> err & p=$!; sleep 0.3; kill -INT $p; wait $p";
    const Outcome outcome = RunProgram(At(""), "/bin/bash", {"-c", script});
    std::size_t written = 0;
    for (const auto& entry : std::filesystem::directory_iterator(At("many"))) {
        const std::string bytes = support::ReadFile(entry.path());
        ASSERT_TRUE(entry.path().filename().native().ends_with(".png")) << entry.path();
        written += bytes == Sample("packet.png") ? 0 : 1;
    }
    if (written < kFiles) {
        EXPECT_EQ(outcome.mStatus, 130) << Bytes("err");
        EXPECT_THAT(Bytes("err"),
                    ::testing::HasSubstr("600 files: " + (written == 0 ? "" : std::to_string(written) + " written, ") +
                                         std::to_string(kFiles - written) + " not begun (interrupted)"));
    }
    EXPECT_EQ(Zephmeta({"undo", "-q"}).mStatus, written == 0 ? 1 : 0);
    for (const auto& entry : std::filesystem::directory_iterator(At("many"))) {
        ASSERT_TRUE(support::ReadFile(entry.path()) == Sample("packet.png")) << entry.path() << " was not taken back";
    }
    EXPECT_EQ(Zephmeta({"set", "-q", "-r", "many", "dc:source=new"}), (Outcome{0, "", ""})) << "the rest";
}

}  // namespace
}  // namespace cli
