#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

#include "extensions/panel_fixture.h"

namespace zephmetadata {
namespace {

namespace fs = std::filesystem;

/// While it lives, no file grows beyond @p bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : mSignal(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit{bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &mBefore);
        std::signal(SIGXFSZ, mSignal);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit mBefore{};
    void (*mSignal)(int);
};

/// While it lives, nothing can be made in folders that are new: they are write-protected, and this process is none that
/// write protection does not hold for.
class ProtectedNewFolders {
public:
    ProtectedNewFolders() : mUser(geteuid()), mMask(umask(0222)) {
        constexpr uid_t kNobody = 65534;
        if (mUser == 0 && seteuid(kNobody) != 0) {
            throw std::runtime_error("cannot give up the rights of root");
        }
    }
    ~ProtectedNewFolders() {
        umask(mMask);
        static_cast<void>(seteuid(mUser));
    }
    ProtectedNewFolders(const ProtectedNewFolders&) = delete;
    ProtectedNewFolders& operator=(const ProtectedNewFolders&) = delete;

private:
    uid_t mUser;
    mode_t mMask;
};

class PanelFailures : public support::PanelTest {
protected:
    static std::string Failed(const std::string& what) {
        return "FAILURE - Cannot convert 'PANELS/p'. " + what + "\n\n";
    }
};

TEST_F(PanelFailures, WithoutTheExtensionsFolderEndIt) {
    WritePanel("a", Manifest(), "<");
    WritePanel("p", Manifest(), TitleDocument());
    WritePanel("q", Manifest(), TitleDocument());
    Folder().Write(Extensions(), "a file in its place");
    EXPECT_EQ(Convert(),
              "FAILURE - Cannot convert 'PANELS/a'. Found invalid XML in 'PANELS/a/p.xml'.\n\n"
              "FAILURE - The folder 'Metadata Extensions' cannot be created. Please make sure to run the "
              "application as administrator.\n\n" +
                  kNoneForAll);
}

TEST_F(PanelFailures, OfThePackageFolder) {
    WritePanel("p", Manifest(), TitleDocument());
    WritePanel("q", Manifest(), TitleDocument());
    Folder().Write(Extensions() / "p", "a file in its place");
    EXPECT_EQ(Convert(), Failed("Extension Package folder 'EXTENSIONS/p' cannot be created. Please make sure to run "
                                "the application as administrator.") +
                             "SUCCESS - Converted 'PANELS/q' to 'EXTENSIONS/q'\n\n" + kNoneForAll);
    EXPECT_EQ(support::ReadFile(Extensions() / "p"), "a file in its place");
}

TEST_F(PanelFailures, OfTheFoldersInItLeaveNoPackage) {
    WritePanel("p", Manifest(), TitleDocument());
    fs::create_directories(Extensions());
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Folder().Path())) {
        fs::permissions(entry, fs::perms::all);
    }
    fs::permissions(Folder().Path(), fs::perms::all);
    std::string log;
    {
        const ProtectedNewFolders withProtection;
        log = Convert();
    }
    EXPECT_EQ(log, Failed("Schema definition folder 'EXTENSIONS/p/schema' cannot be created.") +
                       Failed("View definition folder 'EXTENSIONS/p/view' cannot be created.") + kNoneForAll);
    EXPECT_FALSE(HasPackage());
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
}

struct LimitRow {
    const char* mLabel;
    rlim_t mLimit;
    bool mBringsProperties;
    std::string mFailure;
    std::vector<std::string> mWritten;

    friend void PrintTo(const LimitRow& row, std::ostream* out) { *out << row.mLabel; }
};

class FilesThatFail : public PanelFailures, public ::testing::WithParamInterface<LimitRow> {};

TEST_P(FilesThatFail, AreLogged) {
    const LimitRow& row = GetParam();
    WritePanel("p", Manifest(), row.mBringsProperties ? NewDocument() : TitleDocument());
    WritePanel("p/loc/l.dat", "$$$/k=" + std::string(1000, 'v'));
    std::string log;
    {
        const FileSizeLimit limit(row.mLimit);
        log = Convert();
    }
    EXPECT_EQ(log, Failed(row.mFailure) + kNoneForAll);
    std::vector<std::string> written;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Extensions() / "p")) {
        if (entry.is_regular_file()) {
            written.push_back(fs::relative(entry, Extensions() / "p"));
        }
    }
    EXPECT_THAT(written, ::testing::UnorderedElementsAreArray(row.mWritten));
}

const LimitRow kLimitRows[] = {
    {"Manifest", 20, true, "Manifest file 'EXTENSIONS/p/manifest.xml' cannot be created.", {}},
    {"Schema", 150, true, "Schema definition file 'EXTENSIONS/p/schema/p.xml' cannot be created.", {"manifest.xml"}},
    {"View", 150, false, "View definition file 'EXTENSIONS/p/view/view.xml' cannot be created.", {"manifest.xml"}},
    {"Translations",
     1000,
     true,
     "Localization file 'EXTENSIONS/p/loc/l.dict' cannot be converted.",
     {"manifest.xml", "schema/p.xml", "view/view.xml"}},
};

INSTANTIATE_TEST_SUITE_P(Rows, FilesThatFail, ::testing::ValuesIn(kLimitRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(PanelFailures, FollowNoNamesOutOfThePanel) {
    WritePanel("p.xml", TitleDocument());
    WritePanel("p/sub/p.xml", TitleDocument());
    for (const char* name : {"../p.xml", "sub/p.xml", ".", "..", "/dev/null", "sub", ""}) {
        WritePanel("p/manifest.xml", Manifest("type='generic' propertyDescriptionFile='" + std::string(name) + "'"));
        EXPECT_EQ(Convert(), kNone + kNoneForAll) << name;
    }
}

TEST_F(PanelFailures, FollowNoLinksOutOfThePanel) {
    Folder().Write("elsewhere/p.xml", TitleDocument());
    Folder().Write("elsewhere/manifest.xml", Manifest());
    Folder().Write("elsewhere/a.dat", "$$$/k=v");
    const fs::path elsewhere = Folder().Path() / "elsewhere";

    WritePanel("p/p.xml", TitleDocument());
    fs::create_symlink(elsewhere / "manifest.xml", Panels() / "p" / "manifest.xml");
    WritePanel("q/manifest.xml", Manifest());
    fs::create_symlink(elsewhere / "p.xml", Panels() / "q" / "p.xml");
    EXPECT_EQ(Convert(), kNone + kNoneForAll);

    WritePanel("q/real.xml", TitleDocument());
    fs::remove(Panels() / "p" / "manifest.xml");
    fs::remove(Panels() / "q" / "p.xml");
    WritePanel("p/manifest.xml", Manifest());
    fs::create_symlink("real.xml", Panels() / "q" / "p.xml");
    WritePanel("p/loc/b.dat", "$$$/k=v");
    fs::create_symlink(elsewhere / "a.dat", Panels() / "p" / "loc" / "a.dat");
    fs::create_symlink(elsewhere, Panels() / "q" / "loc");
    fs::create_symlink(elsewhere, Panels() / "r");
    EXPECT_EQ(Convert(), kConverted +
                             "SUCCESS - Converted 'PANELS/q' to 'EXTENSIONS/q'\n\n"
                             "SUCCESS - Converted 'PANELS/r' to 'EXTENSIONS/r'\n\n" +
                             kNoneForAll)
        << "links inside a panel and links to panels are followed";
    EXPECT_TRUE(HasPackage("loc/b.dict"));
    EXPECT_FALSE(HasPackage("loc/a.dict"));
    EXPECT_FALSE(fs::exists(Extensions() / "q" / "loc"));
}

TEST_F(PanelFailures, AreNoneForStrangeNames) {
    for (const char* name : {"a\nb @0 'c'", "\xFF", " "}) {
        WritePanel(name, Manifest(), NewDocument());
    }
    EXPECT_EQ(Convert(),
              "SUCCESS - Converted 'PANELS/ ' to 'EXTENSIONS/ '\n\n"
              "SUCCESS - Converted 'PANELS/a\nb @0 'c'' to 'EXTENSIONS/a\nb @0 'c''\n\n"
              "SUCCESS - Converted 'PANELS/\xFF' to 'EXTENSIONS/\xFF'\n\n" +
                  kNoneForAll);
    EXPECT_TRUE(fs::exists(Extensions() / "\xFF" / "view" / "view.xml"));
}

TEST_F(PanelFailures, AreNoneForDocumentsWithoutSchemas) {
    WritePanel("p", Manifest(), "<xmp_definitions/>");
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
    EXPECT_EQ(Package("view/view.xml"), "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n");
}

}  // namespace
}  // namespace zephmetadata
