#include <algorithm>

#include "support/library_test.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmetadata {
namespace {

constexpr const char* kDublinCore = "http://purl.org/dc/elements/1.1/";

TEST(Lifecycle, IsCountedAndStartsFromScratch) {
    const support::TempFolder folder;
    EXPECT_EQ(NamespaceDefinition(kDublinCore), nullptr);
    Initialize();
    Initialize();
    EXPECT_FALSE(HasErrors()) << Records().front();
    const auto first = NamespaceDefinition(kDublinCore);
    Terminate();
    EXPECT_EQ(NamespaceDefinition(kDublinCore), first);
    Terminate();
    EXPECT_EQ(NamespaceDefinition(kDublinCore), nullptr);
    EXPECT_EQ(TypeIdDefinition("text"), nullptr);
    EXPECT_EQ(StandardSchemaNamespace(kStandardSchema_DC), "");
    EXPECT_TRUE(boost::empty(CommonSchemaDefinitions()));
    Terminate();  // one too many

    Initialize();
    ASSERT_NE(NamespaceDefinition(kDublinCore), nullptr);
    EXPECT_NE(NamespaceDefinition(kDublinCore), first);
    EXPECT_FALSE(HasErrors());
    Terminate();
}

TEST(Lifecycle, LeavesTreesReleasableAfterTheEnd) {
    const support::TempFolder folder;
    Initialize();
    XMPMetaPtr tree = CreateXMPMeta();
    ASSERT_TRUE(tree);
    Terminate();
    tree = nullptr;
    EXPECT_FALSE(CreateXMPMeta());
}

TEST(Lifecycle, TellsVersionsAtAnyTime) {
    const support::TempFolder folder;
    const UTF8String before = GetXMPCoreVersion();
    EXPECT_FALSE(before.empty());
    EXPECT_FALSE(GetXMPFilesVersion().empty());
    Initialize();
    EXPECT_EQ(GetXMPCoreVersion(), before);
    Terminate();
    EXPECT_EQ(GetXMPCoreVersion(), before);
}

/// Custom definitions folders.
class CustomFolder : public ::testing::Test {
protected:
    ~CustomFolder() override { Terminate(); }

    void Write(const std::string& name, const std::string& text) const {
        mFolder.Write("base/GLOBAL_PREF/Corvid/XMP/Custom Quillet Panels/4.0/custom/" + name, text);
    }
    static std::string Schema(const std::string& namespaceURI, const std::string& attributes = "") {
        return "<xmp_definitions><xmp_schema namespace='" + namespaceURI + "' prefix='p" +
               std::to_string(namespaceURI.size()) + "' label='$$$/test/schema=Plain' " + attributes +
               "/></xmp_definitions>";
    }
    static std::string Label(const std::string& namespaceURI) {
        const auto schema = NamespaceDefinition(namespaceURI);
        return schema ? zephcore::UTF16to8(schema->mLabel) : "none";
    }

    support::TempFolder mFolder;
};

TEST_F(CustomFolder, IsReadButForSupersededDocuments) {
    Write("a.xml", Schema("http://test/a"));
    Write("b.XML", Schema("http://test/bb"));
    Write("Mobile.xml", Schema("http://test/ccc"));
    Write("DICOM.xml", Schema("http://test/dddd"));
    Write("mobile.xml", Schema("http://test/eeeee"));
    Write("dynamic.xml", Schema("http://test/ffffff", "dynamic='true'"));
    Initialize();
    EXPECT_TRUE(NamespaceDefinition("http://test/a"));
    EXPECT_FALSE(NamespaceDefinition("http://test/bb"));
    EXPECT_FALSE(NamespaceDefinition("http://test/ccc"));
    EXPECT_FALSE(NamespaceDefinition("http://test/dddd"));
    EXPECT_TRUE(NamespaceDefinition("http://test/eeeee"));
    EXPECT_TRUE(NamespaceDefinition("http://test/a")->mCustom);
    EXPECT_FALSE(NamespaceDefinition("http://test/ffffff")->mCustom);
    const auto common = CommonSchemaDefinitions();
    EXPECT_EQ(std::count(boost::begin(common), boost::end(common), NamespaceDefinition("http://test/a")), 1);
    const auto dynamic = DynamicSchemaDefinitions();
    EXPECT_EQ(std::count(boost::begin(dynamic), boost::end(dynamic), NamespaceDefinition("http://test/ffffff")), 1);
}

TEST_F(CustomFolder, TakesTranslationsFromItsLocFolder) {
    Write("a.xml", Schema("http://test/a"));
    Write("loc/a_en_US.dat", "\"$$$/test/schema=Translated\"\n");
    Initialize();
    EXPECT_EQ(Label("http://test/a"), "Translated");
}

TEST_F(CustomFolder, KeepsItsGoodDocumentsBesideBadOnes) {
    Write("a.xml", "<xmp_definitions><oops/>");
    Write("b.xml", Schema("http://test/a"));
    Initialize();
    EXPECT_TRUE(NamespaceDefinition("http://test/a"));
    const std::string context =
        (mFolder.Path() / "base/GLOBAL_PREF/Corvid/XMP/Custom Quillet Panels/4.0/custom/a.xml").string();
    EXPECT_THAT(
        Records(),
        ::testing::ElementsAre(
            Record{ErrorKind::DefinitionParsingError,
                   "Error parsing definitions file: invalid definitions tag #{quot}oops#{quot}.", context},
            Record{ErrorKind::DefinitionParsingError, "Error parsing definitions file: invalid XML.", context}));
}

}  // namespace
}  // namespace zephmetadata
