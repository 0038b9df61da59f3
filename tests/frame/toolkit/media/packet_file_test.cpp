#include "frame/toolkit/media/packet_file.h"

#include "media_fixture.h"

namespace zephmetadata::toolkit {
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

TEST_F(PacketFiles, ReplaceThePacketAndItsCopiesAndNothingElse) {
    struct Row {
        const char* mCase;
        std::string mBefore;
        std::string mAfter;
    };
    const std::string old = Packet("old");
    const Row rows[] = {{"alone", old, "NEW"},
                        {"text around it", "before" + old + "after", "beforeNEWafter"},
                        {"twice", old + "between" + old, "NEWbetweenNEW"}};
    for (const Row& row : rows) {
        PacketFile file = Open(row.mBefore);
        EXPECT_EQ(file.Status(), FileStatus::kFileStatus_Success) << row.mCase;
        EXPECT_EQ(file.Packet(), old) << row.mCase;
        EXPECT_EQ(file.Write("NEW").mStatus, FileStatus::kFileStatus_Success) << row.mCase;
        EXPECT_EQ(Bytes(), row.mAfter) << row.mCase;
        EXPECT_EQ(file.Write("N").mStatus, FileStatus::kFileStatus_Success) << row.mCase;
        EXPECT_EQ(file.Packet(), "N") << row.mCase;
    }
}

TEST_F(PacketFiles, AreReadOnlyWhenTheirPacketsDiffer) {
    const std::string bytes = Packet("one") + Packet("two");
    PacketFile file = Open(bytes);
    EXPECT_EQ(file.Packet(), Packet("one"));
    const WriteOutcome outcome = file.Write("NEW");
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
    EXPECT_EQ(file.Write("NEW").mStatus, FileStatus::kFileStatus_Changed);
    EXPECT_EQ(Bytes(), Packet("somebody else's"));
}

}  // namespace
}  // namespace zephmetadata::toolkit
