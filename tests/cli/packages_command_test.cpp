#include "cli/cli_runner.h"

namespace cli {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kManifest = "<extension xmlns='http://ns.zephmetadata.org/metadata/extension/1.0/' ";

class PackagesCommand : public CliTest {
protected:
    /// Runs zephmeta over extension folders that stay for the whole test.
    Outcome Run(const Arguments& arguments) const {
        Arguments all = {"ZEPHCORE_SYSTEM_DIR=" + At("system").string(),
                         "ZEPHCORE_GLOBAL_PREF_DIR=" + At("user").string(), ZEPHMETA_PROGRAM};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProgram(At(""), "env", all);
    }
    Json Packages() const { return Json::parse(Run({"packages", "--json"}).mOutput); }
    fs::path User(const std::string& name) const { return At("user/Corvid/XMP/Metadata Extensions") / name; }
    void WriteUser(const std::string& name, std::string_view bytes) const {
        Write("user/Corvid/XMP/Metadata Extensions/" + name, bytes);
    }
    /// The problems that "check" finds in a document of the user's folder.
    std::vector<std::string> Check(const std::string& name) const {
        const Json found = Json::parse(Run({"check", "--json", User(name).string()}).mOutput);
        std::vector<std::string> messages;
        for (const Json& problem : found["problems"]) {
            messages.push_back(problem["message"]);
        }
        return messages;
    }
};

TEST_F(PackagesCommand, ShowThoseOfTheLibraryAndNameTheFolders) {
    const Outcome text = Run({"packages"});
    EXPECT_EQ(text.mStatus, 0);
    EXPECT_EQ(text.mErrors, "");
    EXPECT_THAT(text.mOutput, HasSubstr("\nIPTC Photo Metadata  2024.2  bundled\n  4 schemas\n"));
    EXPECT_THAT(text.mOutput, EndsWith("no extension packages in these folders:\n  " + At("system").string() +
                                       "/Corvid/XMP/Metadata Extensions\n  " + User("").parent_path().string() + "\n"));
    const Json json = Packages();
    EXPECT_EQ(json["packages"], Json::array());
    EXPECT_EQ(json["problems"], Json::array());
    EXPECT_EQ(json["bundled"].size(), 6U);
    EXPECT_EQ(json["bundled"][1]["views"], Json({"org.zephmetadata.view.iptc-photo-metadata"}));
    EXPECT_EQ(Run({"package", "new", "Image Regions"}),
              (Outcome{1, "", "zephmeta: a package of this name comes with the library\n"}));
}

TEST_F(PackagesCommand, ListWhatEachBroughtAndWhatIsWrong) {
    WriteUser("a/manifest.xml", std::string(kManifest) + "name='A\nB' version='2024.1' locFilePrefix='a'/>");
    WriteUser("a/view/v.xml",
              "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/'>"
              "<view name='org.test.a'><property name='dc:title'/></view>"
              "<view name='com.corvid.xmp.view.gps'/></views>");
    WriteUser("a/schema/s.xml",
              "<xmp_definitions><xmp_schema namespace='http://purl.org/dc/elements/1.1/' prefix='dc'>"
              "<xmp_property name='subtitle' type='text' category='external'/></xmp_schema><xmp_type name='dimensions'>"
              "<xmp_field namespace='urn:d:' prefix='depth' name='d' type='real'/></xmp_type></xmp_definitions>");
    WriteUser("b/readme", "");
    const Outcome text = Run({"packages"});
    EXPECT_EQ(text.mStatus, 0);
    EXPECT_THAT(text.mOutput, EndsWith("A B  2024.1  " + User("a").string() +
                                       "\n  1 schema\n    dc  http://purl.org/dc/elements/1.1/\n  1 field of a "
                                       "structure\n    dimensions  depth:d\n  1 view\n    "
                                       "org.test.a  1 item\n"));
    const std::string noManifest = "Error parsing manifest file: manifest file is missing from extension package.";
    const std::string noFolder =
        "Error parsing manifest file: localization directory is missing from extension package.";
    EXPECT_THAT(text.mErrors, HasSubstr(User("b/manifest.xml").string() + ": " + noManifest + "\n"));
    EXPECT_THAT(text.mErrors, HasSubstr(User("a/loc").string() + ": " + noFolder + "\n"));

    const Json json = Packages();
    EXPECT_EQ(
        json["packages"],
        Json({{{"name", "A B"},
               {"version", 2024.1},
               {"path", User("a").string()},
               {"locFilePrefix", "a"},
               {"schemas", {"http://purl.org/dc/elements/1.1/"}},
               {"fields",
                Json::array({{{"type", "dimensions"}, {"namespace", "urn:d:"}, {"prefix", "depth"}, {"name", "d"}}})},
               {"views", {"org.test.a"}}}}));
    EXPECT_EQ(
        json["problems"],
        Json({{{"kind", "ExtensionManifestParsingError"},
               {"message", noManifest},
               {"context", User("b/manifest.xml").string()}},
              {{"kind", "ExtensionManifestParsingError"}, {"message", noFolder}, {"context", User("a/loc").string()}},
              {{"kind", "ViewDefinitionRegistrationError"},
               {"message",
                "Error registering view definition: View definition for \"com.corvid.xmp.view.gps\" already "
                "exists."},
               {"context", User("a/view/v.xml").string()}}}));
    EXPECT_EQ(Run({"check", User("a/schema/s.xml").string()}).mStatus, 0) << "merged, as it is when it is loaded";
}

TEST_F(PackagesCommand, ANewPackageWorksAtOnce) {
    const Outcome made = Run({"package", "new", "Tide \"Table\" & Co"});
    EXPECT_EQ(made.mStatus, 0) << made;
    EXPECT_THAT(made.mOutput, HasSubstr("zephmeta panel FILE --view org.example.view.tidetableco\n"));
    const Json packages = Packages();
    EXPECT_THAT(packages["problems"], IsEmpty());
    ASSERT_EQ(packages["packages"].size(), 1U);
    EXPECT_EQ(packages["packages"][0]["name"], "Tide \"Table\" & Co");
    EXPECT_THAT(packages["packages"][0]["views"], ElementsAre("org.example.view.tidetableco"));

    EXPECT_EQ(Run({"set", "sidecar.xmp", "tidetableco:note=Spring tide", "tidetableco:state=final"}),
              (Outcome{0, "sidecar.xmp: written\n", ""}));
    EXPECT_EQ(Run({"get", "sidecar.xmp", "tidetableco:note"}).mOutput, "Spring tide\n");
    EXPECT_THAT(Run({"panel", "sidecar.xmp", "--view", "org.example.view.tidetableco"}).mOutput,
                HasSubstr("    Note   Spring tide\n    Count  \u2013\n    State  Final\n"));
    EXPECT_EQ(Run({"validate", "sidecar.xmp"}).mStatus, 0);
    EXPECT_EQ(Run({"set", "sidecar.xmp", "tidetableco:state=lost"}).mStatus, 1) << "it is none of the choices";

    const std::string folder = User("Tide \"Table\" & Co").string();
    for (const char* file : {"manifest.xml", "schema/tidetableco.xml", "view/tidetableco.xml"}) {
        EXPECT_THAT(Run({"check", folder + "/" + file}).mErrors, IsEmpty()) << file;
    }
    const std::string translations = support::ReadFile(folder + "/loc/tidetableco_en_US.dict");
    WriteUser("Tide \"Table\" & Co/loc/tidetableco_nb_NO.dict",
              std::string(translations).replace(translations.find("=Note"), 5, "=Merknad"));
    EXPECT_THAT(Run({"--lang", "nb_NO", "schemas", "tidetableco"}).mOutput, HasSubstr("Merknad\n"));
}

TEST_F(PackagesCommand, ANewPackageTakesNoNameOfAnother) {
    ASSERT_EQ(Run({"package", "new", "dc"}).mStatus, 0);
    ASSERT_EQ(Run({"package", "new", "D.C."}).mStatus, 0);
    ASSERT_EQ(Run({"package", "new", "100"}).mStatus, 0);
    ASSERT_EQ(Run({"package", "new", "\xE6\xBD\xAE", "--folder", "work/packages"}).mStatus, 0);
    fs::rename(At("work/packages/\xE6\xBD\xAE"), User("renamed"));
    const Json packages = Packages();
    EXPECT_THAT(packages["problems"], IsEmpty()) << packages;
    ASSERT_EQ(packages["packages"].size(), 4U);
    std::vector<std::string> views;
    for (const Json& package : packages["packages"]) {
        views.push_back(package["views"].at(0));
    }
    EXPECT_THAT(views, ElementsAre("org.example.view.my100", "org.example.view.dc3", "org.example.view.dc2",
                                   "org.example.view.my"));

    struct Row {
        const char* mName;
        std::string mError;
    };
    for (const Row& row :
         {Row{"dc", "zephmeta: " + User("dc").string() + " exists already\n"},
          Row{"\xE6\xBD\xAE", "zephmeta: a package of this name is installed in " + User("renamed").string() + "\n"},
          Row{"a/b", "zephmeta: \"a/b\" cannot be the name of a folder\n"},
          Row{"..", "zephmeta: \"..\" cannot be the name of a folder\n"},
          Row{"", "zephmeta: \"\" cannot be the name of a folder\n"},
          Row{"a\nb", "zephmeta: \"a\\nb\" cannot be the name of a folder\n"}}) {
        EXPECT_EQ(Run({"package", "new", row.mName}), (Outcome{1, "", row.mError}));
    }
    Write("file", "x");
    EXPECT_EQ(Run({"package", "new", "A", "--folder", "file"}), (Outcome{1, "", "file/A: could not be written\n"}));
}

TEST_F(PackagesCommand, CheckReadsDocumentsAsPartsOfTheirPackage) {
    WriteUser("p/manifest.xml", std::string(kManifest) + "name='P' version='1'/>");
    WriteUser(
        "p/schema/1.xml",
        "<xmp_definitions><xmp_type name='p.state' extends='text'/><xmp_schema namespace='http://test/p/' "
        "prefix='tstp'><xmp_property name='a' type='p.state' category='external'/></xmp_schema></xmp_definitions>");
    WriteUser("p/schema/2.xml",
              "<xmp_definitions><xmp_schema namespace='http://test/p/' prefix='tstp'>"
              "<xmp_property name='b' type='p.state' category='external'/></xmp_schema></xmp_definitions>");
    WriteUser("p/schema/3.xml",
              "<xmp_definitions><xmp_schema namespace='http://test/p/' prefix='tstp'>"
              "<xmp_property name='a' type='text' category='external'/>"
              "<xmp_property name='c' type='no.such' category='external'/></xmp_schema></xmp_definitions>");
    const std::string view =
        "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:t='http://test/p/'><view name='org.test.p'>"
        "<property name='t:b'/></view></views>";
    WriteUser("p/view/1.xml", view);
    WriteUser("p/view/2.xml", view);
    WriteUser("q/manifest.xml", std::string(kManifest) + "name='Q' version='1'/>");
    WriteUser("q/schema/1.xml",
              "<xmp_definitions><xmp_schema namespace='http://test/q/' prefix='tstq'>"
              "<xmp_property name='a' type='p.state' category='external'/>"
              "<xmp_property name='b' type='LocationDetails' category='external'/></xmp_schema></xmp_definitions>");
    Write("loose.xml", support::ReadFile(User("q/schema/1.xml")));
    EXPECT_THAT(Check("p/schema/1.xml"), IsEmpty());
    EXPECT_THAT(Check("p/schema/2.xml"), IsEmpty());
    EXPECT_THAT(Check("q/schema/1.xml"), IsEmpty()) << "the types are other packages', one comes with the library";
    EXPECT_EQ(Run({"check", "loose.xml"}).mErrors, "");
    EXPECT_THAT(Check("p/schema/3.xml"),
                ElementsAre(HasSubstr("property definition for namespace \"http://test/p/a\" already exists."),
                            HasSubstr("XMP property \"tstp:c\" has an invalid type \"no.such\".")));
    EXPECT_THAT(Check("p/view/1.xml"), IsEmpty());
    EXPECT_THAT(Check("p/view/2.xml"), ElementsAre(HasSubstr("a view named \"org.test.p\" already exists")));
    fs::rename(User("p"), At("elsewhere"));
    EXPECT_EQ(Run({"check", "elsewhere/schema/2.xml", "elsewhere/view/1.xml"}),
              (Outcome{0, "elsewhere/schema/2.xml: good\nelsewhere/view/1.xml: good\n", ""}));
}

struct ManifestRow {
    std::string mManifest;
    std::vector<std::string> mProblems;
};

TEST_F(PackagesCommand, CheckReadsManifests) {
    const std::string panel = "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' ";
    const ManifestRow rows[] = {
        {std::string(kManifest) + "/>",
         {"has no name", "has no version", "the package has no .xml file, neither in \"schema\" nor in \"view\""}},
        {std::string(kManifest) + "name='A' version='1.5.3' locFilePrefix='../a'/>",
         {"the version \"1.5.3\" is no number; write one such as 1.5",
          "the locFilePrefix \"../a\" is no beginning of a file name",
          "has a locFilePrefix, but the package has no folder \"loc\"",
          "the package has no .xml file, neither in \"schema\" nor in \"view\""}},
        {"<!-- mine --><e:extension xmlns:e='urn:other' name='A'/>",
         {"the element extension is not read, as it is not in the namespace "
          "\"http://ns.zephmetadata.org/metadata/extension/1.0/\""}},
        {"<extension",
         {"Error parsing manifest file: invalid XML. (every element has to be closed, every reference "
          "known, the text UTF-8)"}},
        {panel + "type='generic' propertyDescriptionFile='properties.xml'/>", {}},
        {panel + "panelLibrary='generic' panelClass='examples.panels.generic.GenericPanel' "
                 "propertyDescriptionFile='missing.xml'/>",
         {"the propertyDescriptionFile \"missing.xml\" is not in the folder of the panel"}},
        {panel + "panelLibrary='generic' propertyDescriptionFile='../properties.xml'/>",
         {"the panel is not generic, so no extension package can be made of it",
          "the propertyDescriptionFile \"../properties.xml\" is not in the folder of the panel"}},
        {panel + "type='generic'/>", {"has no propertyDescriptionFile"}},
        {"<panel type='generic'/>",
         {"the element panel is not read, as it is not in the namespace "
          "\"http://ns.zephmetadata.org/xmp/quillet/\""}},
    };
    WriteUser("properties.xml", "<xmp_definitions/>");
    WriteUser("p/properties.xml", "<xmp_definitions/>");
    for (const ManifestRow& row : rows) {
        WriteUser("p/manifest.xml", row.mManifest);
        EXPECT_EQ(Check("p/manifest.xml"), row.mProblems) << row.mManifest;
    }
}

}  // namespace
}  // namespace cli
