#include "support/library_test.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

class Registration : public support::LibraryTest {
protected:
    static Definitions Register(const std::string& body, bool merge = false) {
        return ParseBufferAndRegisterDefinitions("<xmp_definitions>" + body + "</xmp_definitions>", u"f", merge);
    }
    static Record Problem(const std::string& detail) {
        return {ErrorKind::DefinitionRegistrationError, "Error registering definition: " + detail, "f"};
    }
};

TEST_F(Registration, DefaultsMissingTypesToText) {
    struct Row {
        const char* mBody;
        const char* mMessage;  // null: none
    };
    const Row rows[] = {
        {"<xmp_schema namespace='n:1' prefix='r1'><xmp_property name='p'/></xmp_schema>",
         "invalid type for XMP property #{quot}r1:p#{quot} is changed to default type 'text'."},
        {"<xmp_schema namespace='n:2' prefix='r2'><xmp_property name='p' type=''/></xmp_schema>",
         "invalid type for XMP property #{quot}r2:p#{quot} is changed to default type 'text'."},
        {"<xmp_schema namespace='n:3' prefix='r3'><xmp_property name='p' type='bag'/></xmp_schema>",
         "invalid element type for XMP property #{quot}r3:p#{quot} is changed to default type 'text'."},
        {"<xmp_type name='r4'><xmp_field namespace='n:4' prefix='r4' name='f' type='openchoice'/></xmp_type>",
         "invalid element type for XMP property #{quot}r4:f#{quot} is changed to default type 'text'."},
        {"<xmp_type name='r5'><xmp_field namespace='n:5' prefix='r5' name='f'/></xmp_type>",
         "invalid type for XMP property #{quot}r5:f#{quot} is changed to default type 'text'."},
        {"<xmp_type name='r6' extends='openchoice'/>",
         "invalid element type for type #{quot}r6#{quot} is changed to default type 'text'."},
        {"<xmp_schema namespace='n:7' prefix='r7'><xmp_property name='p' type='r6'/></xmp_schema>", nullptr},
        {"<xmp_type name='r8' type='other'/>", nullptr},
        {"<xmp_schema namespace='n:9' prefix='r9'><xmp_property name='p' type='int'/></xmp_schema>",
         "XMP property #{quot}r9:p#{quot} has an invalid type #{quot}int#{quot}."},
        {"<xmp_schema namespace='n:10' prefix='r10'><xmp_property name='p' type='bag' element_type='x'/></xmp_schema>",
         "XMP property #{quot}r10:p#{quot} has an invalid element type #{quot}x#{quot}."},
        {"<xmp_type name='r11' extends='bag' element_type='x'/>",
         "XMP type #{quot}r11#{quot} has an invalid element type #{quot}x#{quot}."},
        {"<xmp_type name='r12'><xmp_field namespace='n:12' prefix='r12' name='f' type='r13'/></xmp_type>"
         "<xmp_type name='r13'/>",
         nullptr},
    };
    std::vector<Record> expected;
    for (const Row& row : rows) {
        const Definitions definitions = Register(row.mBody);
        EXPECT_FALSE(definitions.first.empty() && definitions.second.empty()) << row.mBody;
        if (row.mMessage != nullptr) {
            expected.push_back(Problem(row.mMessage));
        }
    }
    EXPECT_EQ(Records(), expected);
    EXPECT_EQ(NamespaceDefinition("n:1")->mProperties[0]->mType, kTypeText);
    EXPECT_EQ(NamespaceDefinition("n:3")->mProperties[0]->mElementType, kTypeText);
    EXPECT_EQ(ElementTypeIdOf(*NamespaceDefinition("n:7")->mProperties[0]), kTypeText);
    EXPECT_EQ(TypeIdDefinition("r8")->mType, "r8");
}

TEST_F(Registration, RefusesDuplicates) {
    const Definitions twice = Register(
        "<xmp_type name='t'/><xmp_type name='t'/>"
        "<xmp_schema namespace='n:a' prefix='na'/><xmp_schema namespace='n:a' prefix='nb'/>");
    EXPECT_TRUE(twice.first.empty());
    EXPECT_TRUE(twice.second.empty());
    EXPECT_TRUE(NamespaceDefinition("n:a"));
    EXPECT_TRUE(TypeIdDefinition("t"));
    EXPECT_THAT(Records(), ElementsAre(Problem("type definition for #{quot}t#{quot} already exists."),
                                       Problem("schema definition for #{quot}n:a#{quot} already exists.")));
    EXPECT_FALSE(RegisterSchemaDefinition(NamespaceDefinition("n:a"), u"", false));
    EXPECT_TRUE(IsSchemaDefinitionAlreadyRegistered(NamespaceDefinition("n:a")));
    EXPECT_FALSE(IsSchemaDefinitionAlreadyRegistered(nullptr));
}

TEST_F(Registration, MergesIntoTheSchemaThatIsThere) {
    const auto dublinCore = NamespaceDefinition("http://purl.org/dc/elements/1.1/");
    const Definitions definitions = Register(
        "<xmp_schema namespace='http://purl.org/dc/elements/1.1/' prefix='other'>"
        "<xmp_property name='creator' type='text'/><xmp_property name='brandNew' type='bag'/></xmp_schema>"
        "<xmp_schema namespace='n:b' prefix='nb'><xmp_property name='p' type='text'/><xmp_property name='p' "
        "type='text'/>"
        "</xmp_schema>",
        true);
    ASSERT_EQ(definitions.first.size(), 1U);
    EXPECT_EQ(definitions.first[0]->mNamespace, "n:b");
    EXPECT_EQ(definitions.first[0]->mProperties.size(), 2U);
    EXPECT_EQ(dublinCore->mProperties.size(), 16U);
    EXPECT_EQ(dublinCore->mProperties.back()->mElementType, kTypeText);
    EXPECT_THAT(Records(),
                ElementsAre(Problem("property definition for namespace "
                                    "#{quot}http://purl.org/dc/elements/1.1/creator#{quot} already exists."),
                            Problem("invalid element type for XMP property #{quot}dc:brandNew#{quot} is changed to "
                                    "default type 'text'.")));
}

TEST_F(Registration, LeavesStructuresToPackages) {
    const char* const fields =
        "<xmp_definitions><xmp_type name='dimensions'><xmp_field namespace='n:f' prefix='nf' name='depth' type='real'/>"
        "</xmp_type></xmp_definitions>";
    EXPECT_TRUE(ParseBufferAndRegisterDefinitions(fields, u"f", true).second.empty());
    EXPECT_THAT(Records(), ElementsAre(Problem("type definition for #{quot}dimensions#{quot} already exists.")));
}

TEST_F(Registration, TakesNullEntriesOut) {
    const auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = "n:null";
    schema->mPrefix = "nn";
    schema->mProperties = {nullptr, CreateNewProperty(kPrimitiveType_Text, "p", {}, {}, {}, {}), nullptr};
    schema->mProperties[1]->mChoices = {nullptr};
    schema->mProperties[1]->mQualifiers = {nullptr};
    const auto type = std::make_shared<TypeDefinition>();
    type->mName = "null.type";
    type->mFields = {nullptr, std::make_shared<FieldDefinition>()};
    type->mFields[1]->mNamespace = "n:null";
    type->mFields[1]->mPrefix = "nn";
    CheckFieldTypes({nullptr, type}, u"f");
    EXPECT_TRUE(RegisterSchemaDefinition(schema, u"f", false));
    EXPECT_FALSE(RegisterSchemaDefinition(schema, u"f", true));
    EXPECT_TRUE(RegisterTypeDefinition(type, u"f"));
    ASSERT_EQ(schema->mProperties.size(), 1U);
    EXPECT_TRUE(schema->mProperties[0]->mChoices.empty() && schema->mProperties[0]->mQualifiers.empty());
    EXPECT_EQ(type->mFields.size(), 1U);
}

TEST_F(Registration, ReportsNamespacesThatTheToolkitRefuses) {
    EXPECT_EQ(Register("<xmp_schema prefix='p1'/>").first.size(), 1U);
    EXPECT_EQ(Register("<xmp_schema namespace='n:c'/>").first.size(), 1U);
    EXPECT_EQ(Register("<xmp_schema namespace='n:d' prefix='dc'/>").first.size(), 1U);
    const char* refusedField =
        "<xmp_type name='v'><xmp_field namespace='n:e' prefix='dc' name='f' type='text'/></xmp_type>";
    EXPECT_TRUE(Register(refusedField).second.empty());
    EXPECT_FALSE(TypeIdDefinition("v"));
    EXPECT_EQ(Register("<xmp_type name='v'/>").second.size(), 1U);
    EXPECT_TRUE(NamespaceDefinition(""));
    EXPECT_TRUE(NamespaceDefinition("n:d"));
    EXPECT_EQ(NamespaceForPrefix("dc_1_"), "n:d");
    EXPECT_EQ(NamespaceForPrefix("dc_2_"), "n:e");
    const auto refused = [](const std::string& uri, const std::string& prefix) {
        return Problem("namespace #{quot}" + uri + "#{quot} couldn't be registered with prefix #{quot}" + prefix +
                       "#{quot}.");
    };
    EXPECT_THAT(Records(), ElementsAre(refused("", "p1"), refused("n:c", ""), refused("n:d", "dc"),
                                       refused("n:e", "dc"), Problem("invalid Type #{quot}v#{quot}.")));
}

TEST_F(Registration, RemovesByKey) {
    Register("<xmp_type name='t'/><xmp_schema namespace='n:a' prefix='na'/>");
    const auto sameName = std::make_shared<TypeDefinition>();
    sameName->mName = "t";
    const auto sameNamespace = std::make_shared<SchemaDefinition>();
    sameNamespace->mNamespace = "n:a";
    EXPECT_TRUE(RemoveTypeDefinition(sameName));
    EXPECT_FALSE(RemoveTypeDefinition(sameName));
    EXPECT_FALSE(RemoveTypeDefinition(nullptr));
    EXPECT_TRUE(RemoveSchemaDefinition(sameNamespace));
    EXPECT_FALSE(NamespaceDefinition("n:a"));
    EXPECT_FALSE(TypeIdDefinition("t"));
}

TEST(RegistrationOutside, IsRefusedSilently) {
    const support::TempFolder folder;
    const auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = "n:a";
    EXPECT_FALSE(RegisterSchemaDefinition(schema, u"", false));
    EXPECT_FALSE(RegisterTypeDefinition(std::make_shared<TypeDefinition>(), u""));
    EXPECT_FALSE(RemoveSchemaDefinition(schema));
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata
