#include "xmp/packet/packet_text.h"

#include <iostream>
#include <sstream>

#include "xmp/core/exempi_handles.h"
#include "xmp/packet/packet_scan.h"
#include "xmp/toolkit_fixture.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

std::string Li(const std::string& language, const std::string& text) {
    return "<rdf:li xml:lang='" + language + "'>" + text + "</rdf:li>";
}

std::string Alt(const std::string& items) {
    return "<own:t><rdf:Alt>" + items + "</rdf:Alt></own:t>";
}

struct PairRow {
    const char* mLabel;
    std::string mBody;
    std::string mListing;  ///< texts and languages of the alternative, without paths
};

class PairTest : public RunningToolkit<::testing::TestWithParam<PairRow>> {};

std::string Texts(XMPMetaHandle tree) {
    std::string texts;
    for (const Node& node : Nodes(tree, {}, {}, Walk::kSubtree)) {
        texts += node.mValue.empty() ? "" : node.mValue + " ";
    }
    return texts;
}

TEST_P(PairTest, KeepsBothTextsThroughReadingAndWriting) {
    const XMPMetaPtr tree = Parsed(Packet(GetParam().mBody));
    EXPECT_EQ(Texts(tree.get()), GetParam().mListing);
    SetProperty(tree.get(), kDC, "format", "");
    EXPECT_EQ(Texts(Parsed(SerializePacket(tree.get())).get()), GetParam().mListing);
    EXPECT_EQ(Texts(tree.get()), GetParam().mListing) << "writing changed the tree";
}

TEST_P(PairTest, IsNotOverlookedByTheScan) {
    const std::string packet = Packet(GetParam().mBody);
    EXPECT_TRUE(MayNeedWidening(packet) || WidenPacket(packet) == packet);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PairTest,
    ::testing::Values(
        PairRow{"DefaultFirst", Alt(Li("x-default", "A") + Li("de", "B")), "A x-default B de "},
        PairRow{"DefaultSecond", Alt(Li("de", "B") + Li("x-default", "A")), "A x-default B de "},
        PairRow{"LetterCase", Alt(Li("X-Default", "A") + Li("DE", "B")), "A x-default B de "},
        PairRow{"SameText", Alt(Li("x-default", "A") + Li("de", "A")), "A x-default A de "},
        PairRow{"EmptyDefault", Alt("<rdf:li xml:lang='x-default'/>" + Li("de", "B")), "x-default B de "},
        PairRow{"EmptyOther", Alt(Li("x-default", "A") + "<rdf:li xml:lang='de'/>"), "A x-default de "},
        PairRow{"BothDefault", Alt(Li("x-default", "A") + Li("x-default", "B")), "A x-default B x-default "},
        PairRow{"UndeterminedOther", Alt(Li("x-default", "A") + Li("und", "B")), "A x-default B und "},
        PairRow{"NoDefault", Alt(Li("de", "A") + Li("fr", "B")), "A de B fr "},
        PairRow{"Markup",
                Alt("<rdf:li own:q='xml:lang=\"x\"' rdf:value='a' xml:lang = \"x-default\" />" +
                    Li("de", "<![CDATA[<B>]]><!-- c -->&#x43;")),
                "a x-default xml:lang=\"x\" <B>C de "},
        PairRow{"QualifiersOnDefault",
                Alt("<rdf:li xml:lang='x-default' "
                    "rdf:parseType='Resource'><rdf:value>A</rdf:value><own:q>q</own:q></rdf:li>" +
                    Li("de", "B")),
                "A x-default q B de "},
        PairRow{"LanguageOnTheValue",
                Alt("<rdf:li rdf:parseType='Resource'><rdf:value "
                    "xml:lang='x-default'>A</rdf:value><own:q>q</own:q></rdf:li>" +
                    Li("de", "B")),
                "A x-default q B de "},
        PairRow{"OtherPrefixes",
                "<own:t><r:Alt xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:li "
                "xml:lang='x-default'>A</r:li><r:_2 xml:lang='de'>B</r:_2></r:Alt></own:t>",
                "A x-default B de "},
        PairRow{"InStructsOfBags",
                "<own:b><rdf:Bag><rdf:li rdf:parseType='Resource'>" + Alt(Li("x-default", "A") + Li("de", "B")) +
                    "</rdf:li><rdf:li rdf:parseType='Resource'>" + Alt(Li("x-default", "C") + Li("de", "D")) +
                    "</rdf:li></rdf:Bag></own:b>",
                "A x-default B de C x-default D de "},
        PairRow{"InAlternatives",
                "<own:b><rdf:Alt><rdf:li><rdf:Alt>" + Li("x-default", "A") + Li("de", "B") +
                    "</rdf:Alt></rdf:li></rdf:Alt></own:b>",
                "A x-default B de "},
        PairRow{"InQualifiers",
                "<own:a rdf:parseType='Resource'><rdf:value>v</rdf:value>" + Alt(Li("x-default", "A") + Li("de", "B")) +
                    "</own:a>",
                "v A x-default B de "},
        PairRow{"ThreeAsWrittenByUs", Alt(Li("x-default", "A") + Li("de", "B") + Li("und", "A")), "A x-default B de "},
        PairRow{"ThreeOfOneText", Alt(Li("x-default", "A") + Li("de", "A") + Li("und", "A")),
                "A x-default A de A und "},
        PairRow{"ThreeWithOtherText", Alt(Li("x-default", "A") + Li("de", "B") + Li("und", "C")),
                "A x-default B de C und "},
        PairRow{"Four", Alt(Li("x-default", "A") + Li("de", "B") + Li("fr", "C") + Li("und", "A")),
                "A x-default B de C fr A und "}),
    LabelOf());

class LostTextTest : public RunningToolkit<> {};

TEST_F(LostTextTest, OtherProgramsReadBothTexts) {
    const XMPMetaPtr tree = Parsed(Packet(Alt(Li("x-default", "A") + Li("de", "B"))));
    const std::string packet = SerializePacket(tree.get(), PacketForm::kBareRDF);
    for (const char* const item : {">A</rdf:li>", "xml:lang=\"de\">B</rdf:li>", "xml:lang=\"und\">A</rdf:li>"}) {
        EXPECT_NE(packet.find(item), std::string::npos) << item << " in " << packet;
    }
    EXPECT_EQ(packet.find(kTwinLanguage), std::string::npos);
}

TEST_F(LostTextTest, WhatCannotBeReadBackIsNotWritten) {
    const XMPMetaPtr tree = Parsed(Packet("<z:a xmlns:z='http://z.test/?a=1&amp;b=2'>v</z:a>"));
    EXPECT_EQ(ErrorOf([&] { SerializePacket(tree.get()); }), -201);
}

class ToolkitTest : public RunningToolkit<> {};

TEST_F(ToolkitTest, NamespacesKeepTheirFirstPrefix) {
    EXPECT_TRUE(RegisterNamespace("http://one.test/", "one"));
    EXPECT_TRUE(RegisterNamespace("http://one.test/", "one"));
    EXPECT_FALSE(RegisterNamespace("http://one.test/", "uno"));
    EXPECT_EQ(PrefixOf("http://one.test/"), "one");
    EXPECT_EQ(NamespaceOf("one"), "http://one.test/");
    EXPECT_EQ(NamespaceOf("uno"), std::nullopt);
    for (const char* const prefix : {"", "1a", "a:b", "a:", "a b", "xmlns", "\xFF"}) {
        EXPECT_FALSE(RegisterNamespace("http://two.test/", prefix)) << prefix;
    }
    EXPECT_EQ(PrefixOf("http://two.test/"), std::nullopt);
    EXPECT_FALSE(RegisterNamespace("", "two") || RegisterNamespace("http://a\"b/", "two"));
    EXPECT_FALSE(RegisterNamespace("http://two.test/", "dc"));
    EXPECT_EQ(NamespaceOf("dc"), kDC);
    const XMPMetaPtr tree = NewTree();
    SetProperty(tree.get(), "http://two.test/", "a", "v");
    EXPECT_EQ(GetProperty(tree.get(), "http://two.test/", "a")->mValue, "v") << "refused, and usable nevertheless";
}

TEST_F(ToolkitTest, PathsAreComposedFromNamesThatExist) {
    EXPECT_EQ(ComposeStructFieldPath(kOwn, "s", kDC, "f"), "s/dc:f");
    EXPECT_EQ(ComposeQualifierPath(kOwn, "s", kDC, "f"), "s/?dc:f");
    EXPECT_EQ(ComposeArrayItemPath(kOwn, "s", 3) + ComposeArrayItemPath(kOwn, "s", -1), "s[3]s[last()]");
    EXPECT_EQ(ErrorOf([] { ComposeStructFieldPath(kOwn, "s", "http://un.test/", "f"); }), -101);
    EXPECT_EQ(ErrorOf([] { ComposeStructFieldPath("http://un.test/", "s", kDC, "f"); }), -101);
    EXPECT_EQ(ErrorOf([] { ComposeQualifierPath(kOwn, "s", kDC, ""); }), -102);
    EXPECT_EQ(ErrorOf([] { ComposeStructFieldPath(kOwn, "", kDC, "f"); }), -102);
    EXPECT_EQ(ErrorOf([] { ComposeArrayItemPath(kOwn, "s", 0); }), -104);
    EXPECT_EQ(ErrorOf([] { ComposeArrayItemPath(kOwn, "s", -2); }), -104);
}

TEST_F(ToolkitTest, NothingOfTheToolkitReachesStandardError) {
    std::ostringstream seen;
    Stop();
    std::streambuf* const own = std::cerr.rdbuf(seen.rdbuf());
    Start();
    RegisterNamespace(kOwn, "own");
    const XMPMetaPtr tree = NewTree();
    ErrorOf([&] { SetProperty(tree.get(), kOwn, "a b", "v"); });
    ErrorOf([&] { Nodes(tree.get(), kOwn, "a[", Walk::kSubtree); });
    ParsePacket(tree.get(), Packet("<nons/>"));
    EXPECT_EQ(seen.str(), "");
    {
        const QuietToolkit quiet;
        xmp_set_property(Native(tree.get()), kOwn.c_str(), "a b", "v", 0);
        EXPECT_EQ(seen.str(), "");
    }
    std::cerr << "the host's " << 'c' << std::flush;
    EXPECT_EQ(seen.str(), "the host's c");
    Stop();
    EXPECT_EQ(std::cerr.rdbuf(), seen.rdbuf());
    std::cerr.rdbuf(own);
}

TEST_F(ToolkitTest, TreesOutliveTheToolkit) {
    EXPECT_NE(CoreVersion(), "");
    XMPMetaPtr first = NewTree();
    const XMPMetaPtr second = NewTree();
    SetProperty(second.get(), kDC, "format", "v");
    Stop();
    EXPECT_FALSE(IsRunning());
    EXPECT_EQ(ErrorOf([&] { GetProperty(second.get(), kDC, "format"); }), -3);
    EXPECT_EQ(ErrorOf([] { NewTree(); }), -3);
    EXPECT_EQ(PrefixOf(kDC), std::nullopt);
    first.reset();
    Start();
    EXPECT_EQ(GetProperty(second.get(), kDC, "format")->mValue, "v");
    EXPECT_EQ(PrefixOf(kOwn), std::nullopt) << "a new start begins anew";
}

}  // namespace
}  // namespace zephmetadata::toolkit
