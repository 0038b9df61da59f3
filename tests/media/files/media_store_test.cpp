#include <sys/stat.h>

#include "media_fixture.h"
#include "small_disk.h"

namespace zephmetadata::media {
namespace {

class MediaStore : public MediaTest {};

constexpr const char* kWritable[] = {"harbour.jpg", "packet.jpg", "packet.png", "packet.tif",
                                     "packet.gif",  "packet.mp3", "packet.mp4", "packet.wav",
                                     "drawing.svg", "plain.png",  "plain.jpg",  "exif-only.jpg"};

TEST_F(MediaStore, TellApartWhatCanBeRead) {
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
        {Fixture("drawing.svg"), kFileStatus_Success, true},
        {Fixture("sidecar.xmp"), kFileStatus_Success, false},
        {Fixture("plain.png"), kFileStatus_NoXMP, true},
        {Fixture("plain.jpg"), kFileStatus_NoXMP, true},
        {Fixture("broken-packet.jpg"), kFileStatus_DamagedXMP, false},
        {mFolder.Write("text.jpg", "just text"), kFileStatus_UnknownFormat, false},
        {mFolder.Write("empty.jpg", ""), kFileStatus_UnknownFormat, false},
        {mFolder.Write("photo.heic", std::string("\0\0\0\x18"
                                                 "ftypheic\0\0\0\0mif1heic",
                                                 24)),
         kFileStatus_DamagedFile, false},
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
        const MediaReading file = Read(row.mPath);
        EXPECT_EQ(file.mStatus, row.mStatus) << row.mPath << " " << file.mDetail;
        EXPECT_EQ(file.mWriteStatus == kFileStatus_Success, row.mCanWrite) << row.mPath << " " << file.mWriteDetail;
        EXPECT_EQ(file.mTree != nullptr, row.mStatus == kFileStatus_Success) << row.mPath;
    }
}

TEST_F(MediaStore, AreWrittenWithPacketsThatGrowAndShrink) {
    for (const char* fixture : kWritable) {
        const auto path = Copy(fixture);
        const MediaReading before = Read(path);
        for (const std::size_t size : {3U, 100U, 6000U, 5U, 20000U, 70000U, 5U}) {
            const WriteOutcome outcome = Edit(path, std::string(size, 'v'));
            ASSERT_EQ(outcome.mStatus, FileStatus::kFileStatus_Success)
                << fixture << " " << size << ": " << outcome.mDetail;
            EXPECT_EQ(Value(Read(path), kXMP, "Label"), std::string(size, 'v')) << fixture;
        }
        const MediaReading after = Read(path);
        for (const Node& node :
             before.mTree ? Nodes(before.mTree.get(), {}, {}, Walk::kSubtree) : std::vector<Node>()) {
            const bool isLeaf = !node.mPath.empty() && (node.mOptions & kPropCompositeMask) == 0;
            const auto now = isLeaf ? GetProperty(after.mTree.get(), node.mSchema, node.mPath) : std::nullopt;
            const bool isSame = !isLeaf || node.mPath == "xmp:Label" || (now && now->mValue == node.mValue);
            EXPECT_TRUE(isSame) << fixture << " " << node.mPath;
        }
    }
}

TEST_F(MediaStore, KeepTheImageByteForByte) {
    for (const char* fixture : {"harbour.jpg", "packet.png"}) {
        const auto path = Copy(fixture);
        ASSERT_EQ(Edit(path, "x").mStatus, FileStatus::kFileStatus_Success);
        const std::string before = support::ReadFile(Fixture(fixture));
        const std::string after = support::ReadFile(path);
        const std::string start = path.extension() == ".jpg" ? "\xFF\xDA" : "IDAT";
        EXPECT_EQ(after.substr(after.rfind(start)), before.substr(before.rfind(start))) << fixture;
    }
}

/// The tree of a file with a pair of languages, the form that the toolkit destroys, and a text of the given size.
XMPMetaPtr PairTree(const MediaReading& file, std::size_t size) {
    XMPMetaPtr tree = file.mTree ? file.mTree : NewTree();
    DeleteProperty(tree.get(), kDC, "title");
    SetLocalizedText(tree.get(), kDC, "title", {}, "x-default", "Harbour");
    SetLocalizedText(tree.get(), kDC, "title", {}, "de", "Hafen");
    SetProperty(tree.get(), kDC, "source", std::string(size, 's'));
    return tree;
}

TEST_F(MediaStore, KeepBothTextsOfAPairOfLanguages) {
    for (const char* fixture : {"plain.jpg", "plain.png", "packet.tif", "packet.mp4", "packet.mp3", "packet.gif"}) {
        for (const std::size_t size : {1U, 90000U}) {  // the larger one splits a JPEG's packet in two
            const auto path = Copy(fixture);
            const MediaReading before = Read(path);
            const XMPMetaPtr tree = PairTree(before, size);
            ASSERT_EQ(Write(path, before, tree.get()).mStatus, FileStatus::kFileStatus_Success) << fixture << size;
            ASSERT_EQ(Edit(path, "unrelated").mStatus, FileStatus::kFileStatus_Success) << fixture << size;
            const MediaReading file = Read(path);
            EXPECT_EQ(CountArrayItems(file.mTree.get(), kDC, "title"), 2U) << fixture << size;
            EXPECT_EQ(Value(file, kDC, "title[1]"), "Harbour") << fixture << size;
            EXPECT_EQ(Value(file, kDC, "title[2]"), "Hafen") << fixture << size;
        }
    }
}

TEST_F(MediaStore, KeepAPairOfLanguagesThatAnotherProgramWrote) {
    const auto path = Copy("packet.jpg");
    const MediaReading file = Read(path);
    EXPECT_EQ(Value(file, kDC, "title[1]"), "Low tide");
    EXPECT_EQ(Value(file, kDC, "title[2]"), "Ebbe");
}

TEST_F(MediaStore, RefuseToWriteWhatIsNotSafeAndLeaveItAlone) {
    using enum FileStatus;
    struct Row {
        const char* mFixture;
        FileStatus mStatus;
    };
    const Row rows[] = {{"sidecar.xmp", kFileStatus_CannotCarryXMP}, {"broken-packet.jpg", kFileStatus_DamagedXMP}};
    for (const Row& row : rows) {
        const auto path = Copy(row.mFixture);
        EXPECT_EQ(Edit(path, "x").mStatus, row.mStatus) << row.mFixture;
        EXPECT_EQ(support::ReadFile(path), support::ReadFile(Fixture(row.mFixture)));
    }
    const auto path = Copy("harbour.jpg");
    const MediaReading file = Read(path);
    std::filesystem::remove(path);
    EXPECT_EQ(Write(path, file, file.mTree.get()).mStatus, kFileStatus_NoFile);
    EXPECT_THAT(FolderNames(), ::testing::ElementsAre("broken-packet.jpg", "sidecar.xmp"));
}

TEST_F(MediaStore, TellABrokenPacketFromNoneInEveryFormat) {
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

TEST_F(MediaStore, PutExtendedPacketsTogether) {
    const auto path = Copy("plain.jpg");
    const XMPMetaPtr tree = PairTree({}, 200000);
    ASSERT_EQ(Write(path, Read(path), tree.get()).mStatus, FileStatus::kFileStatus_Success);
    std::string bytes = support::ReadFile(path);
    const std::size_t part = bytes.rfind("http://ns.adobe.com/xmp/extension/");
    bytes[part] = 'x';
    const std::filesystem::path partial = mFolder.Write("missing-part.jpg", bytes);
    // What is left of the metadata is shown; writing it would drop the rest for good.
    EXPECT_EQ(Read(partial).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Read(partial).mWriteStatus, FileStatus::kFileStatus_DamagedXMP);
    EXPECT_EQ(Edit(partial, "new").mStatus, FileStatus::kFileStatus_DamagedXMP);
    EXPECT_EQ(support::ReadFile(partial), bytes);
}

TEST_F(MediaStore, AreLeftAloneWhenTheToolkitRunsOutOfSpace) {
    const auto path = Copy("harbour.jpg");
    const std::string old = support::ReadFile(path);
    for (rlim_t bytes = 0; bytes < 60000; bytes += 3000) {
        const auto body = [&] {
            return Edit(path, std::string(50000, 'v')).mStatus != FileStatus::kFileStatus_Success;
        };
        EXPECT_EQ(WithSmallDisk(bytes, body), 0) << bytes;
        EXPECT_EQ(support::ReadFile(path), old) << bytes;
        EXPECT_THAT(FolderNames(), ::testing::ElementsAre("harbour.jpg")) << bytes;
    }
}

}  // namespace
}  // namespace zephmetadata::media
