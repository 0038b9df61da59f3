#include "frame/errors.h"
#include "support/library_test.h"
#include "zephcore/xml.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

constexpr const char* kUI = " xmlns:ui='http://ns.zephmetadata.org/xmp/quillet/ui/'";

class DefinitionsDocument : public support::LibraryTest {
protected:
    static Definitions Parse(const std::string& body, const std::string& rootAttributes = "") {
        return ParseBufferForDefinitions("<xmp_definitions" + rootAttributes + ">" + body + "</xmp_definitions>",
                                         u"source.xml");
    }
    static Record Problem(const std::string& detail, const std::string& context = "source.xml") {
        return {ErrorKind::DefinitionParsingError, "Error parsing definitions file: " + detail, context};
    }
    template <typename Definition>
    static std::vector<std::string> Names(const std::vector<sp<Definition>>& definitions) {
        std::vector<std::string> names;
        for (const auto& definition : definitions) {
            names.push_back(definition->mName);
        }
        return names;
    }
};

TEST_F(DefinitionsDocument, CarriesEveryAttribute) {
    const Definitions definitions = Parse(
        "<xmp_schema namespace='http://a/' prefix='a' label='$$$/a/s=Schema' description='$$$/a/d=What' dynamic='true'>"
        "<xmp_property category='internal' name='p' type='closedchoice' element_type='integer' pattern='[0-9]' "
        "min='-1.5'"
        " max='5' deprecated='true' label='A &amp;quot;B&amp;quot;' ui:multiLine='true'>"
        "<xmp_choice raw_value='1' label='$$$/a/one=One'/><xmp_choice raw_value='2'/>"
        "<xmp_qualifier namespace='http://q/' prefix='q' name='qual'><xmp_choice raw_value='x'/></xmp_qualifier>"
        "</xmp_property></xmp_schema>"
        "<xmp_type name='t' extends='seq' element_type='real'/>"
        "<xmp_type name='u'><xmp_field namespace='http://f/' prefix='f' name='g' type='date'/></xmp_type>",
        kUI);
    ASSERT_EQ(definitions.first.size(), 1U);
    const SchemaDefinition& schema = *definitions.first[0];
    EXPECT_EQ(schema.mNamespace, "http://a/");
    EXPECT_EQ(schema.mPrefix, "a");
    EXPECT_EQ(schema.mLabel, u"Schema");
    EXPECT_EQ(schema.mLabelZString, u"$$$/a/s=Schema");
    EXPECT_EQ(schema.mDescription, u"What");
    EXPECT_TRUE(schema.mDynamic);
    EXPECT_TRUE(schema.mCustom);
    ASSERT_EQ(schema.mProperties.size(), 1U);
    const PropertyDefinition& property = *schema.mProperties[0];
    EXPECT_TRUE(property.mInternal);
    EXPECT_EQ(property.mType, "closedchoice");
    EXPECT_EQ(property.mElementType, "integer");
    EXPECT_EQ(property.mPattern, "[0-9]");
    EXPECT_EQ(property.mMin, -1.5);
    EXPECT_EQ(property.mMax, 5.0);
    EXPECT_EQ(property.mDeprecated, true);
    EXPECT_EQ(property.mLabel, u"A \"B\"");
    EXPECT_TRUE(property.mUIAttributes && property.mUIAttributes->mMultiLine && !property.mUIAttributes->mSeparator);
    ASSERT_EQ(property.mChoices.size(), 2U);
    EXPECT_EQ(property.mChoices[0]->mLabel, u"One");
    EXPECT_EQ(property.mChoices[1]->mLabel, u"2");
    EXPECT_EQ(property.mChoices[1]->mLabelZString, u"");
    ASSERT_EQ(property.mQualifiers.size(), 1U);
    EXPECT_EQ(property.mQualifiers[0]->mNamespace, "http://q/");
    EXPECT_EQ(property.mQualifiers[0]->mChoices.size(), 1U);
    ASSERT_EQ(definitions.second.size(), 2U);
    EXPECT_EQ(definitions.second[0]->mExtends, kPrimitiveType_Seq);
    EXPECT_EQ(definitions.second[1]->mFields.at(0)->mPrefix, "f");
    EXPECT_FALSE(HasErrors());
}

TEST_F(DefinitionsDocument, ReadsMissingAndOddValues) {
    const Definitions definitions = Parse(
        "<xmp_schema namespace='http://a/' prefix='pre'>"
        "<xmp_property name='n' category='Internal' deprecated='TRUE' type='' element_type='' min='' max=''/>"
        "<xmp_property deprecated='false' name='m'/><xmp_property deprecated='' name='o'/></xmp_schema>");
    const SchemaDefinition& schema = *definitions.first.at(0);
    EXPECT_EQ(schema.mLabel, u"pre");
    const PropertyDefinition& property = *schema.mProperties.at(0);
    EXPECT_FALSE(property.mInternal);
    EXPECT_EQ(property.mDeprecated, false);
    EXPECT_FALSE(property.mType || property.mElementType || property.mMin || property.mMax);
    EXPECT_EQ(property.mLabel, u"n");
    EXPECT_EQ(property.mLabelZString, u"");
    EXPECT_EQ(schema.mProperties.at(1)->mDeprecated, false);
    EXPECT_FALSE(schema.mProperties.at(2)->mDeprecated);
}

TEST_F(DefinitionsDocument, AttachesElementsToTheListMadeCurrentLast) {
    const Definitions definitions = Parse(
        "<xmp_schema prefix='s1'><xmp_property name='a'/></xmp_schema>"
        "<xmp_type name='t'/>"
        "<xmp_property name='b'/>"
        "<xmp_schema prefix='s2'><xmp_field name='f'/></xmp_schema>"
        "<xmp_type name='r'><xmp_choice raw_value='1'/><xmp_qualifier name='q'/><xmp_qualifier name='q2'/></xmp_type>");
    EXPECT_THAT(Names(definitions.first.at(0)->mProperties), ElementsAre("a", "b"));
    EXPECT_THAT(Names(definitions.second.at(0)->mFields), ElementsAre("f"));
    EXPECT_EQ(definitions.second.at(1)->mChoices.size(), 1U);
    EXPECT_THAT(Names(definitions.second.at(1)->mQualifiers), ElementsAre("q", "q2"));
    EXPECT_FALSE(HasErrors());
}

TEST_F(DefinitionsDocument, MarksThePropertyBeforeASeparator) {
    const Definitions definitions = Parse(
        "<xmp_schema prefix='s'><ui:separator/><xmp_property name='a'/><ui:separator/><ui:unknown/>"
        "<xmp_property name='b'/></xmp_schema>",
        kUI);
    const auto& properties = definitions.first.at(0)->mProperties;
    EXPECT_TRUE(properties.at(0)->mUIAttributes->mSeparator);
    EXPECT_FALSE(properties.at(1)->mUIAttributes);
    EXPECT_FALSE(HasErrors());
}

TEST_F(DefinitionsDocument, ReportsEachProblemAndGoesOn) {
    struct Row {
        std::string mBody;
        Record mProblem;
    };
    const std::string tooLong(zephcore::kMaxNamespaceBytes + 1, 'p');
    const Row rows[] = {
        {"<xmp_schema prefix='" + tooLong + "'/>",
         Problem("attribute #{quot}prefix#{quot} is too long; it counts as missing.")},
        {"<xmp_property name='x'/>", Problem("invalid property tag #{quot}x#{quot}.")},
        {"<ui:separator/>", Problem("invalid property tag #{quot}#{quot}.")},
        {"<xmp_field name='x'/>", Problem("invalid field tag #{quot}x#{quot}.")},
        {"<xmp_choice/>", Problem("invalid choice tag.")},
        {"<xmp_qualifier/>", Problem("invalid qualifier tag.")},
        {"<oops/>", Problem("invalid definitions tag #{quot}oops#{quot}.")},
        {"<xmp_type name='k' extends='texts'/>", Problem("Entry must extend valid primitive type", "")},
    };
    std::vector<Record> expected;
    for (const Row& row : rows) {
        const Definitions definitions = Parse(row.mBody + "<xmp_type name='good'/>", kUI);
        EXPECT_EQ(definitions.second.back()->mName, "good") << row.mBody;
        expected.push_back(row.mProblem);
    }
    EXPECT_EQ(Records(), expected);
    std::string hopeless;
    for (std::size_t i = 0; i < 2 * RecordLimit::kMostRecords; ++i) {
        hopeless += "<oops/>";
    }
    Parse(hopeless);
    EXPECT_EQ(Records().size(), expected.size() + RecordLimit::kMostRecords);
    EXPECT_EQ(Records().back(), Problem("there are more problems, which are not listed."));
    Parse("<xmp_type name='k' extends='" + std::string(1U << 20U, 'x') + "'/><" + std::string(1U << 20U, 'y') + "/>");
    EXPECT_LT(Records().back().mMessage.size(), 5000U);
}

TEST_F(DefinitionsDocument, KeepsWhatStoodBeforeADocumentBreaksOff) {
    const std::string whole =
        "<xmp_definitions><xmp_schema prefix='a'><xmp_property name='p'/></xmp_schema><xmp_schema prefix='b'>"
        "<xmp_property name='q'/>";
    const Definitions definitions = ParseBufferForDefinitions(whole, u"x");
    ASSERT_EQ(definitions.first.size(), 2U);
    EXPECT_THAT(Names(definitions.first[1]->mProperties), ElementsAre("q"));
    for (const char* bad : {"", "not xml", "<xmp_definitions>&undefined;</xmp_definitions>"}) {
        const Definitions nothing = ParseBufferForDefinitions(bad, u"x");
        EXPECT_TRUE(nothing.first.empty() && nothing.second.empty()) << bad;
    }
    EXPECT_EQ(Records(), std::vector<Record>(4, Problem("invalid XML.", "x")));
}

TEST_F(DefinitionsDocument, IsReadFromAFileAndAppended) {
    const auto path =
        zephcore::UTF8to16(Folder().Write("d.xml", "<xmp_definitions><xmp_type name='t'/></xmp_definitions>").string());
    Definitions definitions;
    EXPECT_TRUE(ParseDocumentForDefinitions(path, definitions));
    EXPECT_TRUE(ParseDocumentForDefinitions(path, definitions));
    EXPECT_THAT(Names(definitions.second), ElementsAre("t", "t"));
    EXPECT_FALSE(ParseDocumentForDefinitions(path + u"x", definitions));
    EXPECT_EQ(Records(), std::vector<Record>({Problem("invalid XML.", zephcore::UTF16to8(path + u"x"))}));
}

}  // namespace
}  // namespace zephmetadata
