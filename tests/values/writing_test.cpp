#include "support/values_test.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Writing : public support::TreeTest {};

TEST_F(Writing, SetsTextByKindAndOnlyOnce) {
    struct Row {
        const char* mExpression;
        const char* mValue;
        const char* mReads;
    };
    const Row rows[] = {
        {"dc:source", "plain", "plain"},
        {"dc:title", "Harbour", "Harbour"},
        {"dc:creator", "a; b; c", "a; b; c"},
        {"dc:subject", "x;y;  \"z; w\"", "x; y; \"z; w\""},
        {"DICOM:StudyDateTime", "2024-05-17T09:30:00.50+02:00", "2024-05-17T09:30:00.5+02:00"},
        {"xmp:MetadataDate", "2024-05", "2024-05"},
        {"Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity", "Kiel", "Kiel"},
        {"Iptc4xmpExt:LocationShown[1]/Iptc4xmpExt:City", "Kiel", "Kiel"},
        {"Iptc4xmpExt:LocationShown[2]/Iptc4xmpExt:City", "Hamburg", "Hamburg"},
        {"Iptc4xmpExt:ArtworkOrObject[1]/Iptc4xmpExt:AOTitle", "Mona", "Mona"},
        {"dc:language[1]", "de", "de"},
        {"xmpPMMemo:whatever", "memo", "memo"},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(SetValue(Tree(), At(row.mExpression), row.mValue)) << row.mExpression;
        EXPECT_EQ(Text(row.mExpression), row.mReads) << row.mExpression;
        EXPECT_FALSE(SetValue(Tree(), At(row.mExpression), row.mValue)) << "again: " << row.mExpression;
    }
    EXPECT_FALSE(HasErrors()) << Records().front();
    EXPECT_EQ(CountArrayItems(Tree(), At("Iptc4xmpExt:LocationShown")), 2);
    EXPECT_TRUE(SetValue(Tree(), At("dc:subject"), ""));
    EXPECT_FALSE(HasValue(Tree(), At("dc:subject")));
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(Writing, KeepsEveryOtherLanguageAndItem) {
    Load(
        "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Harbour</rdf:li><rdf:li "
        "xml:lang='de'>Hafen</rdf:li></rdf:Alt></dc:title>"
        "<dc:subject><rdf:Bag><rdf:li>dawn; early</rdf:li><rdf:li>\"quoted\"</rdf:li><rdf:li> space "
        "</rdf:li></rdf:Bag></dc:subject>");
    EXPECT_TRUE(SetValue(Tree(), At("dc:title"), "Port"));
    EXPECT_THAT(GetLanguages(Tree(), At("dc:title")),
                ElementsAre(std::pair("de", "Hafen"), std::pair("x-default", "Port")));
    EXPECT_TRUE(SetLanguage(Tree(), At("dc:title"), "fr", "Port (fr)"));
    EXPECT_TRUE(SetLanguage(Tree(), At("dc:title"), "de", ""));
    EXPECT_FALSE(SetLanguage(Tree(), At("dc:title"), "de", ""));
    EXPECT_FALSE(SetLanguage(Tree(), At("dc:title"), "x\"]", "injected"));
    EXPECT_THAT(GetLanguages(Tree(), At("dc:title")),
                ElementsAre(std::pair("fr", "Port (fr)"), std::pair("x-default", "Port")));
    EXPECT_TRUE(SetValue(Tree(), At("dc:subject"), Text("dc:subject") + "; more"));
    EXPECT_THAT(GetItems(Tree(), At("dc:subject")), ElementsAre("dawn; early", "\"quoted\"", " space ", "more"));
}

TEST_F(Writing, SetsTheAlternativeThatAnAliasStandsFor) {
    for (const char* expression : {"tiff:ImageDescription", "tiff:Copyright"}) {
        EXPECT_TRUE(SetValue(Tree(), At(expression), "text")) << expression;
        EXPECT_EQ(Text(expression), "text") << expression;
        EXPECT_FALSE(SetValue(Tree(), At(expression), "text")) << expression;
    }
    EXPECT_EQ(Text("dc:description"), "text");
    EXPECT_EQ(Text("dc:rights"), "text");
    const Path alias = At("tiff:ImageDescription");
    EXPECT_TRUE(SetLanguage(Tree(), alias, "de", "Text"));
    EXPECT_FALSE(SetLanguage(Tree(), alias, "de", "Text"));
    const auto both = ElementsAre(std::pair("de", "Text"), std::pair("x-default", "text"));
    EXPECT_THAT(GetLanguages(Tree(), alias), both);
    EXPECT_THAT(GetLanguages(Tree(), At("dc:description")), both);
    EXPECT_TRUE(SetLanguage(Tree(), alias, "de", ""));
    EXPECT_THAT(GetLanguages(Tree(), At("dc:description")), ElementsAre(std::pair("x-default", "text")));
    EXPECT_TRUE(ParseXMPMeta(SerializeXMPMeta(Tree())));
}

TEST_F(Writing, RefusesAndReportsWhatCannotBe) {
    struct Row {
        const char* mExpression;
        const char* mValue;
        bool mReported;
    };
    const Row rows[] = {
        {"dc:nothing", "x", false},
        {"dc:source", "", false},
        {"xmpMM:DerivedFrom", "x", false},
        {"xmp:CreateDate", "tomorrow", true},
        {"dc:creator[3]", "x", true},
        {"dc:creator[?xml:lang=\"de\"]", "x", true},
        {"dc:date[1]", "garbage", true},
        {"dc:language[1]", "\x01", true},
        {"xmpMM:History[1]/stEvt:when", "garbage", true},
        {"Iptc4xmpExt:ArtworkOrObject[1]/Iptc4xmpExt:AOCreator[2]", "x", true},
        {"xmpMM:History", "no structure", true},
        {"xmp:Thumbnails", "no structure", true},
        {"dc:source", "bad \x01 control", true},
        {"dc:source", "bad \xC3 utf-8", true},
    };
    std::vector<Record> expected;
    for (const Row& row : rows) {
        EXPECT_FALSE(SetValue(Tree(), At(row.mExpression), row.mValue)) << row.mExpression;
        if (row.mReported) {
            expected.push_back(Invalid(ErrorKind::ErrorWritingXMP, row.mExpression));
        }
    }
    for (const char* const expression : {"dc:title", "dc:creator", "xmpMM:DerivedFrom", "exif:ISOSpeedRatings[2]"}) {
        EXPECT_FALSE(SetValue(Tree(), At(expression), 7)) << expression;
        expected.push_back(Invalid(ErrorKind::ErrorWritingXMP, expression));
    }
    EXPECT_EQ(Records(), expected);
    EXPECT_THAT(XMPNodes(Tree()), IsEmpty());
    EXPECT_FALSE(SetValue(nullptr, At("dc:source"), "x"));
    EXPECT_FALSE(SetValue(Tree(), At("dc:source"), static_cast<const char*>(nullptr)));
}

TEST_F(Writing, TellsWhatBecameOfAValue) {
    const auto tried = [](const EditOutcome& outcome) { return std::pair(outcome.mResult, outcome.mRefusal); };
    const auto refused = [](EditRefusal why) { return std::pair(kEditResult_Refused, why); };
    constexpr auto kChanged = std::pair(kEditResult_Changed, kEditRefusal_None);
    struct Row {
        EditOutcome mOutcome;
        std::pair<EditResult, EditRefusal> mExpected;
    };
    const char* const noText = nullptr;
    char buffer[] = "in a buffer";
    const auto set = [&](const char* expression, const auto& value) {
        return TrySetValue(Tree(), At(expression), value);
    };
    const Row rows[] = {
        {set("dc:source", std::string_view("view")), kChanged},
        {set("dc:source", UTF16String(u"\u00E9")), kChanged},
        {set("dc:source", u"wide"), kChanged},
        {set("dc:source", buffer), kChanged},
        {set("dc:source", buffer), {kEditResult_Unchanged, kEditRefusal_None}},
        {set("dc:source", noText), refused(kEditRefusal_NotAllowed)},
        {set("dc:source", "bad \x01"), refused(kEditRefusal_NotAllowed)},
        {set("dc:source", Date{2024, 5, 1}), refused(kEditRefusal_NoSuchShape)},
        {set("dc:nothing", 1), refused(kEditRefusal_NoDefinition)},
        {set("dc:creator", 1), refused(kEditRefusal_NoSuchShape)},
        {set("dc:creator[3]", "x"), refused(kEditRefusal_NotAllowed)},
        {set("xmpMM:DerivedFrom", "x"), refused(kEditRefusal_NoSuchShape)},
        {set("xmpMM:History", "x"), refused(kEditRefusal_NoSuchShape)},
        {set("exif:PixelXDimension", std::size_t{40}), kChanged},
        {set("exif:PixelXDimension", 41L), kChanged},
        {set("exif:PixelXDimension", 42U), kChanged},
        {set("exif:PixelXDimension", short{43}), kChanged},
        {set("exif:PixelXDimension", ~0ULL), refused(kEditRefusal_NotAllowed)},
        {set("exif:PixelXDimension", 1.5F), refused(kEditRefusal_NotAllowed)},
        {set("xmpRights:Marked", true), kChanged},
        {set("xmp:CreateDate", Date{2024, 5, 1}), kChanged},
        {set("xmp:CreateDate", Date{2024, 5, 1, 0, 0, 1}), kChanged},
        {set("xmp:CreateDate", Date{2024}), kChanged},
        {set("xmp:CreateDate", Date{2024, 0, 1}), refused(kEditRefusal_NotAllowed)},
        {set("xmp:CreateDate", Date{2024, 13}), refused(kEditRefusal_NotAllowed)},
        {TrySetValue(nullptr, At("dc:source"), "x"), refused(kEditRefusal_NoTree)},
    };
    int number = 0;
    for (const Row& row : rows) {
        EXPECT_EQ(tried(row.mOutcome), row.mExpected) << number << ": " << Describe(row.mOutcome);
        EXPECT_EQ(Describe(row.mOutcome).empty(), row.mOutcome.mResult != kEditResult_Refused) << number;
        ++number;
    }
    EXPECT_EQ(Raw("dc:source"), "in a buffer");
    EXPECT_EQ(Raw("exif:PixelXDimension"), "43");
    EXPECT_EQ(Raw("xmp:CreateDate"), "2024");
    SetValue(Tree(), At("xmp:CreateDate"), "2024-05-01T14:30:15.25+02:00");
    EXPECT_FALSE(SetValue(Tree(), At("xmp:CreateDate"), Date{2024, 5, 1, 12, 30, 15})) << "it reads so already";
    EXPECT_TRUE(SetValue(Tree(), At("dc:source"), ~0ULL));
    EXPECT_EQ(Raw("dc:source"), "18446744073709551615");
    EXPECT_TRUE(Records().empty()) << "refusals are told, not reported";
    static_assert(SettableType<char[4]> && SettableType<const char*> && SettableType<float> && SettableType<bool>);
    static_assert(!SettableType<void*> && !SettableType<int*> && !SettableType<const unsigned char*>);
    static_assert(!SettableType<std::nullptr_t*> && !SettableType<wchar_t[4]> && !SettableType<void()>);
}

TEST_F(Writing, ReplacesWhatHasAnotherShape) {
    const std::string alternative =
        "<rdf:Alt><rdf:li xml:lang='x-default'>a</rdf:li><rdf:li xml:lang='de'>b</rdf:li></rdf:Alt>";
    const std::string structure = "<rdf:Description><stRef:a>a</stRef:a></rdf:Description>";
    const struct {
        const char* mName;
        std::string mContent;
        const char* mValue;
    } rows[] = {{"dc:creator", alternative, "n; m"},
                {"dc:subject", structure, "n; m"},
                {"dc:title", structure, "T"},
                {"dc:source", alternative, "s"},
                {"xmp:MetadataDate", "<rdf:Bag><rdf:li>2024</rdf:li></rdf:Bag>", "2025"}};
    for (const auto& row : rows) {
        Load(std::string("<") + row.mName + ">" + row.mContent + "</" + row.mName + ">");
        EXPECT_TRUE(SetValue(Tree(), At(row.mName), row.mValue)) << row.mName;
        mTree = ParseXMPMeta(SerializeXMPMeta(Tree()));
        ASSERT_TRUE(mTree) << row.mName;
        EXPECT_EQ(Text(row.mName), row.mValue);
    }
}

TEST_F(Writing, RefusesWhatWouldMakeNoPacketOrLoseOtherValues) {
    const struct {
        const char* mProperty;
        const char* mContent;
        const char* mExpression;
    } rows[] = {
        {"dc:title", "<rdf:Alt><rdf:li xml:lang='x-default'>a</rdf:li></rdf:Alt>", "dc:title[2]"},
        {"dc:title", "<rdf:Alt/>", "dc:title[1]"},
        {"dc:creator", "<rdf:Alt><rdf:li xml:lang='de'>a</rdf:li></rdf:Alt>", "dc:creator[2]"},
        {"xmpMM:History", "<rdf:Seq><rdf:li stEvt:action='saved'/></rdf:Seq>", "xmpMM:History"},
        {"xmp:Thumbnails", "<rdf:Alt><rdf:li stRef:a='1'/></rdf:Alt>", "xmp:Thumbnails"},
    };
    std::vector<Record> expected;
    for (const auto& row : rows) {
        Load(std::string("<") + row.mProperty + ">" + row.mContent + "</" + row.mProperty + ">");
        const std::string before = SerializeXMPMeta(Tree());
        EXPECT_FALSE(SetValue(Tree(), At(row.mExpression), "x")) << row.mExpression;
        EXPECT_EQ(SerializeXMPMeta(Tree()), before) << row.mExpression;
        expected.push_back(Invalid(ErrorKind::ErrorWritingXMP, row.mExpression));
    }
    EXPECT_FALSE(SetLanguage(Tree(), At("xmp:Thumbnails"), "de", "x"));
    expected.push_back(Invalid(ErrorKind::ErrorWritingXMP, "xmp:Thumbnails"));
    EXPECT_EQ(Records(), expected);
}

TEST_F(Writing, FindsLanguagesWhateverTheirLetterCase) {
    const Path title = At("dc:title");
    EXPECT_TRUE(SetValue(Tree(), At("dc:title[?xml:lang=\"zh-Hans\"]"), "a"));
    EXPECT_FALSE(SetLanguage(Tree(), title, "ZH-hans", "a"));
    EXPECT_TRUE(SetValue(Tree(), At("dc:title[?xml:lang=\"zh-Hans\"]"), "b"));
    EXPECT_TRUE(SetLanguage(Tree(), title, "de-at", "c"));
    EXPECT_EQ(Text("dc:title[?xml:lang=\"DE-AT\"]"), "c");
    EXPECT_THAT(GetLanguages(Tree(), title),
                ElementsAre(std::pair("de-AT", "c"), std::pair("x-default", "a"), std::pair("zh-hans", "b")));
    EXPECT_TRUE(SetLanguage(Tree(), title, "DE-AT", ""));
    EXPECT_FALSE(HasErrors()) << Records().front();
    std::string deep = "dc:title";
    for (int i = 0; i < 40; ++i) {
        deep += "[?xml:lang=\"fr\"][last()]";
    }
    EXPECT_FALSE(HasValue(Tree(), At(deep))) << "at once, not after asking for each array again and again";
}

TEST_F(Writing, RefusesAnEmptyTextForADateThatIsThere) {
    EXPECT_TRUE(SetValue(Tree(), At("xmp:CreateDate"), "2024"));
    EXPECT_FALSE(SetValue(Tree(), At("xmp:CreateDate"), ""));
    EXPECT_EQ(Text("xmp:CreateDate"), "2024");
    EXPECT_THAT(Records(), ElementsAre(Invalid(ErrorKind::ErrorWritingXMP, "xmp:CreateDate")));
}

TEST_F(Writing, WritesNumbersInTheirCanonicalForm) {
    const Path path = At("dc:source");
    EXPECT_TRUE(SetValue(Tree(), path, 0));
    EXPECT_EQ(Raw("dc:source"), "0");
    EXPECT_FALSE(SetValue(Tree(), path, 0));
    EXPECT_TRUE(SetValue(Tree(), path, 1LL << 40));
    EXPECT_EQ(Raw("dc:source"), "1099511627776");
    EXPECT_TRUE(SetValue(Tree(), path, 0.1));
    EXPECT_EQ(Raw("dc:source"), "0.1");
    EXPECT_TRUE(SetValue(Tree(), path, true));
    EXPECT_EQ(Raw("dc:source"), "True");
    EXPECT_TRUE(SetValue(Tree(), At("exif:ISOSpeedRatings[1]"), 200));
    EXPECT_TRUE(SetValue(Tree(), At("exif:ISOSpeedRatings[2]"), 400));
    EXPECT_EQ(Text("exif:ISOSpeedRatings"), "200; 400");
    EXPECT_FALSE(HasErrors());
}

class KeepingProvider : public TypicalProviderImpl {
public:
    explicit KeepingProvider(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}
    std::vector<Path> mWritten;

private:
    void WriteChanges(const std::vector<Path>& changes) override { mWritten = changes; }
};

TEST_F(Writing, MinimalFloatGoesThroughTheProvider) {
    const auto provider = std::make_shared<KeepingProvider>(Tree());
    SetMinimalFloatValue({At("xmp:Rating"), provider}, 0.1);
    EXPECT_EQ(Raw("xmp:Rating"), "0.10000000000000001");
    EXPECT_THAT(provider->mWritten, ElementsAre(At("xmp:Rating")));
    provider->mWritten.clear();
    SetMinimalFloatValue({At("xmp:Rating"), provider}, 0.1);
    EXPECT_THAT(provider->mWritten, IsEmpty());
    SetMinimalFloatValue({At("xmp:Rating"), nullptr}, 0.1);
}

TEST_F(Writing, DeletesWithEmptiedStructuresButNeverItems) {
    SetValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity"), "Kiel");
    SetValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiUrlWork"), "u");
    SetValue(Tree(), At("Iptc4xmpExt:LocationShown[1]/Iptc4xmpExt:City"), "Kiel");
    SetValue(Tree(), At("dc:subject"), "a; b");
    SetValue(Tree(), At("dc:relation"), "r; s");
    EXPECT_TRUE(DeleteValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity")));
    EXPECT_TRUE(HasValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo")));
    EXPECT_TRUE(DeleteValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiUrlWork")));
    EXPECT_FALSE(HasValue(Tree(), At("Iptc4xmpCore:CreatorContactInfo")));
    EXPECT_TRUE(DeleteValue(Tree(), At("Iptc4xmpExt:LocationShown[1]/Iptc4xmpExt:City")));
    EXPECT_EQ(CountArrayItems(Tree(), At("Iptc4xmpExt:LocationShown")), 1);
    EXPECT_TRUE(DeleteValue(Tree(), At("dc:subject[1]")));
    EXPECT_THAT(GetItems(Tree(), At("dc:subject")), ElementsAre("", "b"));
    EXPECT_TRUE(DeleteValue(Tree(), At("dc:relation[1]")));
    EXPECT_THAT(GetItems(Tree(), At("dc:relation")), ElementsAre("s"));
    EXPECT_FALSE(DeleteValue(Tree(), At("dc:source")));
    EXPECT_FALSE(DeleteValue(nullptr, At("dc:subject")));
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(Writing, MatchesEmptiedParentsByWholeSteps) {
    ParseBufferAndRegisterDefinitions(
        "<xmp_definitions><xmp_type name='box'><xmp_field namespace='n:b' prefix='b' name='f' type='text'/></xmp_type>"
        "<xmp_schema namespace='n:b' prefix='b'><xmp_property name='Box' type='box'/><xmp_property name='Boxes' "
        "type='box'/>"
        "</xmp_schema></xmp_definitions>",
        u"", false);
    SetValue(Tree(), At("b:Box/b:f"), "1");
    SetValue(Tree(), At("b:Boxes/b:f"), "2");
    EXPECT_TRUE(DeleteValue(Tree(), At("b:Boxes/b:f")));
    EXPECT_FALSE(HasValue(Tree(), At("b:Boxes")));
    EXPECT_EQ(Text("b:Box/b:f"), "1");
}

}  // namespace
}  // namespace zephmetadata
