#include "media/files/file_replacement.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include "files_fixture.h"
#include "media/files/file_exchange.h"

namespace zephmetadata::media {
namespace {

constexpr uid_t kNobody = 65534;

/// Long enough for any file system's clock to show it.
void LetTheClockTick() {
    const timespec pause{0, 15'000'000};
    nanosleep(&pause, nullptr);
}

class FileReplacements : public FilesTest {};

TEST_F(FileReplacements, KeepOwnerModeAndExtendedAttributes) {
    for (const SystemMeans& means : kAllMeans) {
        const auto path = mFolder.Write("a.jpg", "old");
        ASSERT_EQ(geteuid() == 0 ? chown(path.c_str(), 12345, 23456) : 0, 0);
        ASSERT_EQ(chmod(path.c_str(), 02640), 0);
        const bool hasAttributes = setxattr(path.c_str(), "user.note", "kept", 4, 0) == 0;
        const struct stat before = Status(path);
        const WriteOutcome outcome = Replace(path, "new content", means);
        ASSERT_EQ(outcome.mStatus, kSuccess) << outcome.mDetail;
        EXPECT_EQ(outcome.mStamp, StampOf(path.string()));
        const struct stat after = Status(path);
        EXPECT_EQ(Bytes(path), "new content");
        EXPECT_NE(after.st_ino, before.st_ino);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_uid, before.st_uid);
        EXPECT_EQ(after.st_gid, before.st_gid);
        char value[8] = {};
        EXPECT_EQ(getxattr(path.c_str(), "user.note", value, sizeof value), hasAttributes ? 4 : -1);
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
    }
}

TEST_F(FileReplacements, KeepLinks) {
    const auto path = mFolder.Write("folder/a.jpg", "old and longer");
    std::filesystem::create_hard_link(path, mFolder.Path() / "hard.jpg");
    std::filesystem::create_symlink("folder/a.jpg", mFolder.Path() / "first.jpg");
    std::filesystem::create_symlink("first.jpg", mFolder.Path() / "second.jpg");
    for (const SystemMeans& means : kAllMeans) {
        for (const char* bytes : {"new", "new and much longer than before", "same size as the one before it."}) {
            const WriteOutcome outcome = Replace(mFolder.Path() / "second.jpg", bytes, means);
            ASSERT_EQ(outcome.mStatus, kSuccess) << outcome.mDetail;
            EXPECT_EQ(outcome.mStamp, StampOf(path.string()));
            EXPECT_EQ(Bytes(path), bytes);
            EXPECT_EQ(Bytes(mFolder.Path() / "hard.jpg"), bytes);
            EXPECT_TRUE(std::filesystem::is_symlink(mFolder.Path() / "second.jpg"));
            EXPECT_TRUE(std::filesystem::is_symlink(mFolder.Path() / "first.jpg"));
            EXPECT_EQ(Status(path).st_nlink, 2U);
        }
    }
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("first.jpg", "folder", "hard.jpg", "second.jpg"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder.Path() / "folder"), {}), 1);
}

TEST_F(FileReplacements, LeaveTheFileAloneUntilTheyAreCommitted) {
    for (const SystemMeans& means : kAllMeans) {
        const auto path = mFolder.Write("a.jpg", "old");
        std::shared_ptr<const FileSource> kept;
        {
            FileReplacement replacement(path.string(), StampOf(path.string()), means);
            ASSERT_TRUE(replacement.Opened().IsSuccess());
            ASSERT_TRUE(replacement.Make(PlanOf(*replacement.Old(), "new")).IsSuccess());
            kept = replacement.New();
        }
        EXPECT_EQ(ReadRange(*kept, {0, 3}), "new");
        EXPECT_EQ(Bytes(path), "old");
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
        EXPECT_EQ(Replace(path, "next", means).mStatus, kSuccess);  // the sources do not keep the locks
    }
}

TEST_F(FileReplacements, RefuseAFileThatChangedMeanwhile) {
    const auto path = mFolder.Path() / "a.jpg";
    struct Row {
        const char* mCase;
        std::function<void()> mChange;
        const char* mAfter;  // null for no file
    };
    const Row rows[] = {
        {"written over", [&] { mFolder.Write("a.jpg", "els"); }, "els"},
        {"written over, time put back",
         [&] {
             const auto time = std::filesystem::last_write_time(path);
             mFolder.Write("a.jpg", "els");
             std::filesystem::last_write_time(path, time);
         },
         "els"},
        {"longer", [&] { mFolder.Write("a.jpg", "longer"); }, "longer"},
        {"replaced", [&] { std::filesystem::rename(mFolder.Write("b.jpg", "els"), path); }, "els"},
        {"replaced by a link",
         [&] {
             std::filesystem::remove(path);
             std::filesystem::create_symlink("other.jpg", path);
         },
         "other"},
        {"removed", [&] { std::filesystem::remove(path); }, nullptr},
    };
    mFolder.Write("other.jpg", "other");
    for (const Row& row : rows) {
        for (const SystemMeans& means : kAllMeans) {
            std::filesystem::remove(path);
            mFolder.Write("a.jpg", "old");
            const FileStamp stamp = StampOf(path.string());
            {
                FileReplacement replacement(path.string(), stamp, means);
                ASSERT_TRUE(replacement.Make(PlanOf(*replacement.Old(), "new")).IsSuccess());
                LetTheClockTick();
                row.mChange();
                EXPECT_EQ(replacement.Commit().mStatus, kChanged) << row.mCase;
            }
            EXPECT_EQ(Replace(path, stamp, "new", means).mStatus,
                      row.mAfter == nullptr ? FileStatus::kFileStatus_NoFile : kChanged)
                << row.mCase;
            EXPECT_EQ(std::filesystem::exists(path), row.mAfter != nullptr) << row.mCase;
            if (row.mAfter != nullptr) {
                EXPECT_EQ(Bytes(path), row.mAfter) << row.mCase;
            }
            EXPECT_EQ(FolderNames().size(), row.mAfter != nullptr ? 2U : 1U) << row.mCase;
        }
    }
}

/// The instant between the last look at a file and its exchange.
TEST_F(FileReplacements, PutBackWhatAnotherProgramLeftInTheLastInstant) {
    const auto path = mFolder.Path() / "a.jpg";
    struct Row {
        const char* mCase;
        std::function<void()> mChange;
        Exchanged mExchanged;
        const char* mAtName;
        const char* mAtHiddenName;
    };
    const Row rows[] = {
        {"nothing", [] {}, Exchanged::kDone, "new", "old"},
        {"change of mode", [&] { chmod(path.c_str(), 0600); }, Exchanged::kDone, "new", "old"},
        {"written over", [&] { mFolder.Write("a.jpg", "els"); }, Exchanged::kTakenBack, "els", "new"},
        {"longer", [&] { mFolder.Write("a.jpg", "longer"); }, Exchanged::kTakenBack, "longer", "new"},
        {"replaced", [&] { std::filesystem::rename(mFolder.Write("b.jpg", "els"), path); }, Exchanged::kTakenBack,
         "els", "new"},
        {"removed", [&] { std::filesystem::remove(path); }, Exchanged::kImpossible, "", "new"},
    };
    for (const Row& row : rows) {
        std::filesystem::remove(path);
        mFolder.Write("a.jpg", "old");
        mFolder.Write("hidden", "new");
        const FileStamp stamp = StampOf(path.string());
        const auto place = FilePlace::At(path.string());
        LetTheClockTick();
        row.mChange();
        EXPECT_EQ(ExchangeFiles(*place, "hidden", stamp), row.mExchanged) << row.mCase;
        EXPECT_EQ(Bytes(path), row.mAtName) << row.mCase;
        EXPECT_EQ(Bytes(mFolder.Path() / "hidden"), row.mAtHiddenName) << row.mCase;
    }
}

TEST_F(FileReplacements, NeverUndoAnotherProgramsReplacement) {
    const auto path = mFolder.Write("a.jpg", "0");
    int changed = 0;
    for (int round = 1; round <= 150; ++round) {
        const std::string number = std::to_string(round);
        const auto other = mFolder.Write("other.jpg", number);
        const pid_t child = fork();
        if (child == 0) {
            const timespec pause{0, round % 50 * 20'000};
            nanosleep(&pause, nullptr);
            _exit(rename(other.c_str(), path.c_str()) == 0 ? 0 : 1);
        }
        const OpenedMedia media = OpenMediaFile(path.string());
        const std::string old = ReadUpTo(*media.mSource, 0, 100);
        const WriteOutcome outcome = Replace(path, media.mStamp, old + "+");
        EXPECT_THAT(outcome.mStatus, ::testing::AnyOf(kSuccess, kChanged)) << outcome.mDetail;
        changed += outcome.mStatus == kChanged ? 1 : 0;
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
        ASSERT_THAT(Bytes(path), ::testing::AnyOf(number, number + "+"));
    }
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
    EXPECT_GT(changed, 0);
}

TEST_F(FileReplacements, LeaveTheOldFileWhenThereIsNoSpace) {
    const auto path = mFolder.Write("a.jpg", std::string(3000, 'o'));
    const std::string old = Bytes(path);
    for (const bool hasHardLink : {false, true}) {
        if (hasHardLink) {
            std::filesystem::create_hard_link(path, mFolder.Path() / "hard.jpg");
        }
        for (const rlim_t room : {rlim_t{0}, rlim_t{2000}, rlim_t{3050}, rlim_t{20000}}) {
            const auto body = [&] {
                const WriteOutcome outcome = Replace(path, std::string(100000, 'n'));
                return outcome.mStatus == FileStatus::kFileStatus_NotWritten && !outcome.mDetail.empty();
            };
            EXPECT_EQ(WithSmallDisk(room, body), 0) << hasHardLink << room;
            EXPECT_EQ(Bytes(path), old) << hasHardLink << room;
        }
    }
    // The new content fits, the journal with the old one does not.
    const auto body = [&] { return Replace(path, "new").mStatus == FileStatus::kFileStatus_NotWritten; };
    EXPECT_EQ(WithSmallDisk(3000, body), 0);
    EXPECT_EQ(Bytes(path), old);
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg", "hard.jpg"));
}

TEST_F(FileReplacements, NeedPermissions) {
    const auto path = mFolder.Write("a.jpg", "old");
    ASSERT_EQ(chmod(mFolder.Path().c_str(), 0755), 0);
    struct Row {
        const char* mCase;
        mode_t mFolderMode;
        mode_t mFileMode;
        FileStatus mStatus;
    };
    // Whoever may write the file but not own it writes over the old bytes: the owner stays.
    const Row rows[] = {{"read-only file", 0777, 0444, FileStatus::kFileStatus_ReadOnly},
                        {"read-only folder", 0755, 0666, FileStatus::kFileStatus_ReadOnly},
                        {"unreadable file", 0777, 0222, FileStatus::kFileStatus_Unreadable},
                        {"somebody else's file", 0777, 0666, kSuccess}};
    if (geteuid() != 0) {
        GTEST_SKIP() << "takes two users";
    }
    for (const Row& row : rows) {
        ASSERT_EQ(chmod(mFolder.Path().c_str(), row.mFolderMode), 0);
        ASSERT_EQ(chmod(path.c_str(), row.mFileMode), 0);
        const struct stat before = Status(path);
        const std::string old = Bytes(path);
        EXPECT_EQ(InChild([&] { return seteuid(kNobody) == 0 && Replace(path, "new").mStatus == row.mStatus; }), 0)
            << row.mCase;
        EXPECT_EQ(Bytes(path), row.mStatus == kSuccess ? "new" : old) << row.mCase;
        EXPECT_EQ(Status(path).st_ino, before.st_ino) << row.mCase;
        EXPECT_EQ(Status(path).st_uid, before.st_uid) << row.mCase;
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg")) << row.mCase;
    }
}

TEST_F(FileReplacements, RefuseWhatIsNoFile) {
    mFolder.Write("folder/a.jpg", "old");
    ASSERT_EQ(mkfifo((mFolder.Path() / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", mFolder.Path() / "dangling");
    const std::pair<const char*, FileStatus> rows[] = {{"folder", FileStatus::kFileStatus_NotAFile},
                                                       {"pipe", FileStatus::kFileStatus_NotAFile},
                                                       {"dangling", FileStatus::kFileStatus_NoFile},
                                                       {"missing", FileStatus::kFileStatus_NoFile},
                                                       {"folder/a.jpg/b", FileStatus::kFileStatus_NoFile}};
    for (const auto& [name, status] : rows) {
        const auto path = mFolder.Path() / name;
        EXPECT_EQ(Replace(path, StampOf(path.string()), "new").mStatus, status) << name;
        EXPECT_EQ(OpenMediaFile(path.string()).mStatus, status) << name;
    }
    EXPECT_EQ(OpenMediaFile("").mStatus, FileStatus::kFileStatus_NoFile);
    EXPECT_EQ(OpenMediaFile(std::string("a\0b", 3)).mStatus, FileStatus::kFileStatus_NoFile);
}

TEST_F(FileReplacements, WaitForEachOther) {
    const auto path = mFolder.Write("a.jpg", "old");
    const FileStamp stamp = StampOf(path.string());
    FileReplacement first(path.string(), stamp);
    ASSERT_TRUE(first.Opened().IsSuccess());
    const WriteOutcome refused = Replace(path, stamp, "new");
    EXPECT_EQ(refused.mStatus, FileStatus::kFileStatus_NotWritten);
    EXPECT_EQ(refused.mDetail, "another process is writing it");
}

}  // namespace
}  // namespace zephmetadata::media
