#include <fcntl.h>
#include <sys/stat.h>

#include <fstream>
#include <map>

#include "cli/cli_runner.h"

namespace cli {
namespace {

/// Bytes that are no UTF-8, and a line end.
const std::string kStrangeName = "a\xff\nb.png";

class Undo : public CliTest {
protected:
    Undo() { std::filesystem::copy_file(At("packet.png"), At(kStrangeName)); }

    using Contents = std::map<std::string, std::string>;
    Contents All() const {
        Contents contents;
        for (const auto& entry : std::filesystem::directory_iterator(At(""))) {
            contents[entry.path().filename()] = support::ReadFile(entry.path());
        }
        return contents;
    }

    std::filesystem::path Journal() const {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(State())) {
            found.push_back(entry.path());
        }
        EXPECT_EQ(found.size(), 1U) << "the last run alone is kept";
        return found.at(0);
    }
};

struct UndoRow {
    const char* mLabel;
    Arguments mArguments;  // of a command that writes
    std::size_t mWritten;  // files that differ afterwards
};

class UndoOf : public Undo, public ::testing::WithParamInterface<UndoRow> {};

TEST_P(UndoOf, PutsEveryByteBackAndForth) {
    std::filesystem::create_hard_link(At("packet.tif"), At("hard.tif"));
    Write("table.csv", "file,dc:source\npacket.mp4,Table\nplain.png,Table\n");
    const Contents before = All();
    const Outcome done = Zephmeta(GetParam().mArguments);
    ASSERT_EQ(done.mStatus, 0) << done;
    const Contents after = All();
    std::size_t written = 0;
    for (const auto& [name, bytes] : after) {
        written += before.contains(name) && before.at(name) == bytes ? 0 : 1;
    }
    ASSERT_EQ(written, GetParam().mWritten);

    EXPECT_EQ(Zephmeta({"undo", "--dry-run"}).mStatus, 0);
    EXPECT_EQ(All(), after);
    EXPECT_EQ(Zephmeta({"undo", "-q"}), (Outcome{0, "", ""}));
    EXPECT_TRUE(All() == before);
    EXPECT_EQ(Zephmeta({"undo", "-q"}), (Outcome{0, "", ""}));
    EXPECT_TRUE(All() == after) << "done again";
    EXPECT_EQ(Zephmeta({"undo"}).mStatus, 0);
    EXPECT_TRUE(All() == before);
    EXPECT_TRUE(std::filesystem::equivalent(At("packet.tif"), At("hard.tif")));
}

const Arguments kEverything = {"set",
                               "harbour.jpg",
                               "packet.gif",
                               "packet.jpg",
                               "packet.mp3",
                               "packet.mp4",
                               "packet.png",
                               "packet.tif",
                               "packet.wav",
                               "drawing.svg",
                               "exif-only.jpg",
                               "plain.jpg",
                               "plain.png",
                               kStrangeName,
                               "sidecar.xmp",
                               "new.xmp",
                               "dc:title=New",
                               "xmp:Rating=2",
                               "--add",
                               "dc:subject=pier",
                               "--gps",
                               "53.5,9.9,12m",
                               "dc:rights=" + std::string(3000, 'x')};

const UndoRow kUndoRows[] = {
    {"EveryFormat", kEverything, 16},
    {"Sidecars", {"set", "packet.png", "plain.jpg", "--sidecar", "always", "dc:title=New"}, 2},
    {"Template", {"apply", "sidecar.xmp", "plain.jpg", "harbour.jpg", "--mode", "replace"}, 2},
    {"Table", {"import", "table.csv"}, 2},
    {"Together", {"set", "--together", "plain.jpg", "packet.png", "dc:source=x"}, 2},
};

INSTANTIATE_TEST_SUITE_P(Rows, UndoOf, ::testing::ValuesIn(kUndoRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(Undo, LeavesWhatChangedSinceAndDoesTheRest) {
    ASSERT_EQ(Zephmeta({"set", "packet.png", "packet.jpg", "plain.jpg", "new.xmp", "xmp:Rating=1"}).mStatus, 0);
    Write("new.xmp", Bytes("new.xmp") + " ");
    std::string other = Bytes("packet.png");
    other[other.find("Rating") + 1] ^= 0x20;
    Write("packet.png", other);
    std::filesystem::rename(At("plain.jpg"), At("away.jpg"));
    EXPECT_EQ(Zephmeta({"undo", "packet.gif"}), (Outcome{1, "", "packet.gif: the last command did not change it\n"}));
    EXPECT_EQ(Zephmeta({"undo"}), (Outcome{1, "packet.jpg: taken back\n",
                                           "new.xmp: it was changed since; left as it is\n"
                                           "packet.png: it was changed since; left as it is\n"
                                           "plain.jpg: no such file\n"}));
    EXPECT_EQ(Bytes("packet.png"), other);
    EXPECT_TRUE(std::filesystem::exists(At("new.xmp")));
    std::filesystem::rename(At("away.jpg"), At("plain.jpg"));
    EXPECT_EQ(Zephmeta({"undo", "--json"}).mOutput,
              "{\"file\":\"plain.jpg\",\"written\":true,\"changed\":[\"xmp:Rating\"]}\n");
    EXPECT_EQ(Bytes("plain.jpg"), Sample("plain.jpg"));
}

TEST_F(Undo, ComparesTheBytesWhenSizeAndTimeAreTheSame) {
    const timespec old[] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, At("packet.png").c_str(), old, 0), 0);
    ASSERT_EQ(Zephmeta({"set", "packet.png", "--keep-time", "xmp:Rating=2"}).mStatus, 0);
    const std::string written = Bytes("packet.png");
    for (const bool isSame : {false, true}) {
        std::string bytes = written;
        bytes[bytes.find("Rating") + 8] ^= isSame ? 0 : 1;
        Write("packet.png", bytes);
        ASSERT_EQ(utimensat(AT_FDCWD, At("packet.png").c_str(), old, 0), 0);
        EXPECT_EQ(Zephmeta({"undo", "--dry-run"}).mStatus, isSame ? 0 : 1);
    }
    EXPECT_EQ(Zephmeta({"undo"}).mStatus, 0);
    struct stat status {};
    ASSERT_EQ(stat(At("packet.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(Bytes("packet.png"), Sample("packet.png"));
}

TEST_F(Undo, IsOfTheLastRunThatWrote) {
    EXPECT_EQ(Zephmeta({"undo"}), (Outcome{1, "", "zephmeta: there is nothing to undo\n"}));
    ASSERT_EQ(Zephmeta({"set", "packet.png", "xmp:Rating=1"}).mStatus, 0);
    ASSERT_EQ(Zephmeta({"set", "packet.jpg", "xmp:Rating=1"}).mStatus, 0);
    ASSERT_EQ(Zephmeta({"set", "packet.jpg", "xmp:Rating=1"}).mOutput, "packet.jpg: unchanged\n");
    ASSERT_EQ(Zephmeta({"set", "packet.gif", "--dry-run", "xmp:Rating=1"}).mStatus, 0);
    struct stat status {};
    ASSERT_EQ(stat(Journal().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(stat(State().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(Zephmeta({"undo"}), (Outcome{0, "packet.jpg: taken back\n", ""}));
}

TEST_F(Undo, IsNotPossibleWithoutAJournalAndStopsNothing) {
    std::filesystem::create_directories(State().parent_path());
    std::ofstream(State()) << "no folder";
    EXPECT_EQ(Zephmeta({"set", "packet.jpg", "packet.png", "-j", "1", "xmp:Rating=1"}),
              (Outcome{0, "packet.jpg: written\npacket.png: written\n",
                       "packet.jpg: written, but neither this nor what follows can be undone (" + State().string() +
                           ": Not a directory)\n"}));
}

/// Whatever is cut off or altered: the files are as they were before or after the run, and other files are left alone.
TEST_F(Undo, SurvivesADamagedJournal) {
    ASSERT_EQ(Zephmeta({"set", "-j", "1", "packet.png", "packet.jpg", "xmp:Rating=1"}).mStatus, 0);
    const std::filesystem::path path = Journal();
    const std::string journal = support::ReadFile(path);
    const Contents after = All();
    const std::map<std::string, std::filesystem::file_time_type> times = {
        {"packet.png", std::filesystem::last_write_time(At("packet.png"))},
        {"packet.jpg", std::filesystem::last_write_time(At("packet.jpg"))}};
    int takenBack = 0;
    const auto store = [&](const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; };
    for (std::size_t at = 0; at < journal.size(); at += 1 + at / 4) {
        std::string bytes = journal;
        bytes[at] = static_cast<char>(bytes[at] ^ 0xFF);
        for (const std::string& damaged : {bytes, journal.substr(0, at)}) {
            store(damaged);
            const Outcome outcome = Zephmeta({"undo"});
            ASSERT_TRUE(outcome.mStatus == 0 || outcome.mStatus == 1) << at << outcome;
            for (const auto& [name, content] : All()) {
                ASSERT_TRUE(content == after.at(name) || content == Sample(name)) << name << at;
            }
            for (const auto& [name, time] : times) {
                takenBack += Bytes(name) == after.at(name) ? 0 : 1;
                Write(name, after.at(name));
                std::filesystem::last_write_time(At(name), time);
            }
        }
    }
    EXPECT_GT(takenBack, 5) << "what is whole is of use";
}

}  // namespace
}  // namespace cli
