#include <filesystem>

#include "support/library_test.h"
#include "zephcore/files.h"
#include "zephmetadata/views.h"

namespace zephmetadata {
namespace {

using zephcore::UTF8to16;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";
const std::string kRoot = kDeclaration + "<views xmlns=\"http://ns.zephmetadata.org/metadata/ui/1.0/\">\n";
const std::string kEnd = "\t</view>\n</views>\n";

/// What is registered when the rows are written.
const std::string kRegistered =
    "<xmp_definitions><xmp_type name='tst.place'><xmp_field namespace='http://test/r/' prefix='tstr' name='town' "
    "type='text' label='Town'/></xmp_type><xmp_schema namespace='http://test/r/' prefix='tstr'>"
    "<xmp_property name='plain' type='text' category='external' label='Plain' description='As it is'/>"
    "<xmp_property name='kind' type='openchoice' element_type='text' category='external' label='Kind'/>"
    "<xmp_property name='place' type='tst.place' category='external' label='Place'/></xmp_schema></xmp_definitions>";

Definitions Parsed(const std::string& schemas) {
    return ParseBufferForDefinitions(
        "<xmp_definitions xmlns:ui='http://ns.zephmetadata.org/xmp/quillet/ui/'>" + schemas + "</xmp_definitions>",
        u"schemas");
}

/// A test that writes into a file of its own.
class ViewsWriter : public support::LibraryTest {
protected:
    ViewsWriter() {
        mInfo.name = u"org.test";
        ParseBufferAndRegisterDefinitions(kRegistered, u"registered", false);
    }

    std::string Written(const std::vector<sp<SchemaDefinition>>& presented,
                        const std::vector<sp<SchemaDefinition>>& comparison = {}) const {
        EXPECT_TRUE(WriteViewDefinitionsFileFromSchema(presented, comparison, mInfo, Path()));
        return support::ReadFile(File());
    }
    std::filesystem::path File() const { return Folder().Path() / "new" / "folder" / "view.xml"; }
    UTF16String Path() const { return zephcore::PathFromNative(File().native()); }

    GenericPanelManifestParser::ManifestInfo mInfo;
};

/// Properties of one schema without a label, and how they stand in its view.
struct PropertyRow {
    const char* mLabel;
    std::string mProperties;
    std::string mCompared;  // schemas to compare with
    std::string mWritten;

    friend void PrintTo(const PropertyRow& row, std::ostream* out) { *out << row.mLabel; }
};

class Registered : public ViewsWriter, public ::testing::WithParamInterface<PropertyRow> {};
class Unregistered : public ViewsWriter, public ::testing::WithParamInterface<PropertyRow> {};

TEST_P(Registered, PropertiesAreComparedWithTheirDefinitions) {
    const PropertyRow& row = GetParam();
    const auto presented =
        Parsed("<xmp_schema namespace='http://test/r/' prefix='tstr'>" + row.mProperties + "</xmp_schema>").first;
    EXPECT_EQ(Written(presented, Parsed(row.mCompared).first),
              kRoot + "\t<view xmlns:tstr=\"http://test/r/\" name=\"org.test\">\n" + row.mWritten + kEnd);
}

TEST_P(Unregistered, PropertiesAreComparedWithTheGivenSchemas) {
    const PropertyRow& row = GetParam();
    const auto presented =
        Parsed("<xmp_schema namespace='http://test/n/' prefix='n'>" + row.mProperties + "</xmp_schema>").first;
    EXPECT_EQ(Written(presented, Parsed(row.mCompared).first),
              kRoot + "\t<view xmlns:n=\"http://test/n/\" name=\"org.test\">\n" + row.mWritten + kEnd);
}

const PropertyRow kRegisteredRows[] = {
    {"Same",
     "<xmp_property name='plain' type='text' label='Plain' description='As it is'/>",
     {},
     "\t\t<property name=\"tstr:plain\" />\n"},
    {"OtherLabel",
     "<xmp_property name='plain' type='text' label='Bare' description='As it is'/>",
     {},
     "\t\t<property name=\"tstr:plain\" label=\"Bare\" />\n"},
    {"OtherDescription",
     "<xmp_property name='plain' type='text' label='Plain' description='Not so'/>",
     {},
     "\t\t<property name=\"tstr:plain\" description=\"Not so\" />\n"},
    {"TextsTakenAway", "<xmp_property name='plain' type='text'/>", {}, "\t\t<property name=\"tstr:plain\" />\n"},
    {"MadeInternal", "<xmp_property name='plain' type='text' category='internal' label='Bare' description='Not so'/>",
     "<xmp_schema namespace='x'><xmp_property name='plain' category='external'/></xmp_schema>",
     "\t\t<property name=\"tstr:plain\" label=\"Bare\" description=\"Not so\" />\n"},
    {"NotDefined", "<xmp_property name='new' type='text' category='internal' label='New'/>",
     "<xmp_schema namespace='x'><xmp_property name='new' category='external' label='Old'/></xmp_schema>",
     "\t\t<property name=\"tstr:new\" />\n"},
    {"OpenChoice",
     "<xmp_property name='plain' type='openchoice' element_type='text' label='Plain' description='As it is'>"
     "<xmp_choice raw_value='1' label='One'/><xmp_choice raw_value='&lt;&quot;'/></xmp_property>",
     {},
     "\t\t<property name=\"tstr:plain\" widget=\"dropdown\" openChoice=\"true\">\n"
     "\t\t\t<choice label=\"One\" value=\"1\" />\n\t\t\t<choice value=\"&lt;&quot;\" />\n\t\t</property>\n"},
    {"ClosedChoice",
     "<xmp_property name='plain' type='closedchoice' element_type='text' label='L' description='D'/>",
     {},
     "\t\t<property name=\"tstr:plain\" label=\"L\" description=\"D\" widget=\"dropdown\">\n\t\t</property>\n"},
    {"ChoiceOfAnotherType",
     "<xmp_property name='plain' type='openchoice' element_type='integer'><xmp_choice raw_value='1'/></xmp_property>",
     {},
     "\t\t<property name=\"tstr:plain\" />\n"},
    {"ChoiceOfNoType",
     "<xmp_property name='plain' type='closedchoice'/>",
     {},
     "\t\t<property name=\"tstr:plain\" />\n"},
    {"ChoiceAsBefore",
     "<xmp_property name='kind' type='openchoice' element_type='text' label='Kind'><xmp_choice raw_value='1'/>"
     "</xmp_property>",
     {},
     "\t\t<property name=\"tstr:kind\" />\n"},
    {"ArrayOfTheType",
     "<xmp_property name='plain' type='bag' element_type='text'/>",
     {},
     "\t\t<property name=\"tstr:plain\" />\n"},
    {"Field",
     "<xmp_property name='place/tstr:town' type='openchoice' element_type='text' label='City'/>",
     {},
     "\t\t<property name=\"tstr:place/tstr:town\" label=\"City\" widget=\"dropdown\" openChoice=\"true\">\n"
     "\t\t</property>\n"},
    {"FieldAsDefined",
     "<xmp_property name='place/tstr:town' type='text' label='Town'/>",
     {},
     "\t\t<property name=\"tstr:place/tstr:town\" />\n"},
    {"FieldsThatAreNone",
     "<xmp_property name='place/tstr:gown' label='A'/><xmp_property name='plain/tstr:town' label='B'/>"
     "<xmp_property name='place/town' label='C'/><xmp_property name='place/dc:town' label='D'/>",
     {},
     "\t\t<property name=\"tstr:place/tstr:gown\" />\n\t\t<property name=\"tstr:plain/tstr:town\" />\n"
     "\t\t<property name=\"tstr:place/town\" />\n\t\t<property name=\"tstr:place/dc:town\" />\n"},
    {"Hints",
     "<ui:separator separator='true'/><xmp_property name='plain' ui:multiLine='true' description='As it is'/>"
     "<ui:separator/><ui:separator/><xmp_property name='kind'/>",
     {},
     "\t\t<property name=\"tstr:plain\" multiLines=\"3\" />\n\t\t<separator/>\n\t\t<property name=\"tstr:kind\" />\n"},
};

const PropertyRow kUnregisteredRows[] = {
    {"NothingToCompareWith",
     "<xmp_property name='p' type='openchoice' element_type='text' category='internal' label='P'>"
     "<xmp_choice raw_value='1'/></xmp_property>",
     {},
     "\t\t<property name=\"n:p\" />\n"},
    {"FirstThatDiffers", "<xmp_property name='p' category='internal' label='P' description='D'/>",
     "<xmp_schema namespace='http://test/n/'><xmp_property name='p' category='internal' label='P' description='D'/>"
     "<xmp_property name='q' label='Q'/></xmp_schema><xmp_schema namespace='http://test/other/'>"
     "<xmp_property name='p' category='internal' label='Q' description='D'/>"
     "<xmp_property name='p' category='external' label='P' description='E'/></xmp_schema>",
     "\t\t<property name=\"n:p\" label=\"P\" />\n"},
    {"MadeInternal", "<xmp_property name='p' category='internal' label='P' description='D'/>",
     "<xmp_schema namespace='n'><xmp_property name='p' category='external' label='P' description='E'/></xmp_schema>",
     "\t\t<property name=\"n:p\" readOnly=\"true\" description=\"D\" />\n"},
    {"MadeInternalAlone", "<xmp_property name='p' category='internal' label='P'/>",
     "<xmp_schema namespace='n'><xmp_property name='p' category='external' label='P'/></xmp_schema>",
     "\t\t<property name=\"n:p\" readOnly=\"true\" />\n"},
    {"MadeExternal", "<xmp_property name='p' category='external' label='P'/>",
     "<xmp_schema namespace='n'><xmp_property name='p' category='internal' label='P'/></xmp_schema>",
     "\t\t<property name=\"n:p\" />\n"},
    {"MadeAChoice", "<xmp_property name='p' type='openchoice' element_type='text' label='P'/>",
     "<xmp_schema namespace='n'><xmp_property name='p' type='text' label='Q'/></xmp_schema>",
     "\t\t<property name=\"n:p\" label=\"P\" />\n"},
};

INSTANTIATE_TEST_SUITE_P(Rows, Registered, ::testing::ValuesIn(kRegisteredRows),
                         [](const auto& row) { return row.param.mLabel; });
INSTANTIATE_TEST_SUITE_P(Rows, Unregistered, ::testing::ValuesIn(kUnregisteredRows),
                         [](const auto& row) { return row.param.mLabel; });

TEST_F(ViewsWriter, MakesSectionsOfSchemasWithALabel) {
    mInfo.label = u"$$$/a=A & B";
    mInfo.description = u"\u00E9\n";
    const auto presented = Parsed(
                               "<xmp_schema namespace='http://z/' prefix='z' label='&quot;Z&quot;'>"
                               "<xmp_property name='a'/><ui:separator/></xmp_schema>"
                               "<xmp_schema namespace='http://a/' prefix='a'><xmp_property name='b'/></xmp_schema>"
                               "<xmp_schema namespace='http://B/' prefix='B' label='Empty'/>"
                               "<xmp_schema namespace='http://second/' prefix='z'><xmp_property name='c'/></xmp_schema>"
                               "<xmp_schema prefix='none'/>")
                               .first;
    EXPECT_EQ(Written(presented),
              kRoot +
                  "\t<view xmlns:B=\"http://B/\" xmlns:a=\"http://a/\" xmlns:z=\"http://z/\" name=\"org.test\" "
                  "label=\"$$$/a=A &amp; B\" description=\"\u00E9&#10;\">\n"
                  "\t\t<section label=\"&quot;Z&quot;\">\n\t\t\t<property name=\"z:a\" />\n\t\t\t<separator/>\n"
                  "\t\t</section>\n\t\t<property name=\"a:b\" />\n\t\t<section label=\"Empty\">\n\t\t</section>\n"
                  "\t\t<property name=\"z:c\" />\n" +
                  kEnd);
}

TEST_F(ViewsWriter, LeavesOutWhatIsNotThere) {
    mInfo = {};
    EXPECT_EQ(Written({nullptr, CreateNewSchema("http://a/", "a", u"", u"Only for display", u"", u"")}),
              kRoot + "\t<view xmlns:a=\"http://a/\">\n" + kEnd);
    EXPECT_EQ(Written({}), kDeclaration) << "the earlier document is replaced";
}

TEST_F(ViewsWriter, TakesNamelessHintsForNoProperty) {
    const auto schema = CreateNewSchema("http://test/r/", "tstr", u"", u"", u"", u"");
    for (const std::optional<UIAttributes>& hints :
         {std::optional(UIAttributes{true, true}), std::optional(UIAttributes{false, true}),
          std::optional<UIAttributes>()}) {
        schema->mProperties.push_back(CreateNewProperty(kPrimitiveType_Text, "", u"", u"", u"", u""));
        schema->mProperties.back()->mUIAttributes = hints;
    }
    EXPECT_EQ(Written({schema}), kRoot +
                                     "\t<view xmlns:tstr=\"http://test/r/\" name=\"org.test\">\n\t\t<separator/>\n"
                                     "\t\t<property name=\"tstr:\" />\n" +
                                     kEnd);
}

TEST_F(ViewsWriter, WritesWhatIsReadAgain) {
    const std::string hard = "\"&' <&amp;lt;>\t\r\n ]]> &#65; \u00E9 #{quot}";
    mInfo.name = mInfo.label = mInfo.description = UTF8to16(hard);
    const auto schema = CreateNewSchema("http://test/r/", "tstr", UTF8to16(hard), u"", u"", u"");
    const auto property = CreateNewProperty(kPrimitiveType_OpenChoice, "plain", UTF8to16(hard), u"", mInfo.label, u"");
    property->mElementType = kTypeText;
    property->mUIAttributes = UIAttributes{true, true};
    property->mChoices.push_back(std::make_shared<ChoiceDefinition>(ChoiceDefinition{hard, u"", UTF8to16(hard)}));
    const auto field = CreateNewProperty(kPrimitiveType_Text, "place/tstr:town", u"", u"", u"", u"");
    schema->mProperties = {property, field};
    Written({schema});

    const auto views = ParseViewDefinitionsFromDocument(Path());
    EXPECT_FALSE(HasErrors()) << Records().front();
    ASSERT_EQ(views.size(), 1U);
    EXPECT_EQ(views[0]->mName, hard);
    EXPECT_EQ(views[0]->mLabel, hard);
    EXPECT_EQ(views[0]->mDescription, hard);
    ASSERT_EQ(views[0]->mItems.size(), 1U);
    EXPECT_EQ(views[0]->mItems[0]->mLabel, hard);
    const auto& items = views[0]->mItems[0]->mChildItems;
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0]->mPath, PathForExpression("tstr:plain"));
    EXPECT_EQ(items[0]->mWidgetName, "dropdown");
    EXPECT_EQ(items[0]->mLabel, hard);
    EXPECT_EQ(items[0]->mDescription, hard);
    EXPECT_TRUE(items[0]->GetParameter("openChoice", false));
    EXPECT_EQ(items[0]->GetParameter("multiLines", 1), 3);
    ASSERT_EQ(items[0]->mChoices.size(), 1U);
    EXPECT_EQ(items[0]->mChoices[0]->mRawValue, hard);
    EXPECT_EQ(items[0]->mChoices[0]->mLabelZString, UTF8to16(hard));
    EXPECT_EQ(items[1]->mWidgetName, "separator");
    EXPECT_EQ(items[2]->mPath, PathForExpression("tstr:place/tstr:town"));
}

TEST_F(ViewsWriter, DeclaresNoPrefixThatWouldSpoilTheDocument) {
    std::vector<sp<SchemaDefinition>> presented;
    for (const char* prefix : {"", "xml", "xmlns", "a b", "a=''", "a:b", "1", "tstr"}) {
        presented.push_back(CreateNewSchema("http://test/r/", prefix, u"", u"", u"", u""));
        presented.back()->mProperties.push_back(CreateNewProperty(kPrimitiveType_Text, "plain", u"", u"", u"", u""));
    }
    Written(presented);
    const auto views = ParseViewDefinitionsFromDocument(Path());
    ASSERT_EQ(views.size(), 1U);
    ASSERT_EQ(views[0]->mItems.size(), 1U);
    EXPECT_EQ(views[0]->mItems[0]->mPath, PathForExpression("tstr:plain"));
}

TEST_F(ViewsWriter, SaysWhetherThereIsAFolder) {
    Folder().Write("file", "x");
    const UTF16String path = zephcore::PathFromNative((Folder().Path() / "file" / "view.xml").native());
    EXPECT_FALSE(WriteViewDefinitionsFileFromSchema({}, {}, mInfo, path));
    EXPECT_EQ(support::ReadFile(Folder().Path() / "file"), "x");
    std::filesystem::create_directories(File());
    EXPECT_TRUE(WriteViewDefinitionsFileFromSchema({}, {}, mInfo, Path())) << "there is a folder of that name";
    EXPECT_TRUE(std::filesystem::is_directory(File()));
}

}  // namespace
}  // namespace zephmetadata
