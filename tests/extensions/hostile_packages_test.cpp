#include <sys/stat.h>
#include <unistd.h>

#include "extensions/package_fixture.h"

namespace zephmetadata {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kRegistration = ErrorKind::ExtensionPackageRegistrationError;
const std::string kLeadsOutside =
    "Error registering extension package: file or folder leads out of its extension package.";
constexpr std::uintmax_t kTooManyBytes = (std::uintmax_t{64} << 20U) + 1;

class HostilePackages : public support::PackageTest {
protected:
    /// A package with one view, which has no problem.
    HostilePackages() {
        Write("p/manifest.xml", Manifest("A", "1", "locFilePrefix='a'"));
        Write("p/view/v.xml", View("org.test.a"));
        Write("p/loc/a_en_US.dict", "\"$$$/test/tsta=Translated\"\n");
    }

    static bool HasView() { return GetViewDefinitionForName("org.test.a") != nullptr; }
    fs::path At(const std::string& name) const { return GlobalFolder() / name; }
};

TEST_F(HostilePackages, LinksThatLeadOutsideAreNotFollowed) {
    const fs::path outside = Folder().Path() / "outside";
    Folder().Write(outside / "schema.xml", Schema("tsta"));
    Folder().Write(outside / "manifest.xml", Manifest("B", "1"));
    Folder().Write(outside / "a_en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
    Folder().Write(outside / "loc/a_en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
    fs::create_directories(At("p/schema"));
    fs::create_symlink(outside / "schema.xml", At("p/schema/s.xml"));
    fs::create_symlink("nowhere", At("p/view/nowhere.xml"));
    fs::remove(At("p/loc/a_en_US.dict"));
    fs::create_symlink(outside / "a_en_US.dict", At("p/loc/a_en_US.dict"));
    fs::create_directories(At("q"));
    fs::create_symlink(outside / "manifest.xml", At("q/manifest.xml"));
    Write("r/manifest.xml", Manifest("C", "1", "locFilePrefix='a'"));
    fs::create_symlink(outside, At("r/schema"));
    fs::create_symlink(outside, At("r/view"));
    fs::create_symlink(outside / "loc", At("r/loc"));
    LoadAllViewDefinitions();
    const auto leadsOutside = [](const char* context) { return Record{kRegistration, kLeadsOutside, context}; };
    EXPECT_THAT(
        ShortRecords(),
        ElementsAre(leadsOutside("G/q/manifest.xml"), leadsOutside("G/p/loc/a_en_US.dict"),
                    leadsOutside("G/p/schema/s.xml"), leadsOutside("G/r/loc"), leadsOutside("G/r/schema"),
                    leadsOutside("G/r/view"),
                    Record{ErrorKind::ExtensionManifestParsingError,
                           "Error parsing manifest file: neither schema nor view file is present in extension package.",
                           "G/r"}));
    EXPECT_TRUE(HasView()) << "the rest of a package is loaded";
    EXPECT_FALSE(NamespaceDefinition("http://test/tsta/"));
}

TEST_F(HostilePackages, NeighboursWithALongerNameAreOutside) {
    Write("p2/view.xml", View("org.test.other"));
    fs::create_symlink(At("p2/view.xml"), At("p/view/w.xml"));
    LoadAllViewDefinitions();
    EXPECT_THAT(ShortRecords(), ElementsAre(Record{ErrorKind::ExtensionManifestParsingError,
                                                   "Error parsing manifest file: manifest file is missing from "
                                                   "extension package.",
                                                   "G/p2/manifest.xml"},
                                            Record{kRegistration, kLeadsOutside, "G/p/view/w.xml"}));
    EXPECT_FALSE(GetViewDefinitionForName("org.test.other"));
}

TEST_F(HostilePackages, LinksWithinAndToAPackageAreFollowed) {
    fs::rename(At("p"), Folder().Path() / "worked on");
    fs::create_symlink(Folder().Path() / "worked on", At("p"));
    Folder().Write("worked on/parts/s.xml", Schema("tsta"));
    fs::create_symlink("parts", Folder().Path() / "worked on/schema");
    LoadAllViewDefinitions();
    EXPECT_THAT(Records(), IsEmpty());
    EXPECT_TRUE(HasView());
    ASSERT_TRUE(NamespaceDefinition("http://test/tsta/"));
    EXPECT_EQ(NamespaceDefinition("http://test/tsta/")->mLabel, u"Translated");
    EXPECT_EQ(Short(ExtensionPackages().at(0).path), "G/p");
}

TEST_F(HostilePackages, FilesBeyondTheBoundAreNotRead) {
    const std::string comment = "<!-- " + std::string(100, 'x') + " -->";
    for (const char* name : {"p/schema/s.xml", "p/view/w.xml", "p/loc/a_en_US.dict", "q/manifest.xml"}) {
        Write(name, comment);
        fs::resize_file(At(name), kTooManyBytes);  // sparse: it takes no room on the disk
    }
    LoadAllViewDefinitions();
    const std::string tooLarge = "file is larger than 64 MB, the most that is read.";
    EXPECT_THAT(
        ShortRecords(),
        ElementsAre(Record{ErrorKind::ExtensionManifestParsingError, "Error parsing manifest file: " + tooLarge,
                           "G/q/manifest.xml"},
                    Record{kRegistration, "Error registering extension package: " + tooLarge, "G/p/loc/a_en_US.dict"},
                    Record{ErrorKind::DefinitionParsingError, "Error parsing definitions file: " + tooLarge,
                           "G/p/schema/s.xml"},
                    Record{ErrorKind::ViewDefinitionParsingError, "Error parsing view definitions file: " + tooLarge,
                           "G/p/view/w.xml"}));
    EXPECT_TRUE(HasView());
}

/// Works as a user without rights for its life, as the administrator may read everything.
class AsNobody {
public:
    AsNobody() { mDone = geteuid() != 0 || seteuid(65534) == 0; }
    ~AsNobody() {
        if (getuid() == 0 && seteuid(0) != 0) {
            std::abort();
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

    bool IsDone() const { return mDone; }

private:
    bool mDone = false;
};

TEST_F(HostilePackages, WhatCannotBeReadIsReported) {
    Write("p/schema/s.xml", Schema("tsta"));
    Write("q/manifest.xml", Manifest("B", "1"));
    Write("q/view/v.xml", View("org.test.b"));
    Write("q/schema/s.xml", Schema("tstb"));
    WriteUser("own/manifest.xml", Manifest("C", "1"));
    fs::permissions(Folder().Path(), fs::perms::all);
    const fs::path closed[] = {At("p/schema"), At("p/loc/a_en_US.dict"), At("q/view/v.xml"), UserFolder()};
    for (const fs::path& path : closed) {
        fs::permissions(path, fs::perms::none);
    }
    {
        const AsNobody nobody;
        ASSERT_TRUE(nobody.IsDone());
        LoadAllViewDefinitions();
    }
    for (const fs::path& path : closed) {
        fs::permissions(path, fs::perms::owner_all);
    }
    const std::string registering = "Error registering extension package: ";
    EXPECT_THAT(
        ShortRecords(),
        ElementsAre(Record{kRegistration, registering + "folder can't be read.", "U"},
                    Record{kRegistration, registering + "localization file can't be read.", "G/p/loc/a_en_US.dict"},
                    Record{kRegistration, registering + "folder can't be read.", "G/p/schema"},
                    Record{ErrorKind::ViewDefinitionParsingError, "Error parsing view definitions file: invalid XML.",
                           "G/q/view/v.xml"}));
    EXPECT_TRUE(HasView());
    EXPECT_TRUE(NamespaceDefinition("http://test/tstb/"));
}

TEST_F(HostilePackages, PrefixesThatAreNoNamesNameNoFile) {
    Folder().Write(GlobalFolder() / "secret_en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
    for (const char* prefix : {"../../secret", "..", ".", "/", "sub/a"}) {
        Terminate();
        Write("p/manifest.xml", Manifest("A", "1", std::string("locFilePrefix='") + prefix + "'"));
        Write("p/schema/s.xml", Schema("tsta"));
        Write("p/loc/sub/a_en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
        Write("p/loc/_en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
        Write("p/loc/._en_US.dict", "\"$$$/test/tsta=Stolen\"\n");
        Initialize();
        LoadAllViewDefinitions();
        ASSERT_TRUE(NamespaceDefinition("http://test/tsta/")) << prefix;
        EXPECT_EQ(NamespaceDefinition("http://test/tsta/")->mLabel, u"Default") << prefix;
        EXPECT_THAT(Records(), IsEmpty()) << prefix;
    }
}

TEST_F(HostilePackages, NamesMayBeAnything) {
    const std::string name = "line\nbreak \xFF\x1B[2J";
    Write(name + "/manifest.xml", Manifest("two&#10;lines @0 &lt;", "1"));
    Write(name + "/view/v\n.xml", View("org.test.b"));
    Write(name + "/view/bad\n.xml", "<views");
    ASSERT_EQ(mkfifo(At("p/view/pipe.xml").c_str(), 0600), 0);
    fs::create_directories(At("p/view/folder.xml"));
    LoadAllViewDefinitions();
    EXPECT_THAT(support::Names(ExtensionPackages()), ElementsAre("two\nlines @0 <", "A"));
    EXPECT_THAT(ExtensionPackages().front().views, ElementsAre("org.test.b"));
    EXPECT_EQ(Short(ExtensionPackages().front().path), "G/" + name);
    ASSERT_EQ(Records().size(), 1U) << "of the broken view alone";
    EXPECT_EQ(Short(GetErrorInfos().front().context), "G/" + name + "/view/bad\n.xml");
}

}  // namespace
}  // namespace zephmetadata
