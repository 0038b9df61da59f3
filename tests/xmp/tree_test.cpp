#include <random>
#include <vector>

#include "support/growth.h"
#include "xmp/toolkit_fixture.h"
#include "xmp/tree/tree_journal.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::uint32_t kBag = kPropValueIsArray;
constexpr std::uint32_t kAltText =
    kPropValueIsArray | kPropArrayIsOrdered | kPropArrayIsAlternate | kPropArrayIsAltText;

class TreeTest : public RunningToolkit<> {};

// Trees of every shape that a packet can carry, made from a seed.
class RandomTree {
public:
    explicit RandomTree(unsigned seed) : mRandom(seed), mTree(NewTree()) {}

    XMPMetaPtr Make() {
        const int count = Below(8) + 1;
        for (int i = 0; i < count; ++i) {
            Fill("own:p" + std::to_string(i), 3, false);
        }
        return mTree;
    }

private:
    int Below(int end) { return static_cast<int>(mRandom() % static_cast<unsigned>(end)); }

    std::string Text() {
        static const std::vector<std::string> kPieces = {"a",         "  ",
                                                         "\t",        "\n",
                                                         "\r\n",      "\r",
                                                         "<b>&amp;",  "]]>",
                                                         "\"'",       "&#10;",
                                                         "\xC3\xA4",  "\xE2\x80\xA8",
                                                         "\xC2\x85",  "\xF0\x9F\x8C\x8A",
                                                         "x-default", "<?xpacket end='w'?>",
                                                         ";",         "0"};
        std::string text;
        for (int i = Below(4); i > 0; --i) {
            text += kPieces[static_cast<std::size_t>(Below(static_cast<int>(kPieces.size())))];
        }
        return text;
    }

    void Simple(const std::string& path, bool isItem) {
        const std::uint32_t options = Below(6) == 0 ? 2 : 0;
        if (isItem) {
            AppendArrayItem(mTree.get(), kOwn, path.substr(0, path.rfind('[')), kBag, Text(), options);
        } else {
            SetProperty(mTree.get(), kOwn, path, Text(), options);
        }
    }

    void Composite(const std::string& path, bool isItem, std::uint32_t options) {
        if (isItem) {
            AppendArrayItem(mTree.get(), kOwn, path.substr(0, path.rfind('[')), kBag, {}, options);
        } else {
            SetProperty(mTree.get(), kOwn, path, {}, options);
        }
    }

    void Languages(const std::string& path) {
        static const std::vector<std::string> kTags = {"x-default", "de", "en-US", "und"};
        for (int i = 0, count = Below(5); i < count; ++i) {
            SetLocalizedText(mTree.get(), kOwn, path, {}, kTags[static_cast<std::size_t>(i)], Text());
        }
    }

    void Fill(const std::string& path, int depth, bool isItem) {
        const int kind = depth == 0 ? 0 : Below(6);
        if (kind < 2) {
            Simple(path, isItem);
        } else if (kind == 2) {
            Composite(path, isItem, kAltText);
            Languages(path);
        } else if (kind == 3) {
            Composite(path, isItem, kPropValueIsStruct);
            for (int i = Below(4); i > 0; --i) {
                Fill(path + "/own:f" + std::to_string(i), depth - 1, false);
            }
        } else {
            Composite(path, isItem, kind == 4 ? kBag : kBag | kPropArrayIsOrdered);
            for (int i = 1, count = Below(4); i <= count; ++i) {
                Fill(path + "[" + std::to_string(i) + "]", depth - 1, true);
            }
        }
        if (depth > 0 && Below(3) == 0) {
            Fill(path + "/?own:q", depth - 1, false);
        }
        if (depth > 0 && Below(5) == 0) {
            SetProperty(mTree.get(), kOwn, path + "/?xml:lang", "de-CH");
        }
    }

    std::mt19937 mRandom;
    XMPMetaPtr mTree;
};

TEST_F(TreeTest, EveryTreeComesBackFromItsPacketAndFromItsClone) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const XMPMetaPtr tree = RandomTree(seed).Make();
        const std::string before = Listing(tree.get());
        const PacketForm form = seed % 2 == 0 ? PacketForm::kFull : PacketForm::kBareRDF;
        const std::string packet = SerializePacket(tree.get(), form);
        EXPECT_EQ(Listing(tree.get()), before) << "writing changed the tree, seed " << seed;
        const XMPMetaPtr back = NewTree();
        ASSERT_TRUE(ParsePacket(back.get(), packet)) << "seed " << seed << "\n" << packet;
        EXPECT_TRUE(TreesEqual(tree.get(), back.get())) << "seed " << seed << "\n" << before << Listing(back.get());
        const XMPMetaPtr clone = CloneTree(tree.get());
        EXPECT_EQ(Listing(clone.get()), before) << "seed " << seed;
        EXPECT_TRUE(TreesEqual(tree.get(), clone.get())) << "seed " << seed;
    }
}

TEST_F(TreeTest, EveryChangeOfANodeMakesTreesUnequal) {
    const XMPMetaPtr tree =
        Parsed(Packet("<own:s rdf:parseType='Resource'><own:f>1</own:f></own:s><own:a>x</own:a>"
                      "<own:b><rdf:Bag><rdf:li>1</rdf:li><rdf:li>2</rdf:li></rdf:Bag></own:b>"));
    const std::vector<void (*)(XMPMetaHandle)> changes = {
        [](XMPMetaHandle t) { SetProperty(t, kOwn, "a", "y"); },
        [](XMPMetaHandle t) { SetProperty(t, kOwn, "a", "x", 2); },
        [](XMPMetaHandle t) { SetProperty(t, kOwn, "a/?xml:lang", "de"); },
        [](XMPMetaHandle t) { SetProperty(t, kOwn, "s/own:g", ""); },
        [](XMPMetaHandle t) { DeleteProperty(t, kOwn, "s/own:f"); },
        [](XMPMetaHandle t) { DeleteArrayItem(t, kOwn, "b", 2); },
        [](XMPMetaHandle t) { SetArrayItem(t, kOwn, "b", 1, "2"), SetArrayItem(t, kOwn, "b", 2, "1"); },
        [](XMPMetaHandle t) { SetProperty(t, kDC, "a", "x"); },
        [](XMPMetaHandle t) {
            DeleteProperty(t, kOwn, "b");
            SeparateArrayItems(t, kOwn, "b", kPropArrayIsOrdered, "1; 2");
        },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const XMPMetaPtr changed = CloneTree(tree.get());
        changes[i](changed.get());
        EXPECT_FALSE(TreesEqual(tree.get(), changed.get())) << "change " << i;
    }
}

TEST_F(TreeTest, OrderOfPropertiesAndOfTheDefaultLanguageDoesNotMatterForEquality) {
    const std::string one = "<rdf:li xml:lang='de'>B</rdf:li><rdf:li xml:lang='fr'>C</rdf:li>";
    const std::string other = "<rdf:li xml:lang='x-default'>A</rdf:li>";
    const XMPMetaPtr left = Parsed(Packet("<own:a>1</own:a><own:t><rdf:Alt>" + other + one + "</rdf:Alt></own:t>"));
    const XMPMetaPtr right = NewTree();
    AppendArrayItem(right.get(), kOwn, "t", kAltText, "B");
    AppendArrayItem(right.get(), kOwn, "t", kAltText, "C");
    AppendArrayItem(right.get(), kOwn, "t", kAltText, "A");
    SetProperty(right.get(), kOwn, "t[1]/?xml:lang", "de");
    SetProperty(right.get(), kOwn, "t[2]/?xml:lang", "fr");
    EXPECT_FALSE(TreesEqual(left.get(), right.get()));
    SetProperty(right.get(), kOwn, "t[3]/?xml:lang", "x-default");
    SetProperty(right.get(), kOwn, "a", "1");
    EXPECT_TRUE(TreesEqual(left.get(), right.get())) << Listing(left.get()) << Listing(right.get());
}

TEST_F(TreeTest, ASidecarOfManyShapesIsReadWhole) {
    const XMPMetaPtr tree =
        Parsed("<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?>\n" +
               Packet("<own:contact "
                      "rdf:parseType='Resource'><own:city>Bremen</own:city><own:mail>a@b.test</own:mail></own:contact>"
                      "<own:places><rdf:Bag><rdf:li rdf:parseType='Resource'><own:city>Bremen</own:city></rdf:li>"
                      "<rdf:li><rdf:Description own:city='Emden'/></rdf:li></rdf:Bag></own:places>"
                      "<dc:creator><rdf:Seq><rdf:li>One</rdf:li><rdf:li>Two</rdf:li></rdf:Seq></dc:creator>"
                      "<dc:title><rdf:Alt><rdf:li xml:lang='x-default'>Dyke</rdf:li><rdf:li "
                      "xml:lang='de'>Deich</rdf:li></rdf:Alt></dc:title>"
                      "<own:page rdf:resource='https://b.test/?a=1&amp;b=2'/>") +
               "\n    \n<?xpacket end='w'?>" + std::string(3, '\0'));
    EXPECT_EQ(Listing(tree.get()),
              "own:contact=\nown:contact/own:city=Bremen\nown:contact/own:mail=a@b.test\nown:places=\nown:places[1]=\n"
              "own:places[1]/own:city=Bremen\nown:places[2]=\nown:places[2]/own:city=Emden\n"
              "own:page=https://b.test/?a=1&b=2\ndc:creator=\ndc:creator[1]=One\ndc:creator[2]=Two\ndc:title=\n"
              "dc:title[1]=Dyke\ndc:title[1]/?xml:lang=x-default\ndc:title[2]=Deich\ndc:title[2]/?xml:lang=de\n");
}

struct WriteRow {
    const char* mLabel;
    std::string mPath, mValue;
    std::uint32_t mOptions;
    int mError;  ///< 0 when the write is done
};

class WriteTest : public RunningToolkit<::testing::TestWithParam<WriteRow>> {};

TEST_P(WriteTest, IsDoneOrLeavesTheTreeAsItWas) {
    const WriteRow& row = GetParam();
    const XMPMetaPtr tree =
        Parsed(Packet("<own:simple>old</own:simple><own:s rdf:parseType='Resource'><own:f>1</own:f></own:s>"
                      "<own:bag><rdf:Bag><rdf:li>1</rdf:li></rdf:Bag></own:bag>"));
    const std::string before = Listing(tree.get());
    const auto write = [&] { SetProperty(tree.get(), kOwn, row.mPath, row.mValue, row.mOptions); };
    EXPECT_EQ(ErrorOf(write), row.mError);
    if (row.mError != 0) {
        EXPECT_EQ(Listing(tree.get()), before);
    } else {
        EXPECT_EQ(GetProperty(tree.get(), kOwn, row.mPath)->mValue, row.mValue.substr(0, row.mValue.find('\0')));
        EXPECT_TRUE(TreesEqual(tree.get(), Parsed(SerializePacket(tree.get())).get()));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WriteTest,
    ::testing::Values(
        WriteRow{"NewSimple", "new", "v", 0, 0}, WriteRow{"MissingStructIsMade", "n/own:m/own:f", "v", 0, 0},
        WriteRow{"CutAtNUL", "new", std::string("ab\0cd", 5), 0, 0},
        WriteRow{"NonASCIIName", "\xC3\xA4h.x-y", "v", 0, 0}, WriteRow{"SameArrayAgain", "bag", "", kBag, 0},
        WriteRow{"RDFType", "simple/?rdf:type", "http://t.test/", 0, 0}, WriteRow{"LastItem", "bag[last()]", "v", 0, 0},
        WriteRow{"ItemOfMissingArray", "none[1]", "v", 0, -102}, WriteRow{"PastTheEnd", "bag[3]", "v", 0, -102},
        WriteRow{"TextOverStruct", "s", "v", 0, 0}, WriteRow{"TextOverArray", "bag", "v", 0, 0},
        WriteRow{"ArrayOverItem", "bag[1]", "", kBag, 0}, WriteRow{"ArrayOverText", "simple", "", kBag, 0},
        WriteRow{"SeqOverBag", "bag", "", 0x600, 0}, WriteRow{"TextOverStructOfBadText", "s", "a\x01", 0, -205},
        WriteRow{"CompositeWithTextOverText", "simple", "v", kBag, -103},
        WriteRow{"CompositeWithText", "new", "v", kBag, -103}, WriteRow{"FieldOfText", "simple/own:f", "v", 0, -102},
        WriteRow{"ControlCharacter", "new", "a\x01", 0, -205}, WriteRow{"NoUTF8", "new", "a\xFF", 0, -205},
        WriteRow{"Surrogate", "new", "\xED\xA0\x80", 0, -205}, WriteRow{"Overlong", "new", "\xC0\x80", 0, -205},
        WriteRow{"NonCharacter", "new", "\xEF\xBF\xBF", 0, -205}, WriteRow{"UnknownPrefix", "s/nope:f", "v", 0, -102},
        WriteRow{"EmptyPath", "", "v", 0, -102}, WriteRow{"BadName", "a b", "v", 0, -102},
        WriteRow{"SyntaxOfRDF", "s/rdf:about", "v", 0, -102},
        WriteRow{"BadLanguage", "simple/?xml:lang", "d\"e", 0, -5},
        WriteRow{"TooDeep",
                 [] {
                     std::string path = "d";
                     for (int i = 0; i < 100; ++i) {
                         path += "/own:d";
                     }
                     return path;
                 }(),
                 "v", 0, -102}),
    LabelOf());

struct PacketRow {
    const char* mLabel;
    std::string mPacket;
    std::optional<std::string> mValue;  ///< of own:a; none when the packet is refused
};

class PacketTest : public RunningToolkit<::testing::TestWithParam<PacketRow>> {};

TEST_P(PacketTest, IsReadOrLeavesTheTreeEmpty) {
    const XMPMetaPtr tree = NewTree();
    SetProperty(tree.get(), kOwn, "old", "1");
    EXPECT_EQ(ParsePacket(tree.get(), GetParam().mPacket), GetParam().mValue.has_value());
    if (GetParam().mValue) {
        EXPECT_EQ(GetProperty(tree.get(), kOwn, "a").value_or(Property{"none", 0}).mValue, *GetParam().mValue);
    } else {
        EXPECT_EQ(Listing(tree.get()), "");
    }
}

std::string Wide(const std::string& text, bool bigEndian) {
    std::string wide;
    for (const char c : text) {
        wide += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return wide;
}

std::string Nested(int depth) {
    std::string begin;
    std::string end;
    for (int i = 0; i < depth; ++i) {
        begin += "<own:d rdf:parseType='Resource'>";
        end += "</own:d>";
    }
    return Packet(begin + "<own:a>v</own:a>" + end);
}

std::string Repeated(std::string_view text, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

/// Each time with another number.
std::string Numbered(const std::string& before, const std::string& after, int count) {
    std::string repeated;
    for (int i = 0; i < count; ++i) {
        repeated.append(before).append(std::to_string(i)).append(after);
    }
    return repeated;
}

/// Items whose paths are as long as @p name.
std::string ItemsOf(const std::string& name, int count) {
    return Packet("<own:" + name + "><rdf:Bag>" + Repeated("<rdf:li/>", count) + "</rdf:Bag></own:" + name + ">");
}

const std::string kA = "<own:a>v</own:a>";
const std::string kLaughs = "<!DOCTYPE a [<!ENTITY a 'aaaaaaaaaa'><!ENTITY b '&a;&a;&a;&a;&a;&a;&a;&a;'>]>";

INSTANTIATE_TEST_SUITE_P(
    Rows, PacketTest,
    ::testing::Values(
        PacketRow{"Plain", Packet(kA), "v"}, PacketRow{"ByteOrderMark", "\xEF\xBB\xBF" + Packet(kA), "v"},
        PacketRow{"UTF16BigEndian", "\xFE\xFF" + Wide("<?xml version='1.0' encoding='UTF-16'?>" + Packet(kA), true),
                  "v"},
        PacketRow{"UTF16LittleEndianWithoutMark", Wide(Packet(kA), false), "v"},
        PacketRow{"DeclaredLatin1", "<?xml version='1.0' encoding='ISO-8859-1'?>" + Packet("<own:a>\xE4</own:a>"),
                  "\xC3\xA4"},
        PacketRow{"ControlCharacters", Packet("<own:a>x\x02&#x1;&#2;y&#10;</own:a>"), "x   y\n"},
        PacketRow{"HexadecimalReferences", Packet("<own:a>&#x27;&#xE4;&#x20AC;&#xD;&#39;</own:a>"),
                  "'\xC3\xA4\xE2\x82\xAC\r'"},
        PacketRow{"NoReferenceInCDATA", Packet("<own:a><![CDATA[&#x27;]]>&#x27;</own:a>"), "&#x27;'"},
        PacketRow{"BlanksAndNULsBehind", Packet(kA) + std::string("\n \0\0", 4), "v"},
        PacketRow{"NothingInIt", "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/>", "none"},
        PacketRow{"BareRDFInsideOtherXML", "<svg>" + Packet(kA) + "</svg>", "v"}, PacketRow{"Empty", "", std::nullopt},
        PacketRow{"Blanks", "  \n", std::nullopt}, PacketRow{"OtherXML", "<svg/>", std::nullopt},
        PacketRow{"Garbage", "garbage", std::nullopt}, PacketRow{"CutOff", Packet(kA).substr(0, 200), std::nullopt},
        PacketRow{"TextBehind", Packet(kA) + "x", std::nullopt},
        PacketRow{"SamePropertyTwice", Packet(kA + kA), std::nullopt},
        PacketRow{"BrokenHalfWay", Packet(kA + "<own:b><rdf:Alt><own:x/></rdf:Alt></own:b>"), std::nullopt},
        PacketRow{"Entities", kLaughs + Packet("<own:a>&b;</own:a>"), std::nullopt},
        PacketRow{"DeepestNesting", Nested(static_cast<int>(kMaxPacketDepth) - 4), "none"},
        PacketRow{"NestedTooDeep", Nested(100000), std::nullopt},
        // Time and memory that a small file may cost.
        PacketRow{"ManyProperties", Packet(Numbered("<own:p", " own:q='x'/>", 5000) + kA), "v"},
        PacketRow{"TooManyProperties", Packet(Numbered("<own:p", "/>", 11000)), std::nullopt},
        PacketRow{"TooManyFields", Packet("<own:s " + Numbered(" own:p", "=''", 11000) + "/>"), std::nullopt},
        PacketRow{"TooManyPropertiesInParts",
                  Packet(Numbered("<own:p", "/></rdf:Description><rdf:Description rdf:about=''>", 11000)),
                  std::nullopt},
        PacketRow{"TooManyNamespaces", Packet(Numbered("<n:p xmlns:n='http://n.test/", "/'/>", 11000)), std::nullopt},
        PacketRow{"OneNamespaceDeclaredOften",
                  Packet("<own:b><rdf:Bag>" + Repeated("<rdf:li xmlns:n='http://n.test/'/>", 20000) +
                         "</rdf:Bag></own:b>" + kA),
                  "v"},
        PacketRow{"ManyItems", ItemsOf("i", 50000), "none"},
        PacketRow{"PathsTooLongForManyItems", ItemsOf(std::string(50000, 'i'), 12000), std::nullopt},
        PacketRow{"TooManyReferences", Packet("<own:a>" + Repeated("&#65;", 3000000) + "</own:a>"), std::nullopt},
        PacketRow{"TooManyLines", Packet("<own:a>" + std::string(3000000, '\n') + "</own:a>"), std::nullopt}),
    LabelOf());

TEST_F(TreeTest, WalksReturnWhatLiesBelowAPath) {
    const XMPMetaPtr tree =
        Parsed(Packet("<own:s rdf:parseType='Resource'><own:f "
                      "xml:lang='de'>1</own:f></own:s><own:s2>x</own:s2><dc:format>y</dc:format>"));
    const auto paths = [&](const std::string& schema, const std::string& path, Walk walk) {
        std::string joined;
        for (const Node& node : Nodes(tree.get(), schema, path, walk)) {
            joined += (node.mPath.empty() ? node.mSchema : node.mPath) + " ";
        }
        return joined;
    };
    EXPECT_EQ(paths({}, {}, Walk::kJustChildren), kOwn + " " + kDC + " ");
    EXPECT_EQ(paths({}, {}, Walk::kSubtree),
              kOwn + " own:s own:s/own:f own:s/own:f/?xml:lang own:s2 " + kDC + " dc:format ");
    EXPECT_EQ(paths(kOwn, {}, Walk::kJustChildren), "own:s own:s2 ");
    EXPECT_EQ(paths(kOwn, {}, Walk::kSubtree), "own:s own:s/own:f own:s/own:f/?xml:lang own:s2 ");
    EXPECT_EQ(paths(kOwn, "s", Walk::kSubtree), "own:s/own:f own:s/own:f/?xml:lang ");
    EXPECT_EQ(paths(kOwn, "own:s/own:f", Walk::kJustChildren), "own:s/own:f/?xml:lang ");
    EXPECT_EQ(paths(kOwn, "s2", Walk::kSubtree) + paths(kOwn, "none", Walk::kSubtree) +
                  paths("http://un.test/", {}, Walk::kSubtree),
              "");
    EXPECT_EQ(ErrorOf([&] { Nodes(tree.get(), kOwn, "a b", Walk::kSubtree); }), -102);
}

TEST_F(TreeTest, TypedReadsConvertTheWholeText) {
    const XMPMetaPtr tree = NewTree();
    const auto read = [&](const std::string& text, auto get) {
        SetProperty(tree.get(), kOwn, "v", text);
        return get(tree.get(), kOwn, "v");
    };
    EXPECT_EQ(read(" -9223372036854775808 ", GetPropertyInt64), INT64_MIN);
    EXPECT_EQ(read("0x1F", GetPropertyInt), 31);
    EXPECT_EQ(read("-2.5e3", GetPropertyFloat), -2500.0);
    EXPECT_EQ(read("TRUE", GetPropertyBool), true);
    EXPECT_EQ(read("f", GetPropertyBool), false);
    EXPECT_EQ(GetPropertyInt(tree.get(), kOwn, "none"), std::nullopt);
    for (const char* const text :
         {"", "9223372036854775808", "-9223372036854775809", "1x", "0x", "--1", "+-1", "1.0"}) {
        EXPECT_EQ(ErrorOf([&] { read(text, GetPropertyInt64); }), -5) << text;
    }
    EXPECT_EQ(ErrorOf([&] { read("2147483648", GetPropertyInt); }), -5);
    for (const char* const text : {"", "nan", "inf", "1e999", "1,5", "1/3"}) {
        EXPECT_EQ(ErrorOf([&] { read(text, GetPropertyFloat); }), -5) << text;
    }
    EXPECT_EQ(ErrorOf([&] { read("yes", GetPropertyBool); }), -5);
    for (const auto& [value, text] :
         std::vector<std::pair<double, std::string>>{{3.141592653589793, "3.141592653589793"},
                                                     {0.1, "0.1"},
                                                     {-0.00001, "-0.00001"},
                                                     {1e14, "100000000000000"},
                                                     {1e15, "1e+15"},
                                                     {1e-6, "1e-06"},
                                                     {0, "0"}}) {
        EXPECT_EQ(ConvertFromFloat(value), text);
        EXPECT_EQ(ConvertToFloat(text), value);
    }
}

TEST_F(TreeTest, SubtreesAreCopiedWholeIntoTheirPlace) {
    const std::string list =
        "<own:b><rdf:Seq><rdf:li rdf:parseType='Resource'><own:f xml:lang='de'>1</own:f></rdf:li>"
        "<rdf:li>2</rdf:li></rdf:Seq></own:b>";
    const XMPMetaPtr source =
        Parsed(Packet(list + "<own:s rdf:parseType='Resource'><own:f>1</own:f><own:g>2</own:g></own:s>"));
    const XMPMetaPtr target = Parsed(Packet("<own:b>other</own:b><own:c>kept</own:c>"));
    EXPECT_FALSE(DuplicateSubtree(source.get(), target.get(), kOwn, "none"));
    EXPECT_TRUE(DuplicateSubtree(source.get(), target.get(), kOwn, "b"));
    EXPECT_TRUE(TreesEqual(target.get(), Parsed(Packet(list + "<own:c>kept</own:c>")).get())) << Listing(target.get());
    EXPECT_TRUE(DuplicateSubtree(source.get(), target.get(), kOwn, "s/own:g"));
    EXPECT_EQ(GetProperty(target.get(), kOwn, "s/own:g")->mValue, "2");
    EXPECT_FALSE(PropertyExists(target.get(), kOwn, "s/own:f"));

    SetArrayItem(target.get(), kOwn, "b", 2, "changed");
    DeleteProperty(target.get(), kOwn, "b[1]/own:f");
    EXPECT_TRUE(DuplicateSubtree(source.get(), target.get(), kOwn, "b[1]"));
    EXPECT_EQ(GetProperty(target.get(), kOwn, "b[1]/own:f/?xml:lang")->mValue, "de");
    EXPECT_EQ(GetProperty(target.get(), kOwn, "b[2]")->mValue, "changed");
    RemoveProperties(target.get(), kOwn, {});
    EXPECT_EQ(Listing(target.get()), "");
    EXPECT_TRUE(DuplicateSubtree(source.get(), target.get(), kOwn, "b[1]"));
    EXPECT_EQ(Listing(target.get()), "own:b=\nown:b[1]=\nown:b[1]/own:f=1\nown:b[1]/own:f/?xml:lang=de\n");
}

TEST_F(TreeTest, AnyChangeOfAPropertyIsNotedAndClearsItsNativeMark) {
    const std::string body =
        "<own:v>a</own:v><own:b><rdf:Bag><rdf:li>1</rdf:li></rdf:Bag></own:b><own:s rdf:parseType='Resource'>"
        "<own:f>f</own:f></own:s><dc:title><rdf:Alt><rdf:li xml:lang='x-default'>T</rdf:li></rdf:Alt></dc:title>";
    const XMPMetaPtr other = Parsed(Packet(body));
    using Change = std::function<void(XMPMetaHandle)>;
    const std::vector<std::pair<std::string, Change>> changes = {
        {"v", [](XMPMetaHandle t) { SetProperty(t, kOwn, "v", "c"); }},
        {"v", [](XMPMetaHandle t) { SetProperty(t, kOwn, "v/?own:q", "c"); }},
        {"v", [](XMPMetaHandle t) { DeleteProperty(t, kOwn, "v"); }},
        {"v", [&](XMPMetaHandle t) { DuplicateSubtree(other.get(), t, kOwn, "own:v"); }},
        {"b", [](XMPMetaHandle t) { AppendArrayItem(t, kOwn, "b", 0, "2"); }},
        {"b", [](XMPMetaHandle t) { SetArrayItem(t, kOwn, "b", 1, "2"); }},
        {"b", [](XMPMetaHandle t) { SetArrayItem(t, kOwn, "b", 1, "2", kInsertBeforeItem); }},
        {"b", [](XMPMetaHandle t) { DeleteArrayItem(t, kOwn, "b", 1); }},
        {"b", [](XMPMetaHandle t) { SeparateArrayItems(t, kOwn, "b", kPropValueIsArray, "1; 2"); }},
        {"s", [](XMPMetaHandle t) { SetProperty(t, kOwn, "s/own:f", "g"); }},
        {"s", [](XMPMetaHandle t) { DeleteProperty(t, kOwn, "s/own:f"); }},
        {"s", [&](XMPMetaHandle t) { DuplicateSubtree(other.get(), t, kOwn, "s/own:f"); }},
        {"dc:title", [](XMPMetaHandle t) { SetLocalizedText(t, kDC, "title", {}, "de", "D"); }},
        {"dc:title", [](XMPMetaHandle t) { DeleteLocalizedText(t, kDC, "title", "x-default"); }},
        {"dc:title", [](XMPMetaHandle t) { SetProperty(t, "http://ns.adobe.com/pdf/1.3/", "Title", "U"); }},
        {"vv", [](XMPMetaHandle t) { SetProperty(t, kOwn, "vv", "new"); }}};
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const XMPMetaPtr marked = Parsed(Packet(body));
        for (const char* const path : {"v", "own:b", "s"}) {
            MarkNative(marked.get(), kOwn, path);
        }
        MarkNative(marked.get(), kDC, "title[1]");
        const XMPMetaPtr tree = CloneTree(marked.get());
        const auto journal = BeginJournal(tree.get());
        changes[i].second(tree.get());
        EXPECT_EQ(journal->mBefore.size(), 1U) << i;
        for (const std::string path : {"v", "b", "s", "dc:title", "vv"}) {
            const Place place = path == "dc:title" ? Place{kDC, path} : Place{kOwn, "own:" + path};
            const bool isChanged = path == changes[i].first;
            EXPECT_EQ(IsNative(tree.get(), place.mSchema, path), path != "vv" && !isChanged) << i << " " << path;
            const auto before = WrittenPropertyAt(marked.get(), place);
            const auto noted = journal->mBefore.find(place);
            ASSERT_EQ(noted != journal->mBefore.end(), isChanged) << i << " " << path;
            EXPECT_TRUE(!isChanged || (before ? *noted->second == *before : !noted->second)) << i << " " << path;
        }
        EXPECT_EQ(JournalOf(CloneTree(tree.get()).get()), nullptr);
        DuplicateSubtree(marked.get(), tree.get(), kOwn, "v");
        EXPECT_TRUE(IsNative(tree.get(), kOwn, "own:v/?own:q") && !IsNative(other.get(), kOwn, "v"));
        EXPECT_FALSE(IsNative(Parsed(SerializePacket(tree.get())).get(), kOwn, "v"));
    }
}

TEST_F(TreeTest, MixedMarksCoverWholeSteps) {
    const XMPMetaPtr tree = NewTree();
    for (const char* const path : {"Box", "Boxes", "s/own:f", "s/own:g"}) {
        MarkMixed(tree.get(), kOwn, path);
    }
    const XMPMetaPtr clone = CloneTree(tree.get());
    const auto mixed = [&](const char* path) { return IsMixed(tree.get(), kOwn, path); };
    EXPECT_TRUE(mixed("own:Box") && mixed("Box[1]/own:x") && mixed("Boxes") && mixed("s/own:f"));
    EXPECT_FALSE(mixed("Bo") || mixed("Boxer") || mixed("s") || mixed("") || IsMixed(tree.get(), kDC, "Box"));
    SetProperty(tree.get(), kOwn, "Box", "v");
    EXPECT_TRUE(!mixed("Box") && mixed("Boxes"));
    SetProperty(tree.get(), kOwn, "s", {}, kPropValueIsStruct);
    EXPECT_FALSE(mixed("s/own:f") || mixed("s/own:g"));
    EXPECT_TRUE(IsMixed(clone.get(), kOwn, "Box")) << "a clone has marks of its own";
    EXPECT_EQ(SerializePacket(clone.get()).find("Box"), std::string::npos);
}

TEST_F(TreeTest, LargeTreesTakeNoLongerThanTheyMust) {
    const auto handle = [this](int items) {
        std::string text;
        for (int i = 0; i < items; ++i) {
            text += "\"a;" + std::to_string(i) + "\"; ";
        }
        const XMPMetaPtr tree = NewTree();
        SeparateArrayItems(tree.get(), kOwn, "b", kBag, text);
        EXPECT_EQ(CountArrayItems(tree.get(), kOwn, "b"), static_cast<std::size_t>(items));
        EXPECT_EQ(*CatenateArrayItems(tree.get(), kOwn, "b") + "; ", text);
        const XMPMetaPtr back = Parsed(SerializePacket(tree.get()));
        EXPECT_TRUE(TreesEqual(back.get(), CloneTree(tree.get()).get()));
    };
    EXPECT_LT(support::GrowthByFour(3000, handle), support::kLinearGrowth);
}

}  // namespace
}  // namespace zephmetadata::toolkit
