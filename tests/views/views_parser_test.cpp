#include "support/library_test.h"
#include "zephmetadata/views.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

constexpr const char* kPrefixes =
    " xmlns:dc='http://purl.org/dc/elements/1.1/' xmlns:exif='http://ns.adobe.com/exif/1.0/' xmlns:o='http://other/'";

class ViewsDocument : public support::LibraryTest {
protected:
    static std::string Document(const std::string& body) {
        return "<views xmlns='" + UINamespaceURI + "'" + kPrefixes + ">" + body + "</views>";
    }
    static std::vector<sp<ViewDefinition>> Parse(const std::string& document) {
        return ParseViewDefinitionsFromBuffer(document, u"source.xml");
    }
    /// The items of a document's one view.
    static std::vector<sp<ViewItem>> Items(const std::string& body) {
        const auto views = Parse(Document("<view name='v'>" + body + "</view>"));
        return views.empty() ? std::vector<sp<ViewItem>>() : views.front()->mItems;
    }
    static Record Problem(const std::string& detail, const std::string& context = "source.xml") {
        return {ErrorKind::ViewDefinitionParsingError, "Error parsing view definitions file: " + detail, context};
    }
    static std::string Names(const std::vector<sp<ViewDefinition>>& views) {
        std::string names;
        for (const auto& view : views) {
            names += (names.empty() ? "" : " ") + view->mName;
        }
        return names;
    }
    /// Items as text: a widget, the property in parentheses, the children in brackets.
    static std::string Outline(const std::vector<sp<ViewItem>>& items) {
        std::string outline;
        for (const auto& item : items) {
            const std::string property = ExpressionForPath(item->mPath);
            outline += (outline.empty() ? "" : " ") + item->mWidgetName;
            outline += property.empty() ? "" : "(" + property + ")";
            outline += item->mChildItems.empty() ? "" : "[" + Outline(item->mChildItems) + "]";
        }
        return outline;
    }
};

TEST_F(ViewsDocument, ReportsEachProblemAndKeepsTheGoodViews) {
    const std::string noViews = "outermost Tag has to be <views/>.";
    const std::string noName = "<view> tag needs a name attribute.";
    const std::string noView = "the view definition file has no <view> tag.";
    const std::string noProperty = "found XMP property without a 'name' attribute.";
    const std::string noNamespace =
        "missing namespace #{quot}" + UINamespaceURI + "#{quot}, views in the file will be skipped.";
    const std::string noXML = "invalid XML.";
    const auto prefix = [](const std::string& name) {
        return "invalid prefix in XMP property #{quot}" + name + "#{quot}.";
    };
    const auto property = [](const std::string& name) { return "invalid XMP property #{quot}" + name + "#{quot}."; };
    const auto field = [](const std::string& name) {
        return "invalid Structure Field in XMP property #{quot}" + name + "#{quot}.";
    };
    const auto shows = [](const std::string& name) {
        return Document("<view name='a'><property name='" + name + "'/></view>");
    };
    const std::string a = "<view name='a'/>";
    const std::string b = "<view name='b'/>";
    struct Row {
        std::string mDocument;
        std::vector<std::string> mProblems;
        std::string mViews;
    };
    const Row rows[] = {
        {Document(a + b), {}, "a b"},
        {"<panel xmlns='" + UINamespaceURI + "'>" + a + "</panel>", {noViews}, ""},
        {"<view xmlns='" + UINamespaceURI + "' name='a'/>", {noViews}, ""},
        {"<panel/>", {noViews}, ""},
        {"<views>" + a + b + "</views>", {noNamespace}, ""},
        {Document(""), {noView}, ""},
        {Document("<property name='dc:title'/><item/>"), {noView}, ""},
        {Document("<views/>" + a), {noView}, ""},
        {Document("<view/>"), {noName, noView}, ""},
        {Document("<view name=''><property/></view>" + b), {noName}, "b"},
        {Document("<view><view name='inner'/></view>" + b), {noName}, "b"},
        {Document(a + "<o:views/><view name='lost'/>" + b), {noNamespace}, "a b"},
        {Document("<view name='lost'><section><note><o:views/></note></section></view>"
                  "<view name='a'><note><choice/></note></view>" +
                  b),
         {noNamespace},
         "a b"},
        {Document(a + "<o:panel/>" + b), {}, "a b"},
        {Document("<view name='a'><property/></view>" + b), {noProperty}, "a b"},
        {Document("<view name='a'><section><property><item/></property></section></view>"), {noProperty}, "a"},
        {shows("xmp:Rating"), {prefix("xmp:Rating")}, "a"},
        {shows("title"), {prefix("title")}, "a"},
        {shows(""), {prefix("")}, "a"},
        {shows("dc:title:x"), {}, "a"},
        {shows(":title"), {}, "a"},
        {shows("dc:"), {}, "a"},
        {shows("dc:nothing"), {property("dc:nothing")}, "a"},
        {shows("dc:title/"), {property("dc:title/")}, "a"},
        {shows("dc:nothing/dc:x"), {"invalid Structure in XMP property #{quot}dc:nothing/dc:x#{quot}."}, "a"},
        {shows("xmp:Rating/dc:x"), {prefix("xmp:Rating")}, "a"},
        {shows("exif:Flash/xmp:Fired"), {prefix("xmp:Fired")}, "a"},
        {shows("exif:Flash/exif:Nothing"), {field("exif:Flash/exif:Nothing")}, "a"},
        {shows("exif:Flash/dc:Fired"), {field("exif:Flash/dc:Fired")}, "a"},
        {shows("dc:title/dc:x"), {field("dc:title/dc:x")}, "a"},
        {Document("<view name='a'><note x_path='dc:nothing' labelRef='no:x' descriptionRef='no:y'/></view>"),
         {property("dc:nothing"), prefix("no:x"), prefix("no:y")},
         "a"},
        // Prefixes are one flat map: the end of the inner declaration takes the prefix away.
        {Document(
             "<view name='a'><section xmlns:dc='http://purl.org/dc/elements/1.1/'/><property name='dc:title'/></view>"),
         {prefix("dc:title")},
         "a"},
        {Document(a + "<view name='b'><property name='&undeclared;'/></view>"), {noXML}, "a"},
        {Document(a + "<view name='\xFF'/>"), {noXML}, "a"},
        {Document(a + b) + "<more/>", {noXML}, "a b"},
        {"<!DOCTYPE views [<!ENTITY e 'x'>]>" + Document(a), {noXML}, ""},
        {"", {noXML}, ""},
    };
    std::vector<Record> expected;
    for (const Row& row : rows) {
        EXPECT_EQ(Names(Parse(row.mDocument)), row.mViews) << row.mDocument;
        for (const std::string& problem : row.mProblems) {
            expected.push_back(Problem(problem));
        }
        ASSERT_EQ(Records(), expected) << row.mDocument;
    }
}

TEST_F(ViewsDocument, NestsItemsAsTheirElements) {
    struct Row {
        const char* mBody;
        const char* mOutline;
    };
    const Row rows[] = {
        {"<property name='dc:title'/><separator/><item name='dc:format'/>", "(dc:title) separator (dc:format)"},
        {"<section><property name='dc:title'/><property name='dc:format'/></section>",
         "section[(dc:title) (dc:format)]"},
        {"<section><formatter><property name='exif:Flash/exif:Fired'><note/></property></formatter></section>",
         "section[formatter[(exif:Flash/exif:Fired)[note]]]"},
        // At the top of a view, what shows nothing is dropped, and its children stand in its place.
        {"<property name='dc:nothing'><property name='dc:title'/><note/></property><separator/>",
         "(dc:title) note separator"},
        {"<item><property name='dc:title'/></item>", "(dc:title)"},
        {"<property><choice value='1'/><param name='a' value='b'/></property>", ""},
        {"<property widget='w'/><item widget='v' name='dc:nothing'/>", "w v"},
        // Below an item, everything is kept.
        {"<section><property name='dc:nothing'><property name='dc:title'/></property></section>",
         "section[[(dc:title)]]"},
        // Elements that mean nothing are transparent; what is within a param or a choice is ignored.
        {"<row><property name='dc:title'/></row><o:row><note/></o:row><choice/>", "(dc:title) note"},
        {"<section><row><note/></row><paramList><note/></paramList></section>", "section[note note]"},
        {"<section><param name='a' value='b'><note/></param><choice><note/></choice><note/></section>",
         "section[note]"},
        {"<o:property name='dc:title'/><view name='inner'/>", ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Outline(Items(row.mBody)), row.mOutline) << row.mBody;
    }
}

TEST_F(ViewsDocument, CarriesEveryAttribute) {
    const auto views = Parse(Document(
        "<view version='1' name='v' label='$$$/v=View' description=' d ' pruneEmptyProperties='true'>"
        "<property label=' $$$/t=A &amp;quot;B&amp;quot; ' name='dc:title' widget='w' description='D' hint='h' "
        "hint2='&#x915;'><choice value='1' label='$$$/one=One' other='x'/><choice value='2'/></property>"
        "<property name='exif:Flash/exif:Fired'/></view>"
        "<view name='w' pruneEmptyProperties='TRUE'/>"));
    ASSERT_EQ(Names(views), "v w");
    EXPECT_EQ(views[0]->mLabel + views[0]->mDescription, "$$$/v=View d ");
    EXPECT_TRUE(views[0]->mPruneEmptyProperties);
    EXPECT_FALSE(views[0]->mStaticPage || views[1]->mPruneEmptyProperties);
    ASSERT_EQ(views[0]->mItems.size(), 2U);
    const ViewItem& item = *views[0]->mItems[0];
    EXPECT_EQ(item.mPath, PathForExpression("dc:title"));
    EXPECT_EQ(item.mQualifiedName.mURI + item.mQualifiedName.mLocalName, "http://purl.org/dc/elements/1.1/title");
    EXPECT_EQ(item.mWidgetName, "w");
    EXPECT_EQ(item.mLabel, " $$$/t=A &quot;B&quot; ");
    EXPECT_EQ(item.mDescription, "D");
    EXPECT_EQ(item.mParameters, (std::map<UTF8String, UTF8String>{{"hint", "h"}, {"hint2", "\u0915"}}));
    ASSERT_EQ(item.mChoices.size(), 2U);
    EXPECT_EQ(item.mChoices[0]->mRawValue, "1");
    EXPECT_EQ(item.mChoices[0]->mLabelZString, u"$$$/one=One");
    EXPECT_EQ(item.mChoices[0]->mLabel, u"One");
    EXPECT_EQ(item.mChoices[1]->mLabel, u"");
    const ViewItem& field = *views[0]->mItems[1];
    EXPECT_EQ(field.mPath, PathForExpression("exif:Flash/exif:Fired"));
    EXPECT_EQ(field.mQualifiedName.mURI + field.mQualifiedName.mLocalName, "");
    EXPECT_EQ(field.GetLabel(), u"Flash Fired");
    EXPECT_FALSE(HasErrors());
}

TEST_F(ViewsDocument, TakesParametersFromAttributesAndElements) {
    using Parameters = std::map<UTF8String, UTF8String>;
    struct Row {
        const char* mItem;
        Parameters mParameters;
    };
    const std::string exif = "http://ns.adobe.com/exif/1.0/";
    const Row rows[] = {
        {"<section widget='w'/>", {{"widget", "w"}}},
        {"<note a='1'><param name='a' value='2'/><paramMap><param name='b' value='3'/></paramMap>"
         "<paramList><param name='b' value='4'/></paramList></note>",
         {{"a", "2"}, {"b", "4"}}},
        {"<note><param name='a'/></note>", {{"a", ""}}},
        {"<note x_path='exif:GPSLatitude'/>",
         {{"x_path", "exif:GPSLatitude"}, {"x_path_uri", exif}, {"x_path_name", "GPSLatitude"}}},
        {"<note x_path='exif:Flash/exif:Fired'/>",
         {{"x_path", "exif:Flash/exif:Fired"},
          {"x_path_uri", exif},
          {"x_path_name", "Flash"},
          {"x_path_field", "Fired"}}},
        {"<note x_path='dc:a:b' x_Path='dc:title'/>", {{"x_path", "dc:a:b"}, {"x_Path", "dc:title"}}},
    };
    for (const Row& row : rows) {
        const auto items = Items(row.mItem);
        ASSERT_EQ(items.size(), 1U) << row.mItem;
        EXPECT_EQ(items[0]->mParameters, row.mParameters) << row.mItem;
    }
    EXPECT_FALSE(HasErrors());
}

TEST_F(ViewsDocument, BorrowsTextsByReference) {
    const auto title = PathEntryDefinition(PathForExpression("dc:title"));
    const auto items = Items(
        "<note labelRef='dc:title' descriptionRef='dc:title'/><note labelRef='dc:title' label='own'/>"
        "<note label='own' labelRef='dc:title'/><note label='own' labelRef='a:b:c'/>");
    ASSERT_EQ(items.size(), 4U);
    EXPECT_EQ(items[0]->mLabel, "$$$/xmp/dc/title_label=Title");
    EXPECT_EQ(items[0]->mDescription, zephcore::UTF16to8(title->mDescriptionZString));
    EXPECT_NE(items[0]->mDescription, "");
    EXPECT_EQ(items[1]->mLabel + items[2]->mLabel + items[3]->mLabel, "own$$$/xmp/dc/title_label=Titleown")
        << "attributes count in their order";
}

TEST_F(ViewsDocument, KeepsTheViewsBeforeTheCut) {
    const std::string first = "<view name='a'><section><property name='dc:title'/></section></view>";
    const std::string whole = Document(first + "<view name='b'><note x='\u20AC'/></view>");
    const std::size_t endOfFirst = whole.find(first) + first.size();
    const std::size_t endOfSecond = whole.rfind("</views>");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto views = Parse(whole.substr(0, size));
        EXPECT_EQ(Names(views), size < endOfFirst ? "" : size < endOfSecond ? "a" : "a b") << size;
        ASSERT_EQ(Records().size(), size + 1);
        EXPECT_EQ(Records().back(), Problem("invalid XML."));
    }
}

TEST_F(ViewsDocument, IsBoundedInDepthButNotInLength) {
    const auto nested = [](std::size_t depth) {
        std::string text;
        for (std::size_t i = 0; i < depth; ++i) {
            text += "<section>";
        }
        for (std::size_t i = 0; i < depth; ++i) {
            text += "</section>";
        }
        return Document("<view name='a'/><view name='b'>" + text + "</view>");
    };
    EXPECT_EQ(Names(Parse(nested(900))), "a b");
    EXPECT_FALSE(HasErrors());
    EXPECT_EQ(Names(Parse(nested(10'000))), "a");
    EXPECT_THAT(Records(), ElementsAre(Problem("invalid XML.")));
    std::string many;
    for (int i = 0; i < 100'000; ++i) {
        many += i % 2 == 0 ? "<note/>" : "<property name='dc:title'/>";
    }
    EXPECT_EQ(Items(many).size(), 100'000U);
}

TEST_F(ViewsDocument, IsReadFromAFile) {
    const auto path = zephcore::UTF8to16(Folder().Write("v.xml", Document("<view name='a'/><view/>")).string());
    EXPECT_EQ(Names(ParseViewDefinitionsFromDocument(path)), "a");
    EXPECT_TRUE(ParseViewDefinitionsFromDocument(path + u"x").empty());
    EXPECT_THAT(Records(), ElementsAre(Problem("<view> tag needs a name attribute.", zephcore::UTF16to8(path)),
                                       Problem("invalid XML.", zephcore::UTF16to8(path + u"x"))));
    EXPECT_FALSE(GetViewDefinitionForName("a")) << "parsing registers nothing";
}

}  // namespace
}  // namespace zephmetadata
