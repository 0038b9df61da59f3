#include <fcntl.h>

#include <csignal>
#include <ctime>
#include <random>

#include "files_fixture.h"

namespace zephmetadata::media {
namespace {

/// Processes that are killed, or write at once.
class InterruptedWrites : public FilesTest {
protected:
    /// A content that shows whether it is whole: one letter, as often as belongs to it.
    static std::string Content(char letter) {
        return std::string(200'000 + static_cast<std::size_t>(letter - 'a') % 5 * 50'001, letter);
    }
    static bool IsWhole(const std::string& bytes) { return !bytes.empty() && bytes == Content(bytes.front()); }

    /// Starts a process that runs @p body over and over.
    static pid_t Start(const std::function<void()>& body) {
        const pid_t child = fork();
        if (child == 0) {
            for (;;) {
                body();
            }
        }
        return child;
    }
    static void Kill(pid_t child) {
        kill(child, SIGKILL);
        ASSERT_EQ(waitpid(child, nullptr, 0), child);
    }
    static std::string ReadMedia(const std::filesystem::path& path) {
        const OpenedMedia media = OpenMediaFile(path.string());
        EXPECT_EQ(media.mStatus, kSuccess) << media.mDetail;
        return media.mSource ? ReadRange(*media.mSource, {0, media.mStamp.mSize}).value_or("unreadable") : "";
    }
    std::filesystem::path Journal(const std::filesystem::path& path) const {
        return mFolder.Path() / FilePlace::JournalName(Status(path).st_ino);
    }
};

TEST_F(InterruptedWrites, LeaveTheOldContentOrTheNewOne) {
    std::mt19937 random(4711);  // NOLINT: the same moments each time, as far as the machine lets them be
    std::uniform_int_distribution<long> moments(100'000, 4'000'000);  // nanoseconds
    int leftovers = 0;
    for (const bool hasHardLink : {false, true}) {
        for (const SystemMeans& means : {SystemMeans{true, true}, SystemMeans{false, false}}) {
            const auto path = mFolder.Write("a.jpg", Content('a'));
            const auto other = mFolder.Path() / (hasHardLink ? "b.jpg" : "a.jpg");
            if (hasHardLink && !std::filesystem::exists(other)) {
                std::filesystem::create_hard_link(path, other);
            }
            for (int round = 0; round < 75; ++round) {
                const pid_t child = Start([&, letter = 'b']() mutable {
                    letter = letter == 'z' ? 'a' : static_cast<char>(letter + 1);
                    Replace(path, Content(letter), means);
                });
                const timespec moment{0, moments(random)};
                nanosleep(&moment, nullptr);
                Kill(child);
                leftovers += FolderNames().size() > (hasHardLink ? 2U : 1U) ? 1 : 0;
                ASSERT_TRUE(IsWhole(ReadMedia(round % 2 == 0 ? path : other))) << hasHardLink << round;
                FinishInterruptedWrite(path.string());  // what has the other name's hidden one
                ASSERT_EQ(FolderNames().size(), hasHardLink ? 2U : 1U) << hasHardLink << round;
            }
        }
    }
    EXPECT_GT(leftovers, 10);
}

TEST_F(InterruptedWrites, PutTheOldBytesBackUnlessSomebodyElseWrote) {
    const auto path = mFolder.Write("a.jpg", Content('a'));
    std::filesystem::create_hard_link(path, mFolder.Path() / "b.jpg");
    const std::string half = Content('b').substr(0, 40 * 4096) + Content('a').substr(40 * 4096);
    struct Row {
        const char* mCase;
        std::string mFound;  // in the file when it is opened next
        bool mIsRestored;
    };
    const Row rows[] = {{"untouched", Content('a'), true},
                        {"half", half, true},
                        {"not cut off yet, and longer", Content('b'), true},
                        {"reserved", half + std::string(30'000, '\0'), true},
                        {"one foreign byte", 'x' + half.substr(1), false},
                        {"foreign bytes behind", half + "x", false},
                        {"foreign and short", "short", false},
                        {"foreign and long", Content('e') + "x", false}};
    for (const Row& row : rows) {
        mFolder.Write("a.jpg", Content('a'));
        const struct stat before = Status(path);
        const auto journal = Journal(path);
        while (!std::filesystem::exists(journal)) {  // the process may be killed an instant too late
            ASSERT_TRUE(IsWhole(ReadMedia(path)));
            mFolder.Write("a.jpg", Content('a'));
            const pid_t child = Start([&] {
                Replace(path, Content('b'));
                pause();
            });
            for (int i = 0; i < 1'000'000 && !std::filesystem::exists(journal); ++i) {
            }
            Kill(child);
        }
        mFolder.Write("a.jpg", row.mFound);
        EXPECT_TRUE(ReadMedia(path) == (row.mIsRestored ? Content('a') : row.mFound)) << row.mCase;
        EXPECT_EQ(std::filesystem::exists(journal), !row.mIsRestored) << row.mCase;
        EXPECT_EQ(Status(path).st_ino, before.st_ino);
        if (!row.mIsRestored) {
            EXPECT_EQ(Replace(path, "new").mDetail, journal.string() + " is left of an interrupted write") << row.mCase;
            EXPECT_TRUE(Bytes(path) == row.mFound) << row.mCase;
            std::filesystem::remove(journal);
        }
    }
}

TEST_F(InterruptedWrites, AreNotFinishedByWhatIsNoJournal) {
    const auto path = mFolder.Write("a.jpg", "old");
    const auto journal = Journal(path);
    for (const std::string& bytes :
         {std::string(), std::string("zephmetadata journal 1\n\n"), std::string(500, '\xFF')}) {
        mFolder.Write(journal.filename(), bytes);
        EXPECT_EQ(ReadMedia(path), "old");
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
    }
    std::filesystem::create_symlink(path, journal);
    std::filesystem::create_symlink(path, mFolder.Path() / FilePlace::At(path.string())->PassingName());
    EXPECT_EQ(ReadMedia(path), "old");
    EXPECT_EQ(FolderNames().size(), 3U);
}

/// Each process puts its marks behind what it read; a mark that was written has to stay.
TEST_F(InterruptedWrites, LoseNoEditOfTwoProcessesAtOnce) {
    constexpr int kMarks = 100;
    for (const bool hasHardLink : {false, true}) {
        const auto path = mFolder.Write("a.jpg", "");
        if (hasHardLink) {
            std::filesystem::create_hard_link(path, mFolder.Path() / "b.jpg");
        }
        const auto writer = [&](char name) {
            for (int mark = 0; mark < kMarks;) {
                const OpenedMedia media = OpenMediaFile(path.string());
                const WriteOutcome outcome =
                    ReplaceMedia(path.string(), media.mStamp,
                                 [&](const std::shared_ptr<const ByteSource>& file) {
                                     PlannedEdit edit;
                                     edit.mPlan.Insert(file->Size(), name + std::to_string(mark) + ";", Touch::kBlock);
                                     return edit;
                                 },
                                 {});
                if (outcome.mStatus != kSuccess && outcome.mStatus != kChanged) {
                    return false;
                }
                mark += outcome.mStatus == kSuccess ? 1 : 0;
            }
            return true;
        };
        const pid_t other = fork();
        if (other == 0) {
            _exit(writer('B') ? 0 : 1);
        }
        EXPECT_TRUE(writer('A'));
        int status = -1;
        ASSERT_EQ(waitpid(other, &status, 0), other);
        EXPECT_EQ(status, 0);
        const std::string bytes = Bytes(path);
        for (const char name : {'A', 'B'}) {
            std::size_t at = 0;
            for (int mark = 0; mark < kMarks; ++mark) {
                at = bytes.find(name + std::to_string(mark) + ";", at);
                ASSERT_NE(at, std::string::npos) << name << mark;
            }
        }
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), ';'), 2 * kMarks);
        EXPECT_EQ(FolderNames().size(), hasHardLink ? 2U : 1U);
    }
}

}  // namespace
}  // namespace zephmetadata::media
