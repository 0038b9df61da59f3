#include "media/files/packet_file.h"

#include "media_fixture.h"

namespace zephmetadata::media {
namespace {

class PacketFiles : public MediaTest {
protected:
    static std::string Packet(const std::string& label) {
        const XMPMetaPtr tree = NewTree();
        SetProperty(tree.get(), kXMP, "Label", label);
        return SerializePacket(tree.get());
    }
    PacketFile Open(const std::string& bytes) const {
        return PacketFile(zephcore::PathFromNative(mFolder.Write("sidecar.xmp", bytes).string()));
    }
    std::string Bytes() const { return support::ReadFile(mFolder.Path() / "sidecar.xmp"); }
};

/// A packet as the element alone, or nothing but what is in its x:xmpmeta.
std::string RDF(const std::string& packet) {
    const std::size_t begin = packet.find("<rdf:RDF");
    return packet.substr(begin, packet.find("</rdf:RDF>") + std::string("</rdf:RDF>").size() - begin);
}

std::string Wide(const std::string& ascii, bool bigEndian) {
    std::string wide = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char c : ascii) {
        wide += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return wide;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

TEST_F(PacketFiles, ReplaceTheRDFOfThePacketAndItsCopiesAndNothingElse) {
    const std::string old = Packet("old");
    const std::string element =
        "<x:xmpmeta xmlns:x='adobe:ns:meta/' other='kept'>\n<!-- in -->" + RDF(old) + "</x:xmpmeta>";
    const std::string latin = "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xFC'>" + element + "</r>";
    const std::string mended = Replaced(latin.substr(latin.find("<r")), "\xFC", "\xC3\xBC");
    const struct {
        const char* mCase;
        std::string mBefore;
        std::string mAfter;  ///< but for the RDF
    } rows[] = {{"alone", old, old},
                {"bare", RDF(old), RDF(old)},
                {"text around it", "before" + old + "after", "before" + old + "after"},
                {"twice", old + "between" + old, old + "between" + old},
                {"declaration", "<?xml version='1.0'?>\n<!-- before --><?pi x?>" + element + "<!-- after -->\n",
                 "<?xml version='1.0'?>\n<!-- before --><?pi x?>" + element + "<!-- after -->\n"},
                {"byte order mark", "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>" + element,
                 "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?>" + element},
                {"elements around", "<svg><a>&#x27;</a>" + element + "<rdf:RDF xmlns:rdf='http://other/'/></svg>",
                 "<svg><a>&#x27;</a>" + element + "<rdf:RDF xmlns:rdf='http://other/'/></svg>"},
                {"other encoding", latin, mended}};
    for (const auto& row : rows) {
        PacketFile file = Open(row.mBefore);
        ASSERT_EQ(file.Status(), FileStatus::kFileStatus_Success) << row.mCase;
        for (const std::string& packet : {Packet("new"), Packet("n\xC3\xBC")}) {
            const WriteOutcome outcome = file.Write(packet);
            EXPECT_EQ(outcome.mStatus, FileStatus::kFileStatus_Success) << row.mCase << outcome.mDetail;
            EXPECT_EQ(Bytes(), Replaced(row.mAfter, RDF(old), RDF(packet))) << row.mCase;
            EXPECT_EQ(RDF(std::string(file.Packet())), RDF(packet)) << row.mCase;
        }
    }
}

TEST_F(PacketFiles, KeepCommentsOfTheRDFBeforeIt) {
    const std::string old = Packet("old");
    const std::size_t inside = old.find("<rdf:Description");
    PacketFile file = Open(old.substr(0, inside) + "<!-- a\n -->\n<?b c?>" + old.substr(inside));
    EXPECT_EQ(file.Write(Packet("new")).mStatus, FileStatus::kFileStatus_Success);
    const std::string expected = Replaced(old, RDF(old), "<!-- a\n -->\n<?b c?>\n" + RDF(Packet("new")));
    EXPECT_EQ(Bytes(), expected);
    EXPECT_EQ(file.Write(Packet("old")).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Bytes(), Replaced(expected, RDF(Packet("new")), RDF(old))) << "and not again";
}

TEST_F(PacketFiles, StayUTF16) {
    const std::string document = "<?xml version='1.0' encoding='UTF-16'?><!-- c -->" + RDF(Packet("old"));
    for (const bool bigEndian : {false, true}) {
        PacketFile file = Open(Wide(document, bigEndian));
        ASSERT_EQ(file.Status(), FileStatus::kFileStatus_Success);
        EXPECT_EQ(file.Write(Packet("new")).mStatus, FileStatus::kFileStatus_Success);
        EXPECT_EQ(Bytes(), Wide(Replaced(document, ">old<", ">new<"), bigEndian));
    }
    const std::string odd = Wide(document, false) + "x";
    PacketFile file = Open(odd);
    EXPECT_EQ(file.Write(Packet("new")).mDetail, "it holds what is no UTF-16");
    EXPECT_EQ(Bytes(), odd);
}

TEST_F(PacketFiles, AreLeftAloneWhenNothingCanBePutIntoThem) {
    for (const std::string& packet : {std::string("none"), std::string("<html/>")}) {
        PacketFile file = Open(Packet("old"));
        EXPECT_EQ(file.Write(packet).mStatus, FileStatus::kFileStatus_NotWritten);
        EXPECT_EQ(Bytes(), Packet("old"));
    }
}

TEST_F(PacketFiles, AreReadOnlyWhenTheirPacketsDiffer) {
    const std::string bytes = Packet("one") + Packet("two");
    PacketFile file = Open(bytes);
    EXPECT_EQ(file.Packet(), Packet("one"));
    const WriteOutcome outcome = file.Write(Packet("new"));
    EXPECT_EQ(outcome.mStatus, FileStatus::kFileStatus_DamagedXMP);
    EXPECT_EQ(outcome.mDetail, "it holds several packets that differ");
    EXPECT_EQ(Bytes(), bytes);
}

TEST_F(PacketFiles, AreDamagedWithoutAReadablePacket) {
    for (const std::string& bytes : {std::string(), std::string("<html/>"), Packet("x").substr(0, 200),
                                     "<?xpacket begin?><rdf:RDF>" + Packet("x")}) {
        EXPECT_EQ(Open(bytes).Status(), FileStatus::kFileStatus_DamagedXMP) << bytes.substr(0, 30);
        EXPECT_EQ(Open(bytes).Packet(), "");
    }
}

TEST_F(PacketFiles, AreLeftAloneWhenTheyChangedMeanwhile) {
    PacketFile file = Open(Packet("old"));
    mFolder.Write("sidecar.xmp", Packet("somebody else's"));
    EXPECT_EQ(file.Write(Packet("new")).mStatus, FileStatus::kFileStatus_Changed);
    EXPECT_EQ(Bytes(), Packet("somebody else's"));
}

}  // namespace
}  // namespace zephmetadata::media
