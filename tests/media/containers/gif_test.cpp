#include "media/containers/chunks/gif.h"

#include "chunk_files.h"

namespace zephmetadata::media {
namespace {

using namespace chunk_files;

// Two colors; a picture of two sub-blocks with colors of its own, and what is said of it before.
const std::string kScreen = Bytes("\1\0\1\0\x80\0\0abcdef");
const std::string kPicture =
    Bytes("\x21\xF9\4\0\0\0\0\0") + Bytes("\x2C\0\0\0\0\1\0\1\0\x80") + "ghijkl" + Bytes("\2\3abc\1d\0");
const std::string kLoop = Bytes("\x21\xFF\x0BNETSCAPE2.0\3\1\0\0\0");
const std::string kComment = Bytes("\x21\xFE\5hello\0");

std::string File(const std::string& blocks, const std::string& version = "GIF89a") {
    return version + kScreen + blocks + ";";
}
std::string Packet(const std::string& text) {
    std::string trailer = "\1";
    for (int i = 255; i >= 0; --i) {
        trailer += static_cast<char>(i);
    }
    return "\x21\xFF\x0BXMP DataXMP" + text + trailer + '\0';
}
std::string PacketInSubBlocks(const std::string& text) {
    std::string blocks = "\x21\xFF\x0BXMP DataXMP";
    for (std::size_t at = 0; at < text.size(); at += 255) {
        const std::string part = text.substr(at, 255);
        blocks += static_cast<char>(part.size()) + part;
    }
    return blocks + '\0';
}

struct EditCase {
    const char* mName;
    std::string mFile;
    std::optional<std::string> mXMP;
    std::string mResult;
};

class GifEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(GifEditTest, ReadsAndWritesThePacket) {
    ASSERT_TRUE(IsGif(GetParam().mFile));
    const FileBlocks blocks = ReadBytes(GifContainer(), GetParam().mFile);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(blocks.mXMP, GetParam().mXMP);
    EXPECT_EQ(Edited(GifContainer(), GetParam().mFile, NewPacket()), GetParam().mResult);
}

const std::string kNew = Packet(ShortPacket(kElement));
const std::string kOld = ShortPacket("\xC3\xA4" + std::string(300, 'x'));
const std::string kInRoom = Packet(WrappedPacket(kElement, kOld.size()));

INSTANTIATE_TEST_SUITE_P(
    Files, GifEditTest,
    testing::Values(EditCase{"Old", File(kPicture, "GIF87a") + "rest", {}, File(kNew + kPicture) + "rest"},
                    EditCase{"BehindTheLoop",
                             File(kLoop + kComment + kPicture + kPicture),
                             {},
                             File(kLoop + kComment + kNew + kPicture + kPicture)},
                    EditCase{"NoPicture", File(kComment), {}, File(kComment + kNew)},
                    EditCase{"Whole", File(kPicture + Packet(kOld) + Packet("two")), kOld,
                             File(kPicture + kInRoom + Packet("two"))},
                    EditCase{"InSubBlocks", File(PacketInSubBlocks(kOld) + kPicture), kOld, File(kInRoom + kPicture)},
                    EditCase{"Empty", File(PacketInSubBlocks("") + kPicture), {}, File(kNew + kPicture)}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(GifTest, CutFilesAreDamagedAndRepeatedEditsDoNotGrow) {
    const std::string file = File(kLoop + Packet("packet") + kPicture);
    ExpectCutsToBeFound(GifContainer(), file, file.size());
    ExpectNoGrowth(GifContainer(), file, file.size() + 500);
}

}  // namespace
}  // namespace zephmetadata::media
