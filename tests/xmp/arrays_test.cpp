#include <gmock/gmock.h>

#include <vector>

#include "xmp/toolkit_fixture.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::uint32_t kBag = kPropValueIsArray;
constexpr std::uint32_t kSeq = kPropValueIsArray | kPropArrayIsOrdered;

struct JoinRow {
    const char* mLabel;
    std::vector<UTF8String> mItems;
    UTF8String mJoined;
};

class JoinTest : public RunningToolkit<::testing::TestWithParam<JoinRow>> {};

TEST_P(JoinTest, SplitsIntoTheSameItems) {
    const XMPMetaPtr tree = NewTree();
    for (const UTF8String& item : GetParam().mItems) {
        AppendArrayItem(tree.get(), kOwn, "b", kBag, item);
    }
    const std::optional<UTF8String> joined = CatenateArrayItems(tree.get(), kOwn, "b");
    EXPECT_EQ(joined, GetParam().mJoined);
    EXPECT_EQ(SplitItems(*joined), GetParam().mItems);
}

INSTANTIATE_TEST_SUITE_P(Rows, JoinTest,
                         ::testing::Values(JoinRow{"Plain", {"a", "b c"}, "a; b c"},
                                           JoinRow{"Semicolon", {"a;b", ";"}, R"("a;b"; ";")"},
                                           JoinRow{"QuoteWithin", {R"(5" pipe)", R"(6")"}, R"(5" pipe; 6")"},
                                           JoinRow{"QuoteInFront", {R"("a" b)", R"(")"}, R"("""a"" b"; """")"},
                                           JoinRow{"QuoteAndSemicolon", {R"(a";"b)"}, R"("a"";""b")"},
                                           JoinRow{"SpacesAround", {" a", "b ", " "}, R"(" a"; "b "; " ")"},
                                           JoinRow{"Empty", {"", "a", ""}, R"(""; a; "")"},
                                           JoinRow{"CommaAndLines", {"a, b", "c\nd"}, "a, b; c\nd"}),
                         LabelOf());

TEST(SplitItems, TakesOtherTextAsPeopleWriteIt) {
    using Items = std::vector<UTF8String>;
    EXPECT_EQ(SplitItems("a;b ;; c;"), (Items{"a", "b", "c"}));
    EXPECT_EQ(SplitItems(R"("open; b)"), (Items{R"("open)", "b"}));
    EXPECT_EQ(SplitItems(R"("a" b; c)"), (Items{R"("a" b)", "c"}));
    EXPECT_EQ(SplitItems(R"( "a;b" ;c)"), (Items{"a;b", "c"}));
    EXPECT_EQ(SplitItems("  ; "), Items{});
}

class ArraysTest : public RunningToolkit<> {
protected:
    ArraysTest()
        : mTree(Parsed(Packet(
              "<own:b><rdf:Bag><rdf:li xml:lang='de'>1</rdf:li><rdf:li xml:lang='fr'>2</rdf:li>"
              "<rdf:li xml:lang='it'>3</rdf:li></rdf:Bag></own:b><own:simple>v</own:simple>"
              "<own:c><rdf:Bag><rdf:li rdf:parseType='Resource'><own:f>1</own:f></rdf:li></rdf:Bag></own:c>"))) {}

    std::string Joined() { return CatenateArrayItems(mTree.get(), kOwn, "b").value_or("none"); }
    std::string Language(int item) {
        const std::string path = "b[" + std::to_string(item) + "]/?xml:lang";
        return GetProperty(mTree.get(), kOwn, path).value_or(Property{"none", 0}).mValue;
    }

    XMPMetaPtr mTree;
};

TEST_F(ArraysTest, ItemsAreSetInsertedAppendedAndDeletedByNumber) {
    XMPMetaHandle tree = mTree.get();
    SetArrayItem(tree, kOwn, "b", 2, "two");
    EXPECT_EQ(Joined() + Language(2), "1; two; 3fr");
    SetArrayItem(tree, kOwn, "b", 4, "end", kInsertBeforeItem);
    SetArrayItem(tree, kOwn, "b", kLastItem, "before", kInsertBeforeItem);
    SetArrayItem(tree, kOwn, "b", kLastItem, "END");
    EXPECT_EQ(Joined(), "1; two; 3; before; END");
    EXPECT_FALSE(DeleteArrayItem(tree, kOwn, "b", 6));
    EXPECT_FALSE(DeleteArrayItem(tree, kOwn, "b", 0));
    EXPECT_FALSE(DeleteArrayItem(tree, kOwn, "none", 1));
    EXPECT_TRUE(DeleteArrayItem(tree, kOwn, "b", 1));
    EXPECT_TRUE(DeleteArrayItem(tree, kOwn, "b", kLastItem));
    EXPECT_EQ(Joined(), "two; 3; before");
    AppendArrayItem(tree, kOwn, "b", kSeq, {}, kPropValueIsStruct);
    EXPECT_EQ(CountArrayItems(tree, kOwn, "b"), 4U);
    AppendArrayItem(tree, kOwn, "new", kPropArrayIsOrdered, "x");
    EXPECT_EQ(GetProperty(tree, kOwn, "new")->mOptions & kPropCompositeMask, kSeq);
}

TEST_F(ArraysTest, WhatDoesNotFitIsRefusedAndChangesNothing) {
    XMPMetaHandle tree = mTree.get();
    const std::string before = Listing(tree);
    EXPECT_EQ(ErrorOf([&] { SetArrayItem(tree, kOwn, "none", 1, "v", kInsertBeforeItem); }), -104);
    EXPECT_EQ(ErrorOf([&] { SetArrayItem(tree, kOwn, "b", 5, "v", kInsertBeforeItem); }), -104);
    EXPECT_EQ(ErrorOf([&] { SetArrayItem(tree, kOwn, "b", 4, "v"); }), -104);
    EXPECT_EQ(ErrorOf([&] { SetArrayItem(tree, kOwn, "b", 0, "v"); }), -104);
    EXPECT_EQ(ErrorOf([&] { SetArrayItem(tree, kOwn, "b", 1, "\x01"); }), -205);
    EXPECT_EQ(ErrorOf([&] { AppendArrayItem(tree, kOwn, "none", 0, "v"); }), -103);
    EXPECT_EQ(ErrorOf([&] { AppendArrayItem(tree, kOwn, "simple", kBag, "v"); }), -102);
    EXPECT_EQ(ErrorOf([&] { CountArrayItems(tree, kOwn, "simple"); }), -102);
    EXPECT_EQ(ErrorOf([&] { CatenateArrayItems(tree, kOwn, "simple"); }), -102);
    EXPECT_EQ(ErrorOf([&] { CatenateArrayItems(tree, kOwn, "c"); }), -4);
    EXPECT_EQ(CatenateArrayItems(tree, kOwn, "none"), std::nullopt);
    EXPECT_EQ(CountArrayItems(tree, kOwn, "none"), 0U);
    EXPECT_EQ(Listing(tree), before);
}

TEST_F(ArraysTest, WhatHasAnotherShapeIsReplacedWhereTheWholeIsSet) {
    const std::string body =
        "<own:t>old</own:t><own:n><rdf:Bag><rdf:li rdf:parseType='Resource'><own:f>1</own:f></rdf:li><rdf:li>2</rdf:li>"
        "</rdf:Bag></own:n><dc:creator><rdf:Alt><rdf:li xml:lang='x-default'>a</rdf:li><rdf:li xml:lang='de'>b</rdf:li>"
        "</rdf:Alt></dc:creator><own:q rdf:parseType='Resource'><rdf:value>v</rdf:value><own:r>r</own:r></own:q>"
        "<own:a><rdf:Alt><rdf:li xml:lang='x-default' rdf:parseType='Resource'><rdf:value rdf:parseType='Resource'>"
        "<own:f>1</own:f></rdf:value></rdf:li></rdf:Alt></own:a>";
    using Change = std::function<void(XMPMetaHandle)>;
    const struct {
        const char* mCase;
        Change mChange;
        const char* mNew;  ///< what the tree then holds; null for a refusal
    } rows[] = {
        {"seq over alternative", [](auto* t) { SeparateArrayItems(t, kDC, "creator", kSeq, "n; m"); },
         "dc:creator=\ndc:creator[1]=n\ndc:creator[2]=m\n"},
        {"nothing over alternative", [](auto* t) { SeparateArrayItems(t, kDC, "creator", kSeq, ""); }, ""},
        {"items over text", [](auto* t) { SeparateArrayItems(t, kOwn, "t", kBag, "a"); }, "own:t=\nown:t[1]=a\n"},
        {"items over structures", [](auto* t) { SeparateArrayItems(t, kOwn, "n", kBag, "a"); }, "own:n=\nown:n[1]=a\n"},
        {"text over structure", [](auto* t) { SetArrayItem(t, kOwn, "n", 1, "x"); },
         "own:n=\nown:n[1]=x\nown:n[2]=2\n"},
        {"text over array", [](auto* t) { SetProperty(t, kOwn, "n", "x"); }, "own:n=x\n"},
        {"array over a text with qualifiers", [](auto* t) { SeparateArrayItems(t, kOwn, "q", kBag, "a"); },
         "own:q=\nown:q/?own:r=r\nown:q[1]=a\n"},
        {"text over an item with a language", [](auto* t) { SetArrayItem(t, kOwn, "a", 1, "x"); },
         "own:a[1]=x\nown:a[1]/?xml:lang=x-default\n"},
        {"x-default over text", [](auto* t) { SetLocalizedText(t, kOwn, "t", {}, "x-default", "x"); },
         "own:t=\nown:t[1]=x\nown:t[1]/?xml:lang=x-default\n"},
        {"a language over text", [](auto* t) { SetLocalizedText(t, kOwn, "t", {}, "de", "x"); },
         "own:t[1]=old\nown:t[1]/?xml:lang=x-default\nown:t[2]=x\nown:t[2]/?xml:lang=de\n"},
        {"x-default over array", [](auto* t) { SetLocalizedText(t, kOwn, "n", {}, "x-default", "x"); },
         "own:n=\nown:n[1]=x\nown:n[1]/?xml:lang=x-default\n"},
        {"a language over array", [](auto* t) { SetLocalizedText(t, kOwn, "n", {}, "de", "x"); }, nullptr},
        {"item in text", [](auto* t) { SetArrayItem(t, kOwn, "t", 1, "x"); }, nullptr},
        {"item in alternative", [](auto* t) { AppendArrayItem(t, kDC, "creator", kSeq, "x"); }, nullptr},
        {"item before another", [](auto* t) { SetArrayItem(t, kDC, "creator", 1, "x", kInsertBeforeItem); }, nullptr},
        {"bad text", [](auto* t) { SeparateArrayItems(t, kDC, "creator", kSeq, "\x01"); }, nullptr},
        {"bad language", [](auto* t) { SetLocalizedText(t, kOwn, "t", {}, "?", "x"); }, nullptr},
    };
    for (const auto& row : rows) {
        const XMPMetaPtr tree = Parsed(Packet(body));
        const std::string before = Listing(tree.get());
        EXPECT_EQ(ErrorOf([&] { row.mChange(tree.get()); }) != 0, row.mNew == nullptr) << row.mCase;
        if (row.mNew == nullptr) {
            EXPECT_EQ(Listing(tree.get()), before) << row.mCase;
        } else {
            EXPECT_THAT(Listing(tree.get()), ::testing::HasSubstr(row.mNew)) << row.mCase;
            EXPECT_NE(Listing(tree.get()), before) << row.mCase;
        }
        EXPECT_TRUE(TreesEqual(Parsed(SerializePacket(tree.get())).get(), tree.get())) << row.mCase;
    }
}

TEST_F(ArraysTest, SeparatingKeepsTheItemsAroundTheChange) {
    XMPMetaHandle tree = mTree.get();
    SeparateArrayItems(tree, kOwn, "b", kBag, "1; new; 3");
    EXPECT_EQ(Joined() + Language(1) + Language(2) + Language(3), "1; new; 3denoneit");
    SeparateArrayItems(tree, kOwn, "b", kBag, "3");
    EXPECT_EQ(Joined() + Language(1), "3it");
    SeparateArrayItems(tree, kOwn, "b", kSeq, "0; 3; 3");
    EXPECT_EQ(Joined(), "0; 3; 3");
    EXPECT_EQ(GetProperty(tree, kOwn, "b")->mOptions & kPropCompositeMask, kBag)
        << "an array that is there keeps its form";
    SeparateArrayItems(tree, kOwn, "b", kBag, " ; ");
    EXPECT_FALSE(PropertyExists(tree, kOwn, "b"));
    SeparateArrayItems(tree, kOwn, "b", kPropArrayIsOrdered, "x");
    EXPECT_EQ(GetProperty(tree, kOwn, "b")->mOptions & kPropCompositeMask, kSeq);
}

TEST_F(ArraysTest, ChangesOfItemsKeepTheMarkOfTheArrayAndChangesOfTheWholeClearIt) {
    struct Row {
        void (*mChange)(XMPMetaHandle);
        bool mKeeps;
    };
    const std::vector<Row> rows = {
        {[](XMPMetaHandle t) { SetArrayItem(t, kOwn, "b", 1, "v"); }, true},
        {[](XMPMetaHandle t) { SetArrayItem(t, kOwn, "b", 1, "v", kInsertBeforeItem); }, true},
        {[](XMPMetaHandle t) { AppendArrayItem(t, kOwn, "b", kBag, "v"); }, true},
        {[](XMPMetaHandle t) { SetProperty(t, kOwn, "b[1]", "v"); }, true},
        {[](XMPMetaHandle t) { DeleteArrayItem(t, kOwn, "b", 1); }, true},
        {[](XMPMetaHandle t) { SeparateArrayItems(t, kOwn, "b", kBag, "x"); }, false},
        {[](XMPMetaHandle t) { SeparateArrayItems(t, kOwn, "b", kBag, *CatenateArrayItems(t, kOwn, "b")); }, false},
        {[](XMPMetaHandle t) { DeleteProperty(t, kOwn, "b"); }, false},
    };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        MarkMixed(mTree.get(), kOwn, "b");
        rows[i].mChange(mTree.get());
        EXPECT_EQ(IsMixed(mTree.get(), kOwn, "b"), rows[i].mKeeps) << "change " << i;
    }
}

struct LanguageRow {
    const char* mLabel;
    const char *mGeneric, *mSpecific, *mText;
};

class LanguageTest : public RunningToolkit<::testing::TestWithParam<LanguageRow>> {};

TEST_P(LanguageTest, FindsTheNearestText) {
    const XMPMetaPtr tree =
        Parsed(Packet("<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>D</rdf:li><rdf:li xml:lang='den'>N</rdf:li>"
                      "<rdf:li xml:lang='de-CH'>S</rdf:li><rdf:li xml:lang='de-AT'>A</rdf:li></rdf:Alt></dc:title>"));
    EXPECT_EQ(GetLocalizedText(tree.get(), kDC, "title", GetParam().mGeneric, GetParam().mSpecific), GetParam().mText);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LanguageTest,
    ::testing::Values(LanguageRow{"Exact", "", "de-AT", "A"}, LanguageRow{"LetterCase", "", "DE-at", "A"},
                      LanguageRow{"Generic", "de", "de-DE", "S"}, LanguageRow{"NoGeneric", "", "de-DE", "D"},
                      LanguageRow{"Default", "fr", "fr-FR", "D"}, LanguageRow{"AskedDefault", "", "x-default", "D"}),
    LabelOf());

class LanguagesTest : public RunningToolkit<> {
protected:
    void Set(const char* language, const char* text) {
        SetLocalizedText(mTree.get(), kDC, "title", {}, language, text);
    }
    std::string Texts() {
        std::string texts;
        for (const Node& node : Nodes(mTree.get(), kDC, "title", Walk::kSubtree)) {
            texts += node.mValue + ((node.mOptions & kPropIsQualifier) != 0 ? " " : ":");
        }
        return texts;
    }
    XMPMetaPtr mTree = NewTree();
};

TEST_F(LanguagesTest, SettingATextChangesNoOther) {
    EXPECT_EQ(GetLocalizedText(mTree.get(), kDC, "title", {}, "x-default"), std::nullopt);
    Set("x-default", "A");
    EXPECT_EQ(Texts(), "A:x-default ");
    Set("de-ch", "A");
    Set("x-default", "B");
    EXPECT_EQ(Texts(), "B:x-default A:de-CH ");
    Set("DE-ch", "C");
    Set("fr", "F");
    EXPECT_EQ(Texts(), "B:x-default C:de-CH F:fr ");
    DeleteArrayItem(mTree.get(), kDC, "title", 1);
    EXPECT_EQ(GetLocalizedText(mTree.get(), kDC, "title", {}, "x-default"), "C");
    Set("x-default", "D");
    EXPECT_EQ(Texts(), "D:x-default C:de-CH F:fr ");
}

TEST_F(LanguagesTest, MarksStayWithTheLanguagesThatAreNotSet) {
    const auto mixed = [&] {
        std::string languages = IsMixed(mTree.get(), kDC, "title") ? "whole " : "";
        for (const Node& node : Nodes(mTree.get(), kDC, "title", Walk::kSubtree)) {
            const bool isItem = (node.mOptions & kPropIsQualifier) == 0;
            languages += !isItem && IsMixed(mTree.get(), kDC, node.mPath) ? node.mValue + " " : "";
        }
        return languages;
    };
    Set("x-default", "X");
    Set("de", "D");
    Set("fr", "F");
    MarkMixed(mTree.get(), kDC, "title");
    Set("de", "D");
    EXPECT_EQ(mixed(), "x-default fr ");
    DeleteLocalizedText(mTree.get(), kDC, "title", "x-default");
    EXPECT_EQ(mixed(), "fr ");
    Set("x-default", "N");
    EXPECT_EQ(mixed(), "fr ") << "the items moved";
    Set("fr", "N");
    EXPECT_EQ(mixed(), "");
    for (const char* const language : {"x-default", "de"}) {
        DeleteLocalizedText(mTree.get(), kDC, "title", language);
    }
    MarkMixed(mTree.get(), kDC, "title");
    DeleteLocalizedText(mTree.get(), kDC, "title", "fr");
    EXPECT_EQ(mixed(), "whole ") << "other sources may hold more";
    EXPECT_EQ(Texts(), "");
}

TEST_F(LanguagesTest, TheFirstTextIsTheDefaultToo) {
    Set("de", "A");
    EXPECT_EQ(Texts(), "A:x-default A:de ");
    EXPECT_EQ(ErrorOf([&] { Set("not a tag", "x"); }), -5);
    EXPECT_EQ(ErrorOf([&] { Set("de", "\x02"); }), -205);
    EXPECT_EQ(Texts(), "A:x-default A:de ");
    SetProperty(mTree.get(), kDC, "format", "v");
    EXPECT_EQ(ErrorOf([&] { GetLocalizedText(mTree.get(), kDC, "format", {}, "de"); }), -102);
}

}  // namespace
}  // namespace zephmetadata::toolkit
