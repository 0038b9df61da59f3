#include "zephcore/files.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/temp_folder.h"

namespace zephcore {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

UTF16String Wide(const fs::path& path) {
    return PathFromNative(path.native());
}

template <typename Entry>
std::vector<std::string> Names(const std::vector<Entry>& entries) {
    std::vector<std::string> names;
    for (const Entry& entry : entries) {
        names.push_back(PathToNative(entry.GetName()));
    }
    return names;
}

std::vector<std::string> EntryNames(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

unsigned Mode(const fs::path& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

TEST(NativePath, EveryByteStringComesBack) {
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; ++second) {
            // Behind the first bytes of longer sequences, so that pairs complete them or break them.
            for (const char* before : {"", "\xE2", "\xF0\x9F"}) {
                const std::string name = before + std::string{static_cast<char>(first), static_cast<char>(second)};
                ASSERT_EQ(PathToNative(PathFromNative(name)), name) << first << ' ' << second;
            }
        }
    }
    EXPECT_EQ(PathFromNative("\xC3\xA9\xFF\xF0\x9F\x98\x80\x80"), u"\u00E9\xDCFF\xD83D\xDE00\xDC80");
    EXPECT_EQ(PathToNative(u"a\xD800"), "a\xEF\xBF\xBD") << "a surrogate that stands for no byte";
}

TEST(FileNames, AreTakenApartAtTheLastSlashAndDot) {
    struct Row {
        const char16_t* mPath;
        const char16_t *mName, *mTitle, *mExtension, *mParent;
    };
    for (const Row& row : {Row{u"/a/b.c.xml", u"b.c.xml", u"b.c", u".xml", u"/a"},
                           Row{u"/a.d/b", u"b", u"b", u"", u"/a.d"}, Row{u"/.rc", u".rc", u".rc", u"", u"/"},
                           Row{u"name.", u"name.", u"name", u".", u"."}, Row{u"x/..", u"..", u"..", u"", u"x"}}) {
        const File file{UTF16String(row.mPath)};
        EXPECT_EQ(file.GetName(), row.mName);
        EXPECT_EQ(file.GetTitle(), row.mTitle);
        EXPECT_EQ(file.GetExtension(true), row.mExtension);
        EXPECT_EQ(file.GetExtension(false), UTF16String(row.mExtension).substr(row.mExtension[0] == u'.' ? 1 : 0));
        EXPECT_EQ(file.Parent().FullPath(), row.mParent);
    }
    EXPECT_EQ(Dir(u"/a/b//").FullPath(), u"/a/b");
    EXPECT_EQ(Dir(u"//").FullPath(), u"/");
    EXPECT_EQ(File(Dir(u"/"), u"x").FullPath(), u"/x");
    EXPECT_EQ(Dir(Dir(u"/a"), u"b/c").GetName(), u"c");
}

TEST(DirTest, ListsFilesAndFoldersInByteOrder) {
    const support::TempFolder folder;
    for (const char* name : {"b.xml", "B.xml", "\xFF.xml", "\xC3\xA9.xml", "a"}) {
        folder.Write(name, "x");
    }
    folder.Write("sub/inner", "x");
    fs::create_symlink("b.xml", folder.Path() / "link");
    fs::create_symlink("sub", folder.Path() / "linked");
    fs::create_symlink("nowhere", folder.Path() / "dangling");
    ASSERT_EQ(mkfifo((folder.Path() / "fifo").c_str(), 0600), 0);

    const Dir dir(Wide(folder.Path()));
    EXPECT_THAT(Names(dir.Files()), ElementsAre("B.xml", "a", "b.xml", "link", "\xC3\xA9.xml", "\xFF.xml"));
    EXPECT_THAT(Names(dir.Subfolders()), ElementsAre("linked", "sub"));
    for (const File& file : dir.Files()) {
        EXPECT_TRUE(file.Exists()) << PathToNative(file.FullPath());
    }
    EXPECT_TRUE(Dir(dir, u"missing").Files().empty());
    EXPECT_TRUE(Dir(dir, u"a").Subfolders().empty());
    EXPECT_EQ(FileUtils::ReadFileToString(File(dir, u"fifo").FullPath(), 10), std::nullopt) << "must not wait";
}

TEST(DirTest, IsCreatedAndDeletedWithoutFollowingLinks) {
    const support::TempFolder folder;
    const fs::path outside = folder.Write("outside/kept", "x");
    const Dir dir(Dir(Wide(folder.Path())), u"one");
    EXPECT_FALSE(Dir(dir, u"two").Create()) << "no parent";
    EXPECT_TRUE(dir.Create());
    EXPECT_TRUE(dir.Create()) << "exists already";
    EXPECT_TRUE(FileUtils::EnsureDirectoryExists(Dir(dir, u"two/three").FullPath()));
    fs::create_directory_symlink(outside.parent_path(), folder.Path() / "one/two/link");
    EXPECT_TRUE(dir.Delete());
    EXPECT_FALSE(dir.Exists());
    EXPECT_TRUE(dir.Delete()) << "gone already";
    EXPECT_TRUE(fs::exists(outside));

    fs::create_directory_symlink(outside.parent_path(), folder.Path() / "link");
    EXPECT_TRUE(Dir(Wide(folder.Path() / "link")).Delete());
    EXPECT_FALSE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_FALSE(Dir(Wide(outside)).Delete()) << "a file";
    EXPECT_FALSE(FileUtils::EnsureDirectoryExists(Wide(outside))) << "a file in its place";
    EXPECT_TRUE(fs::exists(outside));
}

TEST(DirTest, TellsAnEmptyFolderFromNone) {
    const support::TempFolder folder;
    const Dir dir(Wide(folder.Path()));
    EXPECT_TRUE(dir.IsReadable());
    EXPECT_FALSE(Dir(dir, u"missing").IsReadable());
    folder.Write("file", "x");
    EXPECT_FALSE(Dir(dir, u"file").IsReadable());
}

TEST(FileUtilsTest, TellsLinksFromWhatTheyLeadTo) {
    const support::TempFolder folder;
    folder.Write("file", "12345");
    fs::create_symlink("file", folder.Path() / "link");
    fs::create_symlink("nowhere", folder.Path() / "dangling");
    struct Row {
        const char* mName;
        bool mIsLink;
        std::optional<std::uint64_t> mLength;
    };
    for (const Row& row : {Row{"file", false, 5}, Row{"link", true, 5}, Row{"dangling", true, std::nullopt},
                           Row{"missing", false, std::nullopt}, Row{".", false, std::nullopt}}) {
        EXPECT_EQ(FileUtils::IsLink(Wide(folder.Path() / row.mName)), row.mIsLink) << row.mName;
        EXPECT_EQ(FileUtils::FileLength(Wide(folder.Path() / row.mName)), row.mLength) << row.mName;
    }
}

TEST(CanonicalPath, FollowsLinksToWhatIsThere) {
    const support::TempFolder folder;
    const fs::path base = fs::canonical(folder.Path());
    folder.Write("sub/\xFF.xml", "x");
    fs::create_directory_symlink("sub", base / "link");
    fs::create_symlink("loop", base / "loop");
    const UTF16String inner = Wide(base / "sub/\xFF.xml");
    EXPECT_EQ(FileUtils::CanonicalPath(Wide(base / "link/../link/./\xFF.xml")), inner);
    EXPECT_EQ(FileUtils::CanonicalPath(Wide(base / "link/")), Wide(base / "sub"));
    EXPECT_EQ(FileUtils::CanonicalPath(u"/"), u"/");
    for (const char* name : {"missing", "loop", "sub/\xFF.xml/below"}) {
        EXPECT_EQ(FileUtils::CanonicalPath(Wide(base / name)), std::nullopt) << name;
    }
    EXPECT_EQ(FileUtils::CanonicalPath(u""), std::nullopt);
}

TEST(FileTest, CreateKeepsWhatIsThere) {
    const support::TempFolder folder;
    const File file(Wide(folder.Path() / "new"));
    EXPECT_FALSE(file.Exists());
    EXPECT_TRUE(file.Create());
    EXPECT_TRUE(file.Exists());
    folder.Write("new", "text");
    EXPECT_TRUE(file.Create());
    EXPECT_EQ(support::ReadFile(folder.Path() / "new"), "text");
    EXPECT_FALSE(File(Wide(folder.Path() / "no/new")).Create());
    EXPECT_FALSE(File(Wide(folder.Path())).Create()) << "a folder";
}

TEST(WriteString, ReplacesTheFileKeepingModeAndLink) {
    const support::TempFolder folder;
    const fs::path target = folder.Write("real/file.xml", "old");
    fs::permissions(target, static_cast<fs::perms>(0640));
    fs::create_symlink("real/file.xml", folder.Path() / "link");
    EXPECT_TRUE(FileUtils::SimpleWriteStringToFile(Wide(folder.Path() / "link"), std::string("n\0w", 3)));
    EXPECT_EQ(support::ReadFile(target), std::string("n\0w", 3));
    EXPECT_EQ(Mode(target), 0640U);
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "link"));
    EXPECT_THAT(EntryNames(target.parent_path()), ElementsAre("file.xml"));

    fs::create_symlink("real/later", folder.Path() / "dangling");
    EXPECT_TRUE(FileUtils::SimpleWriteStringToFile(Wide(folder.Path() / "dangling"), "x"));
    EXPECT_EQ(support::ReadFile(folder.Path() / "real/later"), "x");
    EXPECT_EQ(Mode(folder.Path() / "real/later") & 0100U, 0U);
}

TEST(WriteString, LeavesNothingBehindWhenItFails) {
    const support::TempFolder folder;
    fs::create_directories(folder.Path() / "taken/inside");
    fs::create_symlink("circle", folder.Path() / "taken/circle");
    for (const char* name : {"taken/inside", "taken/circle", "no/file", "taken/", ""}) {
        EXPECT_FALSE(FileUtils::SimpleWriteStringToFile(Wide(folder.Path() / name), "x")) << name;
    }
    EXPECT_FALSE(FileUtils::SimpleWriteStringToFile(u"", "x"));
    const UTF16String withNul = Wide(folder.Path() / "taken/a") + u'\0' + u"b";
    EXPECT_FALSE(FileUtils::SimpleWriteStringToFile(withNul, "x"));
    EXPECT_THAT(EntryNames(folder.Path() / "taken"), ::testing::UnorderedElementsAre("inside", "circle"));
}

TEST(FileUtilsTest, CopiesReadsAndRemoves) {
    const support::TempFolder folder;
    const std::string bytes(200000, 'x');
    const UTF16String from = Wide(folder.Write("from", bytes + "end"));
    const UTF16String to = Wide(folder.Write("to", "old"));
    const UTF16String missing = Wide(folder.Path() / "missing");
    EXPECT_TRUE(FileUtils::Copy(from, to));
    EXPECT_EQ(FileUtils::ReadFileToString(to, bytes.size() + 3), bytes + "end");
    EXPECT_EQ(FileUtils::ReadFileToString(to, bytes.size() + 2), std::nullopt) << "larger than allowed";
    EXPECT_TRUE(FileUtils::Copy(from, from)) << "onto itself";
    EXPECT_EQ(support::ReadFile(folder.Path() / "from").size(), bytes.size() + 3);
    EXPECT_FALSE(FileUtils::Copy(missing, to));
    EXPECT_FALSE(FileUtils::Copy(Wide(folder.Path()), to)) << "a folder";
    EXPECT_EQ(support::ReadFile(folder.Path() / "to").size(), bytes.size() + 3);

    EXPECT_TRUE(FileUtils::RemoveFile(to));
    EXPECT_FALSE(FileUtils::FileOrDirExists(to));
    EXPECT_FALSE(FileUtils::RemoveFile(to));
    fs::create_directory(folder.Path() / "empty");
    EXPECT_FALSE(FileUtils::RemoveFile(Wide(folder.Path() / "empty"))) << "a folder";
    EXPECT_TRUE(FileUtils::IsDir(Wide(folder.Path() / "empty")));
}

TEST(FileStreamTest, WritesAppendsAndReadsBlocks) {
    const support::TempFolder folder;
    const File file(Wide(folder.Write("stream", "longer than what follows")));
    {
        FileStream out(file, FileStream::Mode::kWrite);
        EXPECT_TRUE(out.WriteBlock("abc", 3));
        EXPECT_TRUE(out.WriteText16(u"\u20ACx"));
        EXPECT_EQ(out.Length(), 7U);
    }
    EXPECT_TRUE(FileStream(file, FileStream::Mode::kAppend).WriteBlock("!", 1));
    FileStream in(file, FileStream::Mode::kRead);
    std::string bytes(16, '?');
    EXPECT_EQ(in.ReadBlock(bytes.data(), 4), 4U);
    EXPECT_EQ(in.ReadBlock(bytes.data() + 4, 12), 4U) << "up to the end";
    EXPECT_EQ(bytes.substr(0, 8), std::string("abc\xAC\x20x\0!", 8));
    EXPECT_FALSE(in.WriteBlock("x", 1)) << "opened for reading";

    FileStream missing(File(Wide(folder.Path() / "no/file")), FileStream::Mode::kWrite);
    EXPECT_FALSE(missing.IsOpen() || missing.WriteBlock("x", 1));
    EXPECT_FALSE(FileStream(File(Wide(folder.Path())), FileStream::Mode::kRead).IsOpen()) << "a folder";
}

}  // namespace
}  // namespace zephcore
