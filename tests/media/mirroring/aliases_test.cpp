#include "mirroring_fixture.h"

namespace zephmetadata::media {
namespace {

using testing::HasSubstr;
using testing::Not;

/// What a packet says under names that the toolkit takes for others, after an edit and a way through the toolkit.
template <typename Edit>
std::string Rewritten(const std::string& body, const Edit& edit) {
    const XMPMetaPtr tree = toolkit::NewTree();
    EXPECT_TRUE(toolkit::ParsePacket(tree.get(), Packet(body))) << body;
    edit(tree.get());
    return toolkit::SerializePacket(toolkit::CloneTree(tree.get()).get(), toolkit::PacketForm::kBareRDF);
}

/// The text of the property in the packet, as an attribute or an element; of several items all of them with commas,
/// the third one included with which pairs of languages are written.
std::string Named(const std::string& packet, const std::string& name) {
    if (const std::size_t at = packet.find(" " + name + "=\""); at != std::string::npos) {
        const std::size_t from = at + name.size() + 3;
        return packet.substr(from, packet.find('"', from) - from);
    }
    const std::size_t open = packet.find("<" + name + ">");
    if (open == std::string::npos) {
        return "<none>";
    }
    const std::size_t end = packet.find("</" + name + ">", open);
    std::string texts;
    for (std::size_t at = packet.find("<rdf:li", open); at < end; at = packet.find("<rdf:li", at + 1)) {
        const std::size_t from = packet.find('>', at) + 1;
        texts += packet.substr(from, packet.find('<', from) - from) + ",";
    }
    return texts.empty() ? packet.substr(open + name.size() + 2, end - open - name.size() - 2) : texts;
}

struct AliasRow {
    std::string mName;
    std::string mBody;  ///< says the name alone
    std::string mText;
    std::string mBase;     ///< what the toolkit takes it for
    std::string mChanged;  ///< the part of it that the edit sets
    std::string mEdited;   ///< what the name says after an edit
};

const std::vector<AliasRow>& Rows() {
    static const std::vector<AliasRow> rows = {
        {"tiff:Software", Simple("tiff:Software", "Tool"), "Tool", "xmp:CreatorTool", "xmp:CreatorTool", "new"},
        {"exif:DateTimeDigitized", Simple("exif:DateTimeDigitized", "2020-01-02"), "2020-01-02", "xmp:CreateDate",
         "xmp:CreateDate", "new"},
        {"tiff:Artist", Simple("tiff:Artist", "Me"), "Me", "dc:creator", "dc:creator[1]", "new"},
        {"pdf:Title", Simple("pdf:Title", "Book"), "Book", "dc:title", "dc:title[1]", "new"},
        {"tiff:ImageDescription", Languages("tiff:ImageDescription", {{"x-default", "Quay"}, {"de", "Kai"}}),
         "Quay,Kai,Quay,", "dc:description", "dc:description[2]", "Quay,new,Quay,"},
        // Texts where Dublin Core has arrays.
        {"xmp:Title", Simple("xmp:Title", "Pier"), "Pier", "dc:title", "dc:title[1]", "new"},
        {"xmp:Keywords", Simple("xmp:Keywords", "sea"), "sea", "dc:subject", "dc:subject[1]", "new"},
        {"xmp:Locale", Simple("xmp:Locale", "de"), "de", "dc:language", "dc:language[1]", "new"},
    };
    return rows;
}

TEST_F(MirroringTest, NamesThatTheToolkitTakesForOthersStay) {
    std::string all;
    for (const AliasRow& row : Rows()) {
        all += row.mBody;
        const std::string packet = Rewritten(row.mBody, [](auto) {});
        EXPECT_EQ(Named(packet, row.mName), row.mText) << row.mName;
        EXPECT_EQ(Named(packet, row.mBase), "<none>") << packet;
        EXPECT_EQ(EditBlocks(Blocks(row.mBody), &EditLabel).mWhyNot, "") << row.mName;
    }
    const std::string packet = Rewritten(all, &EditLabel);
    const std::string twice = EditBlocks(Blocks(all), &EditLabel).mAfter.mPacket
                                  ? toolkit::SerializePacket(EditBlocks(Blocks(all), &EditLabel).mAfter.mPacket.get())
                                  : "";
    for (const AliasRow& row : Rows()) {
        EXPECT_EQ(Named(packet, row.mName), row.mText) << packet;
        EXPECT_EQ(Named(twice, row.mName), row.mText) << twice;
    }
    EXPECT_THAT(packet + twice, Not(HasSubstr("zephmetadata-alias")));
}

TEST_F(MirroringTest, NamesThatTheToolkitTakesForOthersFollowThem) {
    for (const AliasRow& row : Rows()) {
        const std::string edited = Rewritten(row.mBody, [&](auto tree) { Set(tree, row.mChanged, "new"); });
        EXPECT_THAT(Named(edited, row.mName), testing::AnyOf(row.mEdited, row.mEdited + ",")) << edited;
        EXPECT_THAT(edited, Not(HasSubstr("<rdf:li/>")));
        const std::string removed = Rewritten(row.mBody, [&](auto tree) { Delete(tree, row.mBase); });
        EXPECT_EQ(Named(removed, row.mName), "<none>") << removed;
        EXPECT_EQ(Named(removed, row.mBase), "<none>") << removed;
    }
}

TEST_F(MirroringTest, ArraysStandForArrays) {
    const std::string description = Languages("tiff:ImageDescription", {{"x-default", "Quay"}, {"de", "Kai"}});
    const std::vector<std::tuple<std::string, std::string, std::string>> rows = {
        {description, "dc:description", "Quay,Kai,"},
        {Languages("tiff:ImageDescription", {{"x-default", "Quay"}}), "dc:description", "Quay,"},
        {description + Languages("dc:description", {{"de", "Mole"}}), "dc:description", "Mole,"},
        {description + Languages("dc:description", {{"x-default", "Pier"}, {"fr", "Jetée"}}), "dc:description",
         "Pier,Jetée,"},
        {Array("tiff:Artist", "Seq", {"Me", "You"}), "dc:creator", "Me,You,"},
        {Array("photoshop:Keywords", "Bag", {"a", "b"}), "dc:subject", "a,b,"},
        {Languages("tiff:Copyright", {{"x-default", "Mine"}, {"de", "Meins"}, {"fr", "À moi"}}), "dc:rights",
         "Mine,Meins,À moi,"},
    };
    for (const auto& [body, base, text] : rows) {
        const std::string name = body.substr(1, body.find('>') - 1);
        const std::string packet = Rewritten(body, &EditLabel);
        EXPECT_NE(Named(packet, name), "<none>") << packet;
        // What was written says the same when it is read and written again.
        const XMPMetaPtr again = toolkit::NewTree();
        ASSERT_TRUE(toolkit::ParsePacket(again.get(), packet));
        const std::string second = toolkit::SerializePacket(again.get(), toolkit::PacketForm::kBareRDF);
        std::string items;
        for (const toolkit::Node& item :
             toolkit::Nodes(again.get(), SchemaOf(base), base, toolkit::Walk::kJustChildren)) {
            items += item.mValue + ",";
        }
        EXPECT_EQ(items, text) << packet;
        EXPECT_EQ(Named(second, name), Named(packet, name)) << second;
    }
}

TEST_F(MirroringTest, SeveralOldNamesOfOnePropertyAreReadInAnyOrder) {
    const std::string title = Simple("xmp:Title", "Pier");
    for (const auto& [body, path, text] : std::vector<std::tuple<std::string, std::string, std::string>>{
             {title + Simple("pdf:Title", "Quay"), "dc:title[1]", "Pier"},
             {Simple("pdf:Title", "Quay") + title, "dc:title[1]", "Quay"},
             {Simple("xmp:Authors", "Me") + Simple("tiff:Artist", "You"), "dc:creator[1]", "Me"},
             {title + Simple("pdf:Title", "Quay") + Languages("dc:title", {{"x-default", "Mole"}, {"de", "Kai"}}) +
                  "<exif:Flash rdf:parseType='Resource'><exif:Mode>1</exif:Mode></exif:Flash>",
              "dc:title[2]", "Kai"}}) {
        const EditedFile file = EditBlocks(Blocks(body), &EditLabel);
        EXPECT_EQ(file.mWhyNot, "") << body;
        EXPECT_EQ(ValueOf(file.mAfter.mJoined.get(), path), text) << body;
        const std::string packet = Rewritten(body, &EditLabel);
        for (const std::string name : {"xmp:Title", "pdf:Title", "xmp:Authors", "tiff:Artist", "exif:Mode"}) {
            EXPECT_EQ(Named(packet, name) == "<none>", body.find("<" + name) == std::string::npos) << name << packet;
        }
    }
}

TEST_F(MirroringTest, BothNamesKeepWhatEachSays) {
    const std::string body = Simple("tiff:Software", "Camera 1.0") + Simple("xmp:CreatorTool", "Editor 2.0");
    const std::string packet = Rewritten(body, &EditLabel);
    EXPECT_EQ(Named(packet, "tiff:Software"), "Camera 1.0");
    EXPECT_EQ(Named(packet, "xmp:CreatorTool"), "Editor 2.0");
    // Text that only looks like such a name is none.
    EXPECT_THAT(Rewritten(Simple("xmp:Label", "tiff:Software zephmetadata-alias-tiff"), [](auto) {}),
                Not(HasSubstr("<tiff:Software")));
    // An attribute of the packet is one as well.
    const std::string attributes =
        "</rdf:Description><rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
        "tiff:Software='Tool'>";
    EXPECT_EQ(Named(Rewritten(attributes, &EditLabel), "tiff:Software"), "Tool");
}

}  // namespace
}  // namespace zephmetadata::media
