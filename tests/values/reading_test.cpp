#include "support/values_test.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

class Reading : public support::TreeTest {};

TEST_F(Reading, GivesTextByKind) {
    Load(
        "<dc:title><rdf:Alt><rdf:li xml:lang='de'>Hafen</rdf:li><rdf:li "
        "xml:lang='x-default'>Harbour</rdf:li></rdf:Alt></dc:title>"
        "<dc:creator><rdf:Seq><rdf:li>a</rdf:li><rdf:li>b; c</rdf:li></rdf:Seq></dc:creator>"
        "<dc:source>x</dc:source><DICOM:StudyDateTime xmlns:DICOM='http://ns.adobe.com/DICOM/'>"
        "2010-05-06T10:20:30.0+02:00</DICOM:StudyDateTime>"
        "<xmpMM:DerivedFrom rdf:parseType='Resource'><stRef:instanceID>i</stRef:instanceID></xmpMM:DerivedFrom>");
    EXPECT_EQ(Text("dc:title"), "Harbour");
    EXPECT_EQ(Text("dc:creator"), "a; \"b; c\"");
    EXPECT_EQ(Text("dc:creator[2]"), "b; c");
    EXPECT_EQ(Text("dc:source"), "x");
    EXPECT_EQ(Text("DICOM:StudyDateTime"), "2010-05-06T10:20:30+02:00");
    EXPECT_EQ(Text("xmpMM:DerivedFrom"), "<none>");
    EXPECT_EQ(Text("xmpMM:DerivedFrom/stRef:instanceID"), "i");
    EXPECT_THAT(GetItems(Tree(), At("dc:creator")), ElementsAre("a", "b; c"));
    EXPECT_THAT(GetLanguages(Tree(), At("dc:title")),
                ElementsAre(std::pair("de", "Hafen"), std::pair("x-default", "Harbour")));
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(Reading, TellsWhyThereIsNoValue) {
    std::string text = "kept";
    int number = 7;
    GetValueResult result{};
    EXPECT_FALSE(GetValue(Tree(), At("dc:nothing"), text, &result));
    EXPECT_EQ(result, kGetValueResult_NoDefinition);
    EXPECT_FALSE(GetValue(nullptr, At("dc:source"), text, &result));
    EXPECT_EQ(result, kGetValueResult_NoValue);
    EXPECT_FALSE(GetValue(Tree(), At("dc:source"), text, nullptr));
    EXPECT_FALSE(GetValue(Tree(), At("xmp:Rating"), number, &result));
    EXPECT_EQ(result, kGetValueResult_NoValue);
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(number, 7);
    EXPECT_FALSE(HasValue(nullptr, Path()));
    EXPECT_FALSE(HasValue(nullptr, At("dc:source")));
    EXPECT_FALSE(HasValue(Tree(), Path()));
    Date date{1, 2, 3, 4, 5, 6};
    EXPECT_FALSE(GetValue(Tree(), At("dc:source"), date, &result));
    EXPECT_FALSE(GetValue(Tree(), At("dc:nothing"), date, &result));
    EXPECT_EQ(result, kGetValueResult_NoDefinition);
    EXPECT_EQ(date, (Date{1, 2, 3, 4, 5, 6}));
}

TEST_F(Reading, ConvertsNumbersAndReportsWhatIsNone) {
    Load(
        "<xmp:Label>12</xmp:Label><xmp:Nickname>1.5</xmp:Nickname><dc:source>4294967296</dc:source>"
        "<dc:coverage>abc</dc:coverage><xmpRights:Marked>true</xmpRights:Marked>");
    int number = 0;
    long long large = 0;
    double real = 0;
    bool flag = false;
    EXPECT_TRUE(GetValue(Tree(), At("xmp:Label"), number) && number == 12);
    EXPECT_TRUE(GetValue(Tree(), At("dc:source"), large) && large == 4294967296);
    EXPECT_TRUE(GetValue(Tree(), At("xmp:Nickname"), real) && real == 1.5);
    EXPECT_TRUE(GetValue(Tree(), At("xmpRights:Marked"), flag) && flag);
    EXPECT_FALSE(HasErrors());
    EXPECT_FALSE(GetValue(Tree(), At("dc:source"), number));
    EXPECT_FALSE(GetValue(Tree(), At("dc:coverage"), real));
    EXPECT_THAT(Records(), ElementsAre(Invalid(ErrorKind::ErrorReadingXMP, "dc:source"),
                                       Invalid(ErrorKind::ErrorReadingXMP, "dc:coverage")));
}

TEST_F(Reading, ReportsTextThatItsTypeDoesNotAllowAndReturnsIt) {
    struct Row {
        const char* mElement;
        const char* mExpression;
        const char* mText;
        int mReports;
    };
    const Row rows[] = {
        {"<xmpMM:SaveID>7</xmpMM:SaveID>", "xmpMM:SaveID", "7", 0},
        {"<xmpMM:SaveID>007</xmpMM:SaveID>", "xmpMM:SaveID", "007", 1},
        {"<xmpMM:SaveID>x</xmpMM:SaveID>", "xmpMM:SaveID", "x", 1},
        {"<xmpRights:Marked>TRUE</xmpRights:Marked>", "xmpRights:Marked", "TRUE", 0},
        {"<xmpRights:Marked>0</xmpRights:Marked>", "xmpRights:Marked", "0", 0},
        {"<xmpRights:Marked>t</xmpRights:Marked>", "xmpRights:Marked", "t", 1},
        {"<xmpRights:Marked>yes</xmpRights:Marked>", "xmpRights:Marked", "yes", 1},
        {"<tiff:Orientation>6</tiff:Orientation>", "tiff:Orientation", "6", 0},
        {"<tiff:Orientation>9</tiff:Orientation>", "tiff:Orientation", "9", 1},
        {"<xmp:CreateDate>yesterday</xmp:CreateDate>", "xmp:CreateDate", "yesterday", 1},
        {"<xmp:Identifier>not a bag</xmp:Identifier>", "xmp:Identifier", "<none>", 1},
        {"<xmp:Thumbnails><rdf:Alt><rdf:li stRef:a='1'/></rdf:Alt></xmp:Thumbnails>", "xmp:Thumbnails", "<none>", 1},
    };
    std::size_t reports = 0;
    for (const Row& row : rows) {
        Load(row.mElement);
        EXPECT_EQ(Text(row.mExpression), row.mText) << row.mElement;
        reports += static_cast<std::size_t>(row.mReports);
        ASSERT_EQ(Records().size(), reports) << row.mElement;
        if (row.mReports > 0) {
            EXPECT_EQ(Records().back(), Invalid(ErrorKind::ErrorReadingXMP, row.mExpression));
        }
    }
}

TEST_F(Reading, TellsWhereAValueWasReadFrom) {
    Load(
        "<dc:source>s</dc:source><dc:format>f</dc:format><dc:subject><rdf:Bag><rdf:li>a</rdf:li></rdf:Bag></"
        "dc:subject>");
    toolkit::MarkNative(Tree(), "http://purl.org/dc/elements/1.1/", "format");
    toolkit::MarkNative(Tree(), "http://purl.org/dc/elements/1.1/", "subject");
    EXPECT_EQ(OriginOf(Tree(), At("dc:source")), kValueOrigin_XMP);
    EXPECT_EQ(OriginOf(Tree(), At("dc:format")), kValueOrigin_Native);
    EXPECT_EQ(OriginOf(Tree(), At("dc:subject[1]")), kValueOrigin_Native);
    EXPECT_EQ(OriginOf(Tree(), At("dc:subject[2]")), kValueOrigin_None);
    EXPECT_EQ(OriginOf(nullptr, At("dc:format")), kValueOrigin_None);
    SetValue(Tree(), At("dc:format"), "f");
    EXPECT_EQ(OriginOf(Tree(), At("dc:format")), kValueOrigin_Native) << "that is what it was";
    SetValue(Tree(), At("dc:format"), "g");
    EXPECT_EQ(OriginOf(Tree(), At("dc:format")), kValueOrigin_XMP);
}

TEST_F(Reading, ConvertsDatesToUTC) {
    struct Row {
        const char* mText;
        Date mDate;
    };
    const Row rows[] = {
        {"2010-05-06T10:20:30+02:00", {2010, 5, 6, 8, 20, 30}},
        {"2010-01-01T00:30:00+01:00", {2009, 12, 31, 23, 30, 0}},
        {"2010-05", {2010, 5, 0, 0, 0, 0}},
        {"2010-05-06T10:20:30", {2010, 5, 6, 10, 20, 30}},
    };
    for (const Row& row : rows) {
        Load("<xmp:CreateDate>" + std::string(row.mText) + "</xmp:CreateDate>");
        Date date;
        EXPECT_TRUE(GetValue(Tree(), At("xmp:CreateDate"), date));
        EXPECT_EQ(date, row.mDate) << row.mText;
    }
    EXPECT_LT((Date{2009, 12, 31, 23, 59, 59}), (Date{2010, 0, 0, 0, 0, 0}));
}

TEST_F(Reading, FallsBackToTheOlderNameOfAProperty) {
    Load("<aux:SerialNumber>123</aux:SerialNumber><aux:Lens>50mm</aux:Lens>");
    EXPECT_EQ(Text("exifEX:BodySerialNumber"), "123");
    EXPECT_EQ(Text("exifEX:LensModel"), "50mm");
    EXPECT_EQ(Text("exifEX:LensSerialNumber"), "<none>");
    EXPECT_EQ(Raw("exifEX:BodySerialNumber"), "<none>");
}

}  // namespace
}  // namespace zephmetadata
