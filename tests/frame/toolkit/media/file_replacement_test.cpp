#include "frame/toolkit/media/file_replacement.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>

#include "media_fixture.h"

namespace zephmetadata::toolkit {
namespace {

class FileReplacements : public MediaTest {
protected:
    static MediaPath Target(const std::filesystem::path& path) {
        return ResolveWritablePath(zephcore::PathFromNative(path.string()));
    }
    static bool Replace(const std::filesystem::path& path, const std::string& bytes) {
        FileReplacement replacement(Target(path));
        return replacement.Fill(bytes) && replacement.Commit();
    }
    static struct stat Status(const std::filesystem::path& path) {
        struct stat status {};
        EXPECT_EQ(stat(path.c_str(), &status), 0);
        return status;
    }
};

TEST_F(FileReplacements, KeepOwnerModeAndExtendedAttributes) {
    const auto path = mFolder.Write("a.jpg", "old");
    ASSERT_EQ(chmod(path.c_str(), 02640), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), 12345, 23456), 0);
        ASSERT_EQ(chmod(path.c_str(), 02640), 0);
    }
    const bool hasAttributes = setxattr(path.c_str(), "user.note", "kept", 4, 0) == 0;
    const struct stat before = Status(path);
    ASSERT_TRUE(Replace(path, "new content"));
    const struct stat after = Status(path);
    EXPECT_EQ(support::ReadFile(path), "new content");
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, before.st_uid);
    EXPECT_EQ(after.st_gid, before.st_gid);
    char value[8] = {};
    EXPECT_EQ(getxattr(path.c_str(), "user.note", value, sizeof value), hasAttributes ? 4 : -1);
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
}

TEST_F(FileReplacements, KeepLinks) {
    const auto path = mFolder.Write("folder/a.jpg", "old and longer");
    std::filesystem::create_hard_link(path, mFolder.Path() / "hard.jpg");
    std::filesystem::create_symlink("folder/a.jpg", mFolder.Path() / "first.jpg");
    std::filesystem::create_symlink("first.jpg", mFolder.Path() / "second.jpg");
    for (const char* bytes : {"new", "new and much longer than before"}) {
        ASSERT_TRUE(Replace(mFolder.Path() / "second.jpg", bytes));
        EXPECT_EQ(support::ReadFile(path), bytes);
        EXPECT_EQ(support::ReadFile(mFolder.Path() / "hard.jpg"), bytes);
        EXPECT_TRUE(std::filesystem::is_symlink(mFolder.Path() / "second.jpg"));
        EXPECT_TRUE(std::filesystem::is_symlink(mFolder.Path() / "first.jpg"));
        EXPECT_EQ(Status(path).st_nlink, 2U);
    }
}

TEST_F(FileReplacements, LeaveTheFileAloneUntilTheyAreCommitted) {
    const auto path = mFolder.Write("a.jpg", "old");
    {
        FileReplacement replacement(Target(path));
        ASSERT_TRUE(replacement.CopyTarget());
        EXPECT_EQ(support::ReadFile(replacement.WorkingCopy()), "old");
        EXPECT_TRUE(replacement.WorkingCopy().ends_with(".jpg"));
    }
    EXPECT_EQ(support::ReadFile(path), "old");
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg"));
}

TEST_F(FileReplacements, RefuseAFileThatChangedMeanwhile) {
    const auto path = mFolder.Write("a.jpg", "old");
    FileReplacement replacement(Target(path));
    ASSERT_TRUE(replacement.Fill("new"));
    mFolder.Write("a.jpg", "somebody else's");
    EXPECT_FALSE(replacement.Commit());
    EXPECT_EQ(replacement.Status(), FileStatus::kFileStatus_Changed);
    EXPECT_EQ(support::ReadFile(path), "somebody else's");
}

/// Runs @p body in a process that can write files of at most @p bytes, as on a full disk; its exit status.
int WithSmallDisk(rlim_t bytes, const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, bytes};
        _exit(setrlimit(RLIMIT_FSIZE, &limit) == 0 && body() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(FileReplacements, LeaveTheOldFileWhenThereIsNoSpace) {
    const auto path = mFolder.Write("a.jpg", std::string(3000, 'o'));
    const std::string old = support::ReadFile(path);
    for (const bool hasHardLink : {false, true}) {
        if (hasHardLink) {
            std::filesystem::create_hard_link(path, mFolder.Path() / "hard.jpg");
        }
        const auto body = [&] {
            FileReplacement replacement(Target(path));
            return !(replacement.Fill(std::string(100000, 'n')) && replacement.Commit()) &&
                   replacement.Status() == FileStatus::kFileStatus_NotWritten && !replacement.Detail().empty();
        };
        EXPECT_EQ(WithSmallDisk(20000, body), 0) << hasHardLink;
        EXPECT_EQ(support::ReadFile(path), old) << hasHardLink;
    }
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("a.jpg", "hard.jpg"));
}

TEST_F(FileReplacements, LeaveAPhotoAloneWhenTheToolkitRunsOutOfSpace) {
    const auto path = Copy("harbour.jpg");
    const std::string old = support::ReadFile(path);
    for (rlim_t bytes = 0; bytes < 60000; bytes += 3000) {
        const auto body = [&] {
            return Edit(path, std::string(50000, 'v')).mStatus != FileStatus::kFileStatus_Success;
        };
        EXPECT_EQ(WithSmallDisk(bytes, body), 0) << bytes;
        EXPECT_EQ(support::ReadFile(path), old) << bytes;
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("harbour.jpg")) << bytes;
    }
}

}  // namespace
}  // namespace zephmetadata::toolkit
