#include "xmp/toolkit_fixture.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

const std::string kNote = "http://ns.adobe.com/xmp/note/";
constexpr std::size_t kLarge = 5000;

UTF8String Identifier(std::string_view extended) {
    return "ID" + std::to_string(extended.size());
}

class SplitTest : public RunningToolkit<> {
protected:
    SplitTest() {
        mTree->mAbout = "uuid:1";
        SetProperty(mTree.get(), kOwn, "small", "v");
        SetProperty(mTree.get(), kOwn, "s/own:large", std::string(kLarge, 's'));
        SetProperty(mTree.get(), kOwn, "larger", std::string(kLarge + 100, 'l'));
        SetProperty(mTree.get(), kDC, "source", std::string(kLarge + 200, 'd'));
        SetLocalizedText(mTree.get(), kDC, "title", {}, "x-default", "");
        SetLocalizedText(mTree.get(), kDC, "title", {}, "de", "T");
    }

    std::string Main(const SplitPacket& packet) const {
        const XMPMetaPtr main = Parsed(packet.mMain);
        std::string names;
        for (const auto& [schema, name] : {std::pair(kOwn, "small"), {kOwn, "s"}, {kOwn, "larger"}, {kDC, "source"}}) {
            names += PropertyExists(main.get(), schema, name) ? std::string(name) + " " : "";
        }
        return names;
    }

    XMPMetaPtr mTree = NewTree();
};

TEST_F(SplitTest, LeavesWhatFitsAndComesTogetherAgain) {
    const struct {
        std::size_t mMost;
        const char* mMain;
    } rows[] = {{100000, "small s larger source "}, {12000, "small s source "}, {7000, "small source "}, {1200, ""}};
    const std::string before = SerializePacket(mTree.get());
    for (const auto& row : rows) {
        const SplitPacket packet = SerializeSplit(mTree.get(), row.mMost, Identifier);
        EXPECT_LE(packet.mMain.size(), row.mMost);
        EXPECT_EQ(Main(packet), row.mMain) << row.mMost;
        XMPMetaPtr again = Parsed(packet.mMain);
        const bool isSplit = !packet.mExtended.empty();
        EXPECT_EQ(isSplit, row.mMost < kLarge * 3) << row.mMost;
        EXPECT_EQ(GetProperty(again.get(), kNote, "HasExtendedXMP").value_or(Property()).mValue,
                  isSplit ? Identifier(packet.mExtended) : "");
        EXPECT_EQ(packet.mExtended.find("<?xpacket"), std::string::npos);
        const std::vector<std::string> parts(isSplit ? 1 : 0, packet.mExtended);
        EXPECT_TRUE(MergeExtended(again.get(), parts));
        EXPECT_TRUE(TreesEqual(mTree.get(), again.get())) << row.mMost << Listing(again.get());
    }
    EXPECT_EQ(SerializePacket(mTree.get()), before);
    EXPECT_EQ(ErrorOf([&] { SerializeSplit(mTree.get(), 100, Identifier); }), -107);
}

TEST_F(SplitTest, MergesWholePropertiesThatTheTreeLacks) {
    const XMPMetaPtr tree = Parsed(Packet("<own:b><rdf:Bag><rdf:li>1</rdf:li></rdf:Bag></own:b>"));
    SetProperty(tree.get(), kNote, "HasExtendedXMP", "ID");
    const std::string part = Packet(
        "<own:b><rdf:Bag><rdf:li>2</rdf:li><rdf:li>3</rdf:li></rdf:Bag></own:b><own:c rdf:parseType='Resource'>"
        "<own:d>v</own:d></own:c>");
    EXPECT_FALSE(MergeExtended(tree.get(), {part, "<broken"}));
    EXPECT_TRUE(PropertyExists(tree.get(), kNote, "HasExtendedXMP") && !PropertyExists(tree.get(), kOwn, "c"));
    EXPECT_TRUE(MergeExtended(tree.get(), {part, Packet("<own:e>w</own:e>")}));
    EXPECT_EQ(Listing(tree.get()), "own:b=\nown:b[1]=1\nown:c=\nown:c/own:d=v\nown:e=w\n");
    EXPECT_EQ(SerializeSplit(tree.get(), 10000, Identifier).mExtended, "");
}

/// What the toolkit takes for xmp:CreateDate and dc:title goes where these go, and is there again under its own name.
TEST_F(SplitTest, KeepsOldNamesInBothPackets) {
    const auto large = [](const std::string& name) {
        return "<own:" + name + ">" + std::string(kLarge, 'x') + "</own:" + name + ">";
    };
    const XMPMetaPtr tree =
        Parsed(Packet(large("a") + "<pdf:Title xmlns:pdf='http://ns.adobe.com/pdf/1.3/'>P</pdf:Title>"));
    const std::string digitized = "<exif:DateTimeDigitized xmlns:exif='http://ns.adobe.com/exif/1.0/'>" +
                                  std::string("2001-02-03") + "</exif:DateTimeDigitized>";
    ASSERT_TRUE(MergeExtended(tree.get(), {Packet(large("b") + digitized)}));
    const struct {
        std::size_t mMost;
        bool mIsDateInMain;
    } rows[] = {{100000, true}, {7000, true}, {450, true}, {400, false}};
    for (const auto& row : rows) {
        const SplitPacket packet = SerializeSplit(tree.get(), row.mMost, Identifier);
        const auto has = [](const std::string& part, std::string_view text) {
            return part.find(text) != std::string::npos;
        };
        constexpr std::string_view kDate = "exif:DateTimeDigitized=\"2001-02-03\"";
        EXPECT_EQ(has(packet.mMain, kDate), row.mIsDateInMain) << row.mMost;
        EXPECT_EQ(has(packet.mExtended, kDate), !row.mIsDateInMain) << row.mMost;
        EXPECT_TRUE(has(packet.mMain, "pdf:Title=\"P\"")) << row.mMost;
        EXPECT_FALSE(has(packet.mMain + packet.mExtended, "zephmetadata-alias")) << row.mMost;
    }
}

}  // namespace
}  // namespace zephmetadata::toolkit
