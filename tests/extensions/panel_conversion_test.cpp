#include "extensions/panel_fixture.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PanelConversion : public support::PanelTest {
protected:
    /// What the schema file of the package defines: "prefix:name", with a "-" for an internal property, and the types.
    std::vector<std::string> NewProperties() const {
        const UTF16String path = zephcore::PathFromNative((Extensions() / "p" / "schema" / "p.xml").native());
        std::vector<std::string> names;
        const Definitions definitions = ParseDocumentForDefinitions(path);
        for (const auto& schema : definitions.first) {
            for (const auto& property : schema->mProperties) {
                names.push_back((property->mInternal ? "-" : "") + schema->mPrefix + ":" + property->mName);
            }
        }
        for (const auto& type : definitions.second) {
            names.push_back("type " + type->mName);
        }
        return names;
    }
};

TEST_F(PanelConversion, FindsNothingWhereNothingIs) {
    EXPECT_EQ(Convert(), kNone + kNoneForAll);
    Folder().Write(Panels() / "file", "beside the panels");
    WritePanel("no-manifest/p.xml", NewDocument());
    WritePanel("broken", "<panel", NewDocument());
    WritePanel("own", Manifest("type='own' propertyDescriptionFile='p.xml'"), NewDocument());
    WritePanel("no-document/manifest.xml", Manifest());
    WritePanel("no-name", Manifest("type='generic'"), NewDocument());
    EXPECT_EQ(Convert(), kNone + kNoneForAll);
    EXPECT_FALSE(std::filesystem::exists(Extensions())) << "made when there is something for it";
    EXPECT_THAT(Records(), ElementsAre(Record{ErrorKind::GenericPanelManifestError, "invalid XML.",
                                              (Panels() / "broken" / "manifest.xml").string()}));
}

TEST_F(PanelConversion, GoesOnWithTheNextPanel) {
    WritePanel("a", Manifest(), "<xmp_definitions>");
    WritePanel("p", Manifest(), NewDocument());
    WritePanel("q", Manifest(), TitleDocument());
    Folder().Write(Panels("SYSTEM") / "s" / "manifest.xml", Manifest());
    Folder().Write(Panels("SYSTEM") / "s" / "p.xml", NewDocument());
    Folder().Write(Extensions() / "q" / "mine", "x");
    const std::string broken = "FAILURE - Cannot convert 'PANELS/a'. Found invalid XML in 'PANELS/a/p.xml'.\n\n";
    const std::string exists =
        "INFO - Cannot convert 'PANELS/q'. Extension Package folder 'EXTENSIONS/q' already exists.\n\n";
    EXPECT_EQ(Convert(),
              broken + kConverted + exists + "SUCCESS - Converted 'SYSTEM-PANELS/s' to 'SYSTEM-EXTENSIONS/s'\n\n");
    EXPECT_THAT(Records(),
                ElementsAre(Record{ErrorKind::DefinitionParsingError, "Error parsing definitions file: invalid XML.",
                                   (Panels() / "a" / "p.xml").string()}));
    const std::string manifest = Package("manifest.xml");
    WritePanel("p/p.xml", TitleDocument());
    EXPECT_EQ(Convert(), broken +
                             "INFO - Cannot convert 'PANELS/p'. Extension Package folder 'EXTENSIONS/p' already "
                             "exists.\n\n" +
                             exists +
                             "INFO - Cannot convert 'SYSTEM-PANELS/s'. Extension Package folder 'SYSTEM-EXTENSIONS/s' "
                             "already exists.\n\n");
    EXPECT_TRUE(HasPackage("schema/p.xml")) << "a package stays as it is";
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Extensions() / "q"), {}), 1);
    EXPECT_EQ(Package("manifest.xml"), manifest);
    EXPECT_FALSE(NamespaceDefinition("http://test/n/")) << "nothing is registered";
}

struct GenericRow {
    const char* mLabel;
    std::string mAttributes;
    std::vector<int> mGenerations;  // that it is generic for

    friend void PrintTo(const GenericRow& row, std::ostream* out) { *out << row.mAttributes; }
};

class GenericPanels : public support::PanelTest, public ::testing::WithParamInterface<GenericRow> {};

TEST_P(GenericPanels, AreConvertedForTheirGeneration) {
    std::vector<int> converted;
    for (const auto& [number, folder] :
         {std::pair(0, "4.0"), std::pair(1, "3.0"), std::pair(2, "2.0"), std::pair(3, "2.0")}) {
        const std::string panel = "p" + std::to_string(number);
        Folder().Write(Panels("GLOBAL_PREF", folder) / panel / "manifest.xml",
                       Manifest(GetParam().mAttributes + " propertyDescriptionFile='p.xml'"));
        Folder().Write(Panels("GLOBAL_PREF", folder) / panel / "p.xml", TitleDocument());
        Convert(static_cast<OrbVersion>(number));
        if (std::filesystem::exists(Extensions() / panel / "manifest.xml")) {
            converted.push_back(number);
        }
        std::filesystem::remove_all(Panels("GLOBAL_PREF", folder));
    }
    EXPECT_EQ(converted, GetParam().mGenerations);
}

const std::string kLibrary = "panelLibrary='generic' panelClass='examples.panels.generic.GenericPanel'";
const GenericRow kGenericRows[] = {
    {"Type", "type='generic'", {0}},
    {"LibraryAndClass", kLibrary, {1, 2}},
    {"Both", "type='generic' " + kLibrary, {0, 1, 2}},
    {"LibraryAlone", "panelLibrary='generic' panelClass='my.Panel'", {}},
    {"ClassAlone", "panelClass='examples.panels.generic.GenericPanel'", {}},
    {"OtherCase", "type='Generic' panelLibrary='GENERIC' panelClass='examples.panels.generic.GenericPanel'", {}},
};

INSTANTIATE_TEST_SUITE_P(Rows, GenericPanels, ::testing::ValuesIn(kGenericRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(PanelConversion, WritesWhatIsNotRegisteredYet) {
    WritePanel("p", Manifest(),
               Document(Schema("http://test/n/", "n",
                               "<xmp_property name='b' category='internal' label='First'/>"
                               "<xmp_property name='a' category='internal'/>"
                               "<xmp_property name='s/n:f' category='external'/>"
                               "<xmp_property name='b' category='external' label='Second'/>") +
                        Schema("http://purl.org/dc/elements/1.1/", "dc",
                               "<xmp_property name='title' category='external'/>"
                               "<xmp_property name='subtitle' category='internal'/>"
                               "<xmp_property name='subtitle/dc:part' category='external'/>") +
                        Schema("http://test/n/", "other", "<xmp_property name='a' category='internal'/>") +
                        Schema("http://test/n/", "n", "<xmp_property name='c' category='external'/>") +
                        "<xmp_type name='tst.kind' extends='text'/>"));
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
    EXPECT_THAT(NewProperties(), ElementsAre("n:b", "-n:a", "n:s/n:f", "n:c", "-dc:subtitle", "type tst.kind"));
    EXPECT_EQ(Package("view/view.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<views xmlns=\"http://ns.zephmetadata.org/metadata/ui/1.0/\">\n"
              "\t<view xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:n=\"http://test/n/\" "
              "xmlns:other=\"http://test/n/\" name=\"imported_P\">\n"
              "\t\t<property name=\"n:b\" readOnly=\"true\" />\n"
              "\t\t<property name=\"n:a\" />\n\t\t<property name=\"n:s/n:f\" />\n"
              "\t\t<property name=\"n:b\" label=\"Second\" />\n"
              "\t\t<property name=\"dc:title\" />\n\t\t<property name=\"dc:subtitle\" />\n"
              "\t\t<property name=\"dc:subtitle/dc:part\" />\n"
              "\t\t<property name=\"other:a\" />\n\t\t<property name=\"n:c\" />\n\t</view>\n</views>\n");
}

TEST_F(PanelConversion, WritesNoSchemasWithoutNewProperties) {
    WritePanel("p",
               Manifest("name='P &amp; Q' version='2.5' localizationFile='l' type='generic' "
                        "propertyDescriptionFile='p.xml'"),
               Document(Schema("http://purl.org/dc/elements/1.1/", "dc", "<xmp_property name='title'/>") +
                        "<xmp_type name='tst.kind' extends='text'/>"));
    EXPECT_EQ(Convert(), kConverted + kNoneForAll);
    EXPECT_TRUE(std::filesystem::is_empty(Extensions() / "p" / "schema"));
    EXPECT_FALSE(HasPackage("loc"));
    EXPECT_EQ(Package("manifest.xml"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
              "<extension xmlns=\"http://ns.zephmetadata.org/metadata/extension/1.0/\" name=\"P &amp; Q\" "
              "version=\"2.5\" locFilePrefix=\"l\">\n</extension>\n");
}

TEST_F(PanelConversion, MakesPackagesThatLoad) {
    const auto rows = {std::pair(0, std::string("4.0")), std::pair(1, std::string("3.0")),
                       std::pair(2, std::string("2.0"))};
    for (const auto& [number, folder] : rows) {
        const std::string name = "panel" + std::to_string(number);
        const std::filesystem::path panel = Panels("SYSTEM", folder) / name;
        Folder().Write(panel / "manifest.xml",
                       Manifest("name='" + name + "' label='$$$/" + name + "=Panel' version='1' type='generic' " +
                                kLibrary + " propertyDescriptionFile='p.xml' localizationFile='" + name + "'"));
        Folder().Write(panel / "p.xml",
                       Document(Schema("http://test/" + name + "/", name,
                                       "<xmp_property name='new' type='tst." + name +
                                           "' category='external' label='$$$/" + name + "/new=New'/>") +
                                Schema("http://purl.org/dc/elements/1.1/", "dc",
                                       "<xmp_property name='source' type='closedchoice' element_type='text' "
                                       "label='From'><xmp_choice raw_value='1' label='One'/></xmp_property>") +
                                "<xmp_type name='tst." + name + "' extends='integer'/>"));
        Folder().Write(panel / "loc" / (name + "_en_US.dat"),
                       "\"$$$/" + name + "=Pan\u00E9l\"\n\"$$$/" + name + "/new=N\u00E9w\"\n");
        Convert(static_cast<OrbVersion>(number));
    }
    LoadAllViewDefinitions();
    EXPECT_THAT(Records(), IsEmpty());
    EXPECT_EQ(ExtensionPackages().size(), 3U);
    for (const auto& [number, folder] : rows) {
        const std::string name = "panel" + std::to_string(number);
        SCOPED_TRACE(name);
        const sp<ViewDefinition> view = GetViewDefinitionForName("imported_" + name);
        ASSERT_TRUE(view);
        EXPECT_EQ(LocalizedText(view->mLabel), u"Pan\u00E9l");
        ASSERT_EQ(view->mItems.size(), 2U);
        EXPECT_EQ(view->mItems[0]->mPath, PathForExpression(name + ":new"));
        EXPECT_EQ(view->mItems[0]->GetLabel(), u"N\u00E9w");
        EXPECT_EQ(PrimitiveTypeOfPath(view->mItems[0]->mPath), kPrimitiveType_Integer);
        EXPECT_EQ(view->mItems[1]->GetLabel(), u"From");
        EXPECT_EQ(view->mItems[1]->mWidgetName, "dropdown");
        EXPECT_EQ(view->mItems[1]->mChoices.size(), 1U);
    }
}

}  // namespace
}  // namespace zephmetadata
