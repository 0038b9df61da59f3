#include "xmp/packet/packet_scan.h"

#include <string>

#include "xmp/packet/packet_text.h"
#include "xmp/toolkit_fixture.h"

namespace zephmetadata::toolkit {
namespace {

std::string Alternative(int items, const std::string& item = "<rdf:li xml:lang='x-default'>A</rdf:li>") {
    std::string text = "<own:t><rdf:Alt>";
    for (int i = 0; i < items; ++i) {
        text += item;
    }
    return text + "</rdf:Alt></own:t>";
}

std::string Deep(std::size_t depth, const std::string& innermost) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += "<own:s rdf:parseType='Resource'>";
    }
    text += innermost;
    for (std::size_t i = 0; i < depth; ++i) {
        text += "</own:s>";
    }
    return text;
}

struct ScanRow {
    const char* mLabel;
    std::string mPacket;
    bool mMayNeed;
};

class PacketScanTest : public RunningToolkit<::testing::TestWithParam<ScanRow>> {};

/// What WidenPacket does to @p packet, by what comes out: nothing at all, another text, or an error.
bool IsLeftAlone(const std::string& packet) {
    std::string wide;
    return ErrorOf([&] { wide = WidenPacket(packet); }) == 0 && wide == packet;
}

TEST_P(PacketScanTest, SparesOnlyPacketsThatAreLeftAlone) {
    EXPECT_EQ(MayNeedWidening(GetParam().mPacket), GetParam().mMayNeed);
    EXPECT_TRUE(MayNeedWidening(GetParam().mPacket) || IsLeftAlone(GetParam().mPacket));
}

constexpr std::size_t kLevelsAround = 3;  // x:xmpmeta, rdf:RDF and rdf:Description

INSTANTIATE_TEST_SUITE_P(
    Rows, PacketScanTest,
    ::testing::Values(
        // The greater part of what is read: worth sparing.
        ScanRow{"Plain", Packet("<dc:format>image/png</dc:format><own:e/>"), false},
        ScanRow{"OneItem", Packet(Alternative(1)), false}, ScanRow{"ThreeItems", Packet(Alternative(3)), false},
        ScanRow{"OwnAbout", Packet("<own:about>a</own:about>"), false},
        ScanRow{"About", Packet("<own:s own:about = 'a'/>"), true},
        ScanRow{"BareRDF", "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'/>", true},
        ScanRow{"NoItem", Packet(Alternative(0) + "<own:t><rdf:Alt/></own:t>"), false},
        ScanRow{"TwoAlternatives", Packet(Alternative(1) + Alternative(1)), false},
        ScanRow{"ItemsWithParts", Packet(Alternative(1, "<rdf:li rdf:parseType='Resource'><own:a/><own:b/></rdf:li>")),
                false},
        ScanRow{"TwoInBag", Packet("<own:t><rdf:Bag><rdf:li/><rdf:li/></rdf:Bag></own:t>"), false},
        ScanRow{"GreaterThanInValue", Packet("<dc:format own:q='a /> \"b\"'>x > y</dc:format>" + Alternative(3)),
                false},
        ScanRow{"TagsInText", Packet("<dc:format>&lt;rdf:Alt>&lt;a/>&lt;/rdf:Alt></dc:format>" + Alternative(1)),
                false},
        ScanRow{"Instructions", "<?xpacket begin='' id='<rdf:Alt>'?>" + Packet(Alternative(1)) + "<?xpacket end='w'?>",
                false},
        ScanRow{"AllOfUTF8", Packet("<dc:format>\u00E9\u20AC\U0001F600\x7F</dc:format>"), false},
        ScanRow{"LongText", Packet("<dc:format>" + std::string(100000, 'x') + "</dc:format>"), false},
        ScanRow{"DeepEnough", Packet(Deep(kMaxPacketDepth - kLevelsAround - 2, "<own:a/>")), false},
        // What is changed.
        ScanRow{"Pair", Packet(Alternative(2)), true},
        ScanRow{"PairOfEmptyElements", Packet(Alternative(2, "<rdf:li xml:lang='x-default'/>")), true},
        ScanRow{"PairAfterSlashInValue",
                Packet("<dc:format own:q='/'>x</dc:format><own:e own:q='/>'></own:e>" + Alternative(2)), true},
        ScanRow{"PairAfterEmptyElement", Packet("<own:e own:q='>'/><own:e />" + Alternative(2)), true},
        ScanRow{"PairWithBlanksInTags",
                Packet("<own:t><rdf:Alt\n><rdf:li\txml:lang='x-default' >A</rdf:li ><rdf:li/></rdf:Alt\t></own:t>"),
                true},
        ScanRow{"PairBesideThree", Packet(Alternative(3) + Alternative(2) + Alternative(1)), true},
        ScanRow{"PairInAlternative",
                Packet(Alternative(3, "<rdf:li><rdf:Alt>" + Alternative(2) + "</rdf:Alt></rdf:li>")), true},
        ScanRow{"PairAroundAlternative",
                Packet("<own:t><rdf:Alt><rdf:li xml:lang='x-default'>A</rdf:li><rdf:li><rdf:Alt><rdf:li/></rdf:Alt>"
                       "</rdf:li></rdf:Alt></own:t>"),
                true},
        ScanRow{"PairWithoutPrefix",
                Packet("<own:t><Alt xmlns='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><li xml:lang='x-default'/>"
                       "<li/></Alt></own:t>"),
                true},
        ScanRow{"HexReference", Packet("<dc:format>it&#x27;s</dc:format>"), true},
        ScanRow{"Control", Packet("<dc:format>a\x01</dc:format>"), true},
        ScanRow{"Latin1", Packet("<dc:format>\xE9</dc:format>"), true},
        ScanRow{"Padding", Packet("") + std::string(3, '\0'), true},
        ScanRow{"ByteOrderMark", "\xEF\xBB\xBF" + Packet(""), true},
        ScanRow{"Declaration", "<?xml version='1.0' encoding='ISO-8859-1'?>" + Packet(""), true},
        ScanRow{"DeclarationWithTab", "<?xml\tversion='1.0'?>" + Packet(""), true},
        ScanRow{"DeclarationWithNewline", "<?xml\nversion='1.0'?>" + Packet(""), true},
        // What is refused.
        ScanRow{"Empty", "", true}, ScanRow{"Doctype", "<!DOCTYPE a>" + Packet(""), true},
        ScanRow{"CutOff", Packet("").substr(0, 100), true},
        ScanRow{"TooDeep", Packet(Deep(kMaxPacketDepth - kLevelsAround, "<own:a/>")), true},
        // What takes a parser to count.
        ScanRow{"ManyLines", Packet("<dc:format>" + std::string(20000, '\n') + "</dc:format>"), true},
        ScanRow{"LongPaths",
                Packet("<own:" + std::string(200000, 'n') + "/>" + Alternative(3) + Alternative(3) + Alternative(3) +
                       std::string(1500, '\n')),
                true},
        // What is changed by no one, but would take a parser to tell.
        ScanRow{"Comment", Packet("<!-- <rdf:Alt> -->"), true}, ScanRow{"CData", Packet("<![CDATA[ ]]>"), true}),
    LabelOf());

}  // namespace
}  // namespace zephmetadata::toolkit
