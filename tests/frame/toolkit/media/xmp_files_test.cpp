#include <sys/stat.h>

#include "frame/toolkit/media/jpeg_segments.h"
#include "frame/toolkit/media/media_formats.h"
#include "media_fixture.h"

namespace zephmetadata::toolkit {
namespace {

class XMPFiles : public MediaTest {};

constexpr const char* kWritable[] = {"harbour.jpg", "packet.jpg", "packet.png",   "packet.tif",
                                     "packet.gif",  "packet.mp3", "packet.mp4",   "packet.wav",
                                     "plain.png",   "plain.jpg",  "exif-only.jpg"};

TEST_F(XMPFiles, TellApartWhatCanBeRead) {
    using enum FileStatus;
    struct Row {
        std::filesystem::path mPath;
        FileStatus mStatus;
        bool mCanWrite;
    };
    ASSERT_EQ(mkfifo((mFolder.Path() / "pipe.jpg").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere.jpg", mFolder.Path() / "dangling.jpg");
    std::filesystem::create_symlink("circle.jpg", mFolder.Path() / "circle.jpg");
    const Row rows[] = {
        {Fixture("harbour.jpg"), kFileStatus_Success, true},
        {Fixture("exif-only.jpg"), kFileStatus_Success, true},
        {Fixture("packet.png"), kFileStatus_Success, true},
        {Fixture("packet.tif"), kFileStatus_Success, true},
        {Fixture("packet.gif"), kFileStatus_Success, true},
        {Fixture("packet.mp3"), kFileStatus_Success, true},
        {Fixture("packet.mp4"), kFileStatus_Success, true},
        {Fixture("packet.wav"), kFileStatus_Success, true},
        {Fixture("drawing.svg"), kFileStatus_Success, false},
        {Fixture("sidecar.xmp"), kFileStatus_Success, false},
        {Fixture("plain.png"), kFileStatus_NoXMP, true},
        {Fixture("plain.jpg"), kFileStatus_NoXMP, true},
        {Fixture("broken-packet.jpg"), kFileStatus_DamagedXMP, false},
        {mFolder.Write("text.jpg", "just text"), kFileStatus_UnknownFormat, false},
        {mFolder.Write("empty.jpg", ""), kFileStatus_UnknownFormat, false},
        {mFolder.Write("photo.heic", std::string("\0\0\0\x18"
                                                 "ftypheic\0\0\0\0mif1heic",
                                                 24)),
         kFileStatus_NoXMP, false},
        {mFolder.Write("clip.avi",
                       "RIFF\xFF\xFF\xFF\x7F"
                       "AVI LIST"),
         kFileStatus_DamagedFile, false},
        {mFolder.Path() / "missing.jpg", kFileStatus_NoFile, false},
        {mFolder.Path() / "text.jpg" / "below.jpg", kFileStatus_NoFile, false},
        {mFolder.Path() / "dangling.jpg", kFileStatus_NoFile, false},
        {mFolder.Path() / "circle.jpg", kFileStatus_Unreadable, false},
        {mFolder.Path(), kFileStatus_NotAFile, false},
        {mFolder.Path() / "pipe.jpg", kFileStatus_NotAFile, false},
        {"/dev/zero", kFileStatus_NotAFile, false},
        {"", kFileStatus_NoFile, false},
    };
    for (const Row& row : rows) {
        const FileXMP file = Read(row.mPath);
        EXPECT_EQ(file.mStatus, row.mStatus) << row.mPath << " " << file.mDetail;
        EXPECT_EQ(file.mCanWrite, row.mCanWrite) << row.mPath;
        EXPECT_EQ(file.mTree != nullptr, row.mStatus == kFileStatus_Success) << row.mPath;
    }
}

TEST_F(XMPFiles, AreWrittenWithPacketsThatGrowAndShrink) {
    for (const char* fixture : kWritable) {
        const auto path = Copy(fixture);
        const FileXMP before = Read(path);
        for (const std::size_t size : {3U, 100U, 6000U, 5U, 20000U, 70000U, 5U}) {
            const WriteOutcome outcome = Edit(path, std::string(size, 'v'));
            ASSERT_EQ(outcome.mStatus, FileStatus::kFileStatus_Success)
                << fixture << " " << size << ": " << outcome.mDetail;
            EXPECT_EQ(Value(Read(path), kXMP, "Label"), std::string(size, 'v')) << fixture;
        }
        const FileXMP after = Read(path);
        for (const Node& node :
             before.mTree ? Nodes(before.mTree.get(), {}, {}, Walk::kSubtree) : std::vector<Node>()) {
            const bool isLeaf = !node.mPath.empty() && (node.mOptions & kPropCompositeMask) == 0;
            const auto now = isLeaf ? GetProperty(after.mTree.get(), node.mSchema, node.mPath) : std::nullopt;
            const bool isSame = !isLeaf || node.mPath == "xmp:Label" || (now && now->mValue == node.mValue);
            EXPECT_TRUE(isSame || node.mPath.starts_with("exif:GPS")) << fixture << " " << node.mPath;
        }
    }
}

TEST_F(XMPFiles, KeepTheImageByteForByte) {
    for (const char* fixture : {"harbour.jpg", "packet.png"}) {
        const auto path = Copy(fixture);
        ASSERT_EQ(Edit(path, "x").mStatus, FileStatus::kFileStatus_Success);
        const std::string before = support::ReadFile(Fixture(fixture));
        const std::string after = support::ReadFile(path);
        const std::string start = path.extension() == ".jpg" ? "\xFF\xDA" : "IDAT";
        EXPECT_EQ(after.substr(after.rfind(start)), before.substr(before.rfind(start))) << fixture;
    }
}

/// A tree with a pair of languages, the form that the toolkit destroys, and a text of the given size beside it.
XMPMetaPtr PairTree(std::size_t size) {
    XMPMetaPtr tree = NewTree();
    SetLocalizedText(tree.get(), kDC, "title", {}, "x-default", "Harbour");
    SetLocalizedText(tree.get(), kDC, "title", {}, "de", "Hafen");
    SetProperty(tree.get(), kDC, "source", std::string(size, 's'));
    return tree;
}

TEST_F(XMPFiles, KeepBothTextsOfAPairOfLanguages) {
    for (const char* fixture : {"plain.jpg", "plain.png", "packet.tif", "packet.mp4", "packet.mp3", "packet.gif"}) {
        for (const std::size_t size : {1U, 90000U}) {  // the larger one splits a JPEG's packet in two
            const auto path = Copy(fixture);
            const XMPMetaPtr tree = PairTree(size);
            ASSERT_EQ(Write(path, Read(path), tree.get()).mStatus, FileStatus::kFileStatus_Success) << fixture << size;
            ASSERT_EQ(Edit(path, "unrelated").mStatus, FileStatus::kFileStatus_Success) << fixture << size;
            const FileXMP file = Read(path);
            EXPECT_EQ(CountArrayItems(file.mTree.get(), kDC, "title"), 2U) << fixture << size;
            EXPECT_EQ(Value(file, kDC, "title[1]"), "Harbour") << fixture << size;
            EXPECT_EQ(Value(file, kDC, "title[2]"), "Hafen") << fixture << size;
        }
    }
}

TEST_F(XMPFiles, KeepAPairOfLanguagesThatAnotherProgramWrote) {
    const auto path = Copy("packet.jpg");
    const FileXMP file = Read(path);
    EXPECT_EQ(Value(file, kDC, "title[1]"), "Low tide");
    EXPECT_EQ(Value(file, kDC, "title[2]"), "Ebbe");
}

TEST_F(XMPFiles, RefuseToWriteWhatIsNotSafeAndLeaveItAlone) {
    using enum FileStatus;
    struct Row {
        const char* mFixture;
        FileStatus mStatus;
    };
    const Row rows[] = {{"drawing.svg", kFileStatus_CannotCarryXMP},
                        {"sidecar.xmp", kFileStatus_CannotCarryXMP},
                        {"broken-packet.jpg", kFileStatus_DamagedXMP}};
    for (const Row& row : rows) {
        const auto path = Copy(row.mFixture);
        EXPECT_EQ(Edit(path, "x").mStatus, row.mStatus) << row.mFixture;
        EXPECT_EQ(support::ReadFile(path), support::ReadFile(Fixture(row.mFixture)));
    }
    const auto path = Copy("harbour.jpg");
    const FileXMP file = Read(path);
    std::filesystem::remove(path);
    EXPECT_EQ(Write(path, file, file.mTree.get()).mStatus, kFileStatus_NoFile);
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("broken-packet.jpg", "drawing.svg", "sidecar.xmp"));
}

TEST_F(XMPFiles, TellABrokenPacketFromNoneInEveryFormat) {
    for (const char* fixture :
         {"packet.jpg", "packet.png", "packet.tif", "packet.gif", "packet.mp3", "packet.mp4", "packet.wav"}) {
        std::string bytes = support::ReadFile(Fixture(fixture));
        const std::size_t close = bytes.find("</rdf:RDF>");
        ASSERT_NE(close, std::string::npos) << fixture;
        bytes.replace(close, 10, "</rdf:rdf>");
        const auto path = mFolder.Write(fixture, bytes);
        EXPECT_EQ(Read(path).mStatus, FileStatus::kFileStatus_DamagedXMP) << fixture;
        EXPECT_EQ(Edit(path, "x").mStatus, FileStatus::kFileStatus_DamagedXMP) << fixture;
        EXPECT_EQ(support::ReadFile(path), bytes) << fixture;
    }
}

TEST_F(XMPFiles, PutExtendedPacketsTogether) {
    const auto path = Copy("plain.jpg");
    const XMPMetaPtr tree = PairTree(200000);
    ASSERT_EQ(Write(path, Read(path), tree.get()).mStatus, FileStatus::kFileStatus_Success);
    const auto packets = ExtendedJpegPackets(path.string()).mTexts;
    ASSERT_EQ(packets.size(), 1U);
    const XMPMetaPtr extended = NewTree();
    EXPECT_TRUE(ParsePacket(extended.get(), packets[0]));
    std::string bytes = support::ReadFile(path);
    const std::size_t part = bytes.rfind("http://ns.adobe.com/xmp/extension/");
    bytes[part] = 'x';
    const std::filesystem::path partial = mFolder.Write("missing-part.jpg", bytes);
    EXPECT_TRUE(ExtendedJpegPackets(partial.string()).mTexts.empty());
    // What is left of the metadata is shown; writing it would drop the rest for good.
    EXPECT_EQ(Read(partial).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_FALSE(Read(partial).mCanWrite);
    EXPECT_EQ(Edit(partial, "new").mStatus, FileStatus::kFileStatus_DamagedXMP);
    EXPECT_EQ(support::ReadFile(partial), bytes);
}

}  // namespace
}  // namespace zephmetadata::toolkit
