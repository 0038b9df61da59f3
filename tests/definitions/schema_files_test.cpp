#include <algorithm>

#include "definitions/loading.h"
#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

constexpr const char* kCustomFolder = "base/GLOBAL_PREF/Corvid/XMP/Custom Quillet Panels/4.0/custom/";

sp<SchemaDefinition> NewSchema(const std::string& prefix) {
    return CreateNewSchema("http://test/" + prefix + "/", prefix, u"$$$/test/label=L", u"L", u"", u"D");
}

class SchemaFiles : public support::LibraryTest {
protected:
    UTF16String FilePath(const std::string& name) const {
        return zephcore::PathFromNative((Folder().Path() / name).string());
    }
    std::string Content(const std::string& name) const { return support::ReadFile(Folder().Path() / name); }
    static std::vector<std::string> Prefixes(const Definitions& definitions) {
        std::vector<std::string> prefixes;
        for (const auto& schema : definitions.first) {
            prefixes.push_back(schema->mPrefix);
        }
        return prefixes;
    }
};

TEST_F(SchemaFiles, MakesBareDefinitions) {
    const auto schema = NewSchema("mine");
    EXPECT_EQ(schema->mNamespace, "http://test/mine/");
    EXPECT_EQ(schema->mPrefix, "mine");
    EXPECT_EQ(schema->mLabelZString, u"$$$/test/label=L");
    EXPECT_EQ(schema->mLabel, u"L");
    EXPECT_EQ(schema->mDescriptionZString, u"");
    EXPECT_EQ(schema->mDescription, u"D");
    EXPECT_TRUE(schema->mCustom && !schema->mDynamic && schema->mProperties.empty());
    EXPECT_FALSE(IsSchemaDefinitionAlreadyRegistered(schema));
    EXPECT_EQ(filePathForSchema(schema), u"");

    schema->mProperties = {CreateNewProperty(kPrimitiveType_Bag, "b", u"$$$/b=B", u"B", u"$$$/d=D", u"D")};
    const PropertyDefinition& property = *schema->mProperties[0];
    EXPECT_EQ(property.mType, "bag");
    EXPECT_EQ(property.mDescriptionZString, u"$$$/d=D");
    EXPECT_FALSE(property.mElementType || property.mInternal);
    EXPECT_TRUE(RegisterSchemaDefinition(schema, u"", false));
    EXPECT_EQ(property.mElementType, kTypeText);
    EXPECT_EQ(CreateNewProperty(static_cast<PrimitiveType>(9), "n", u"", u"", u"", u"")->mType, "");
}

TEST_F(SchemaFiles, AreFoundByIdentityAndExactPath) {
    const auto first = NewSchema("one");
    const auto twin = NewSchema("one");
    SetFilePathForSchema(u"/f/A.xml", first);
    SetFilePathForSchema(u"/f/b.xml", twin);
    SetFilePathForSchema(u"/f/b.xml", nullptr);
    EXPECT_EQ(filePathForSchema(first), u"/f/A.xml");
    EXPECT_EQ(filePathForSchema(twin), u"/f/b.xml");
    EXPECT_EQ(filePathForSchema(nullptr), u"");
    for (const char16_t* other : {u"/f/a.xml", u"\\f\\A.xml", u"/f//A.xml", u"/f/A.xml ", u""}) {
        EXPECT_THAT(allSchemasFromSourceFile(other), IsEmpty()) << zephcore::UTF16to8(other);
    }
    SetFilePathForSchema(u"/f/b.xml", first);
    EXPECT_THAT(allSchemasFromSourceFile(u"/f/A.xml"), IsEmpty());
    std::vector<sp<SchemaDefinition>> byAddress{first, twin};
    std::sort(byAddress.begin(), byAddress.end());
    EXPECT_EQ(allSchemasFromSourceFile(u"/f/b.xml"), byAddress);
    EXPECT_THAT(allTypesFromSourceFile(u"/f/b.xml"), IsEmpty());

    Terminate();
    EXPECT_EQ(filePathForSchema(first), u"");
    EXPECT_THAT(allSchemasFromSourceFile(u"/f/b.xml"), IsEmpty());
    Initialize();
}

TEST_F(SchemaFiles, AreWrittenWholeWithTheirFolder) {
    const Definitions definitions{{NewSchema("one")}, {}};
    UTF8String expected;
    WriteDefinitionsToBuffer(definitions.first, definitions.second, expected);
    Folder().Write("there/old.xml", std::string(5000, 'x'));
    for (const char* name : {"there/old.xml", "new/folder/one.xml"}) {
        EXPECT_TRUE(WriteSchemaFile(definitions, zephcore::File(FilePath(name)))) << name;
        EXPECT_EQ(Content(name), expected) << name;
    }
    Folder().Write("file", "not a folder");
    EXPECT_FALSE(WriteSchemaFile(definitions, zephcore::File(FilePath("file/below.xml"))));
    EXPECT_EQ(Content("file"), "not a folder");
    const auto unwritable = NewSchema("two");
    SetFilePathForSchema(FilePath("file/below.xml"), unwritable);
    RewriteSchemaFile(unwritable);
    RewriteSchemaFile(NewSchema("without.file"));
    RewriteSchemaFile(nullptr);
    EXPECT_EQ(Content("file"), "not a folder");
    EXPECT_FALSE(HasErrors());
}

TEST_F(SchemaFiles, HoldAfterRewritingAllThatBelongsToThem) {
    Folder().Write(std::string(kCustomFolder) + "a.xml",
                   "<xmp_definitions><xmp_type name='t.one' extends='text'/><xmp_schema namespace='http://test/a/' "
                   "prefix='tsta'/><xmp_schema namespace='http://test/b/' prefix='tstb' dynamic='true'/>"
                   "</xmp_definitions>");
    Terminate();
    Initialize();
    const UTF16String path = FilePath(std::string(kCustomFolder) + "a.xml");
    const auto schema = NamespaceDefinition("http://test/a/");
    ASSERT_TRUE(schema);
    EXPECT_EQ(filePathForSchema(schema), path);
    EXPECT_THAT(allSchemasFromSourceFile(path), UnorderedElementsAre(schema, NamespaceDefinition("http://test/b/")));
    EXPECT_THAT(allTypesFromSourceFile(path), ElementsAre(TypeIdDefinition("t.one")));
    EXPECT_EQ(filePathForSchema(NamespaceDefinition("http://purl.org/dc/elements/1.1/")), u"");

    // A session of editing: a property more, a schema more, one that was removed from the registry stays in the file.
    schema->mProperties.push_back(CreateNewProperty(kPrimitiveType_Integer, "level", u"", u"Level", u"", u""));
    const auto added = NewSchema("added");
    SetFilePathForSchema(path, added);
    RemoveSchemaDefinition(schema);
    RewriteSchemaFile(added);
    const Definitions written = ParseDocumentForDefinitions(path);
    EXPECT_THAT(Prefixes(written), UnorderedElementsAre("tsta", "tstb", "added"));
    EXPECT_EQ(written.second.at(0)->mName, "t.one");

    Terminate();
    Initialize();
    ASSERT_TRUE(NamespaceDefinition("http://test/a/"));
    EXPECT_EQ(NamespaceDefinition("http://test/a/")->mProperties.at(0)->mLabel, u"Level");
    EXPECT_EQ(NamespaceDefinition("http://test/added/")->mLabelZString, u"$$$/test/label=L");
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(SchemaFiles, OfAPackageHoldWhatThePackageBrought) {
    const auto path =
        zephcore::PathFromNative(Folder()
                                     .Write("package.xml",
                                            "<xmp_definitions><xmp_type name='t.two' extends='text'/>"
                                            "<xmp_schema namespace='http://purl.org/dc/elements/1.1/' prefix='dc'>"
                                            "<xmp_property name='tstExtra' type='text'/></xmp_schema>"
                                            "<xmp_schema namespace='http://test/p/' prefix='tstp'/></xmp_definitions>")
                                     .string());
    const auto [loaded, namespaces, fields] = LoadDefinitionsDocument(path, DocumentOrigin::kExtensionPackage);
    EXPECT_THAT(Prefixes(loaded), ElementsAre("tstp"));
    EXPECT_THAT(namespaces, ElementsAre("http://purl.org/dc/elements/1.1/", "http://test/p/"));
    EXPECT_TRUE(fields.empty());
    EXPECT_EQ(allSchemasFromSourceFile(path), loaded.first);
    EXPECT_EQ(allTypesFromSourceFile(path), loaded.second);
    EXPECT_EQ(filePathForSchema(NamespaceDefinition("http://purl.org/dc/elements/1.1/")), u"");
    EXPECT_FALSE(loaded.first.at(0)->mCustom);
}

}  // namespace
}  // namespace zephmetadata
