#include "support/library_test.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {
namespace {

TEST(DynamicNamespace, IsMadeFromAName) {
    struct Row {
        const char* mName;
        const char* mEnding;
    };
    const Row rows[] = {
        {"notes", "notes/1.0/"},
        {"/notes/", "notes/1.0/"},
        {"//notes//", "/notes//1.0/"},
        {"a/b c", "a/b c/1.0/"},
        {"http://host/x/", "http://host/x/1.0/"},
        {"", "/1.0/"},
        {"/", "/1.0/"},
        {"//", "/1.0/"},
        {"///", "//1.0/"},
    };
    for (const Row& row : rows) {
        const UTF8String made = MakeDynamicSchemaNamespace(row.mName);
        EXPECT_EQ(made, "http://ns.zephmetadata.org/zeph/dynamic/" + std::string(row.mEnding)) << row.mName;
        EXPECT_TRUE(IsDynamicNamespace(made)) << row.mName;
    }
}

TEST(DynamicNamespace, IsToldByTheBaseAnywhereInIt) {
    const std::pair<UTF8String, bool> rows[] = {
        {DynamicNamespaceBase, true},
        {"urn:before:" + DynamicNamespaceBase + "x", true},
        {DynamicNamespaceBase.substr(0, DynamicNamespaceBase.size() - 1), false},
        {"HTTP" + DynamicNamespaceBase.substr(4), false},
        {"http://purl.org/dc/elements/1.1/", false},
        {"", false},
    };
    for (const auto& [namespaceURI, isDynamic] : rows) {
        EXPECT_EQ(IsDynamicNamespace(namespaceURI), isDynamic) << namespaceURI;
    }
}

class DynamicSchemas : public support::LibraryTest {};

TEST_F(DynamicSchemas, AreRegisteredWithoutPropertiesAndTakeAny) {
    std::vector<std::string> prefixes;
    for (const sp<SchemaDefinition>& schema : DynamicSchemaDefinitions()) {
        prefixes.push_back(schema->mPrefix);
        EXPECT_TRUE(schema->mDynamic && !schema->mCustom && schema->mProperties.empty()) << schema->mPrefix;
        EXPECT_EQ(NamespaceDefinition(schema->mNamespace), schema);
        const Path path = PathForExpression(schema->mPrefix + ":anything");
        ASSERT_TRUE(PathEntryDefinition(path)) << schema->mPrefix;
        EXPECT_EQ(PathEntryDefinition(path)->mType, kTypeText);
    }
    EXPECT_THAT(prefixes, ::testing::ElementsAre("xmpPMAssign", "xmpPMMemo"));
    Terminate();
    EXPECT_TRUE(boost::empty(DynamicSchemaDefinitions()));
    Initialize();
}

}  // namespace
}  // namespace zephmetadata
