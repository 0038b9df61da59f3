#include <vector>

#include "xmp/toolkit_fixture.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

const std::string kMM = "http://ns.adobe.com/xap/1.0/mm/";

/// A packet of these rdf:Description elements; @p attributes of each as written.
std::string About(const std::vector<std::string>& attributes) {
    std::string packet =
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><r:RDF "
        "xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#' xmlns:own='" +
        kOwn + "' xmlns:xmpMM='" + kMM + "'>";
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        const std::string name = "own:p" + std::to_string(i);
        packet += "<r:Description " + attributes[i] + "><" + name + ">v</" + name + "></r:Description>";
    }
    return packet + "</r:RDF></x:xmpmeta>";
}

struct AboutRow {
    const char* mLabel;
    std::vector<std::string> mAttributes;
    std::string mAbout;
    std::string mInstance;
};

class AboutTest : public RunningToolkit<::testing::TestWithParam<AboutRow>> {};

void ExpectAbout(XMPMetaHandle tree, const AboutRow& row, const char* when) {
    EXPECT_EQ(tree->mAbout, row.mAbout) << when;
    EXPECT_EQ(GetProperty(tree, kMM, "InstanceID").value_or(Property()).mValue, row.mInstance) << when;
    EXPECT_TRUE(PropertyExists(tree, kOwn, "p0")) << when;
}

TEST_P(AboutTest, SurvivesReadingCopyingAndWriting) {
    const XMPMetaPtr tree = Parsed(About(GetParam().mAttributes));
    ExpectAbout(tree.get(), GetParam(), "read");
    const XMPMetaPtr clone = CloneTree(tree.get());
    ExpectAbout(clone.get(), GetParam(), "copied");
    for (const PacketForm form : {PacketForm::kFull, PacketForm::kBareRDF}) {
        const XMPMetaPtr again = Parsed(SerializePacket(clone.get(), form));
        ExpectAbout(again.get(), GetParam(), "written");
        EXPECT_TRUE(TreesEqual(tree.get(), again.get()));
    }
    clone->mAbout += "!";
    EXPECT_FALSE(TreesEqual(tree.get(), clone.get()));
    EXPECT_FALSE(ParsePacket(clone.get(), "none"));
    EXPECT_EQ(clone->mAbout, "");
}

constexpr const char* kUUID = "uuid:5A1B2C3D-0000-1111-2222-333344445555";

INSTANTIATE_TEST_SUITE_P(
    Rows, AboutTest,
    ::testing::Values(
        AboutRow{"None", {""}, "", ""}, AboutRow{"Empty", {"r:about=\"\""}, "", ""},
        AboutRow{"Text", {"r:about='Meta Data'"}, "Meta Data", ""},
        AboutRow{"UUID", {"r:about='uuid:5A1B2C3D-0000-1111-2222-333344445555'"}, kUUID, ""},
        AboutRow{"BareUUID", {"r:about = \"5A1B\""}, "5A1B", ""},
        AboutRow{"BesideInstanceID",
                 {"xmpMM:InstanceID='xmp.iid:1' own:about='x' r:about='" + std::string(kUUID) + "'"},
                 kUUID,
                 "xmp.iid:1"},
        AboutRow{"InTheSecond", {"r:about=''", "r:about='b'"}, "b", ""},
        AboutRow{"InBoth", {"r:about='b'", "r:about='b'"}, "b", ""},
        AboutRow{"Escapes", {"r:about='&quot;&lt;a&gt;&amp;&#9;&#xA;\xC3\xBC\"'"}, "\"<a>&\t\n\xC3\xBC\"", ""},
        AboutRow{"WithoutPrefix", {"about='b'"}, "b", ""},
        AboutRow{"OtherPrefix", {"xmlns:o='http://www.w3.org/1999/02/22-rdf-syntax-ns#' o:about='b'"}, "b", ""}),
    LabelOf());

class AroundTest : public RunningToolkit<> {};

TEST_F(AroundTest, PacketsAboutSeveralThingsAreNotMixed) {
    const XMPMetaPtr tree = NewTree();
    EXPECT_FALSE(ParsePacket(tree.get(), About({"r:about='a'", "r:about='b'"})));
}

TEST_F(AroundTest, NothingNeedBeAroundTheRDF) {
    const std::string packet = Packet("<dc:format>v</dc:format>");
    const std::size_t begin = packet.find("<rdf:RDF");
    const std::string bare = packet.substr(begin, packet.find("</x:xmpmeta>") - begin);
    for (const std::string& text : {bare, "<?xpacket begin=''?>\n" + bare + "\n<?xpacket end='w'?>"}) {
        EXPECT_EQ(Listing(Parsed(text).get()), "dc:format=v\n") << text;
    }
}

struct EmptyRow {
    const char* mLabel;
    std::string mBody;
    std::string mListing;
};

class EmptyTest : public RunningToolkit<::testing::TestWithParam<EmptyRow>> {};

TEST_P(EmptyTest, SurvivesReadingAndWriting) {
    XMPMetaPtr tree = Parsed(Packet(GetParam().mBody));
    EXPECT_EQ(Listing(tree.get()), GetParam().mListing);
    EXPECT_EQ(Listing(CloneTree(tree.get()).get()), GetParam().mListing) << "copied";
    for (const PacketForm form : {PacketForm::kFull, PacketForm::kBareRDF}) {
        const XMPMetaPtr again = Parsed(SerializePacket(tree.get(), form));
        EXPECT_EQ(Listing(again.get()), GetParam().mListing) << SerializePacket(tree.get(), form);
        EXPECT_TRUE(TreesEqual(tree.get(), again.get()));
    }
}

std::string TitleOf(const std::string& items) {
    return "<dc:title><rdf:Alt>" + items + "</rdf:Alt></dc:title>";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, EmptyTest,
    ::testing::Values(
        EmptyRow{"Values", "<dc:format/><own:a></own:a><own:b> </own:b>", "dc:format=\nown:a=\nown:b= \n"},
        EmptyRow{"Items",
                 "<dc:subject><rdf:Bag><rdf:li/><rdf:li>b</rdf:li><rdf:li/><rdf:li> </rdf:li></rdf:Bag></dc:subject>",
                 "dc:subject=\ndc:subject[1]=\ndc:subject[2]=b\ndc:subject[3]=\ndc:subject[4]= \n"},
        EmptyRow{"ArraysAndStructures",
                 "<dc:creator><rdf:Seq/></dc:creator><own:s rdf:parseType='Resource'/><dc:rights><rdf:Alt/></dc:rights>"
                 "<own:n><rdf:Bag><rdf:li rdf:parseType='Resource'/><rdf:li><rdf:Bag/></rdf:li></rdf:Bag></own:n>",
                 "dc:creator=\ndc:rights=\nown:s=\nown:n=\nown:n[1]=\nown:n[2]=\n"},
        EmptyRow{"Fields", "<own:s rdf:parseType='Resource'><own:a/><own:b>v</own:b></own:s>",
                 "own:s=\nown:s/own:a=\nown:s/own:b=v\n"},
        EmptyRow{"Qualifiers", "<own:a rdf:parseType='Resource'><rdf:value/><own:q/></own:a>",
                 "own:a=\nown:a/?own:q=\n"},
        EmptyRow{"DefaultText", TitleOf("<rdf:li xml:lang='x-default'/><rdf:li xml:lang='de'>T</rdf:li>"),
                 "dc:title=\ndc:title[1]=\ndc:title[1]/?xml:lang=x-default\ndc:title[2]=T\n"
                 "dc:title[2]/?xml:lang=de\n"},
        EmptyRow{"OtherText", TitleOf("<rdf:li xml:lang='x-default'>T</rdf:li><rdf:li xml:lang='de'/>"),
                 "dc:title=\ndc:title[1]=T\ndc:title[1]/?xml:lang=x-default\ndc:title[2]=\n"
                 "dc:title[2]/?xml:lang=de\n"},
        EmptyRow{"OnlyText", TitleOf("<rdf:li xml:lang='x-default'/>"),
                 "dc:title=\ndc:title[1]=\ndc:title[1]/?xml:lang=x-default\n"},
        EmptyRow{"OneOfThree",
                 TitleOf("<rdf:li xml:lang='x-default'/><rdf:li xml:lang='de'>T</rdf:li><rdf:li xml:lang='fr'/>"),
                 "dc:title=\ndc:title[1]=\ndc:title[1]/?xml:lang=x-default\ndc:title[2]=T\n"
                 "dc:title[2]/?xml:lang=de\ndc:title[3]=\ndc:title[3]/?xml:lang=fr\n"},
        EmptyRow{"DefaultLast", TitleOf("<rdf:li xml:lang='de'>T</rdf:li><rdf:li xml:lang='x-default'></rdf:li>"),
                 "dc:title=\ndc:title[1]=\ndc:title[1]/?xml:lang=x-default\ndc:title[2]=T\n"
                 "dc:title[2]/?xml:lang=de\n"}),
    LabelOf());

}  // namespace
}  // namespace zephmetadata::toolkit
