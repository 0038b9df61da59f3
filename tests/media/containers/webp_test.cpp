#include "media/containers/chunks/webp.h"

#include "chunk_files.h"

namespace zephmetadata::media {
namespace {

using namespace chunk_files;

// 61 by 41 points.
const std::string kLossy = RiffChunk("VP8 ", Bytes("\x30\x01\x00\x9D\x01\x2A\x3D\x00\x29\x40more"));
const std::string kLossless = RiffChunk("VP8L", Bytes("\x2F\x3C\x00\x0A\x10more."));
const std::string kFrames = RiffChunk("ANIM", "123456") + RiffChunk("ANMF", "frame") + RiffChunk("ANMF", "frame 2");
const std::string kExifSignature = Bytes("Exif\0\0");

std::string Extended(char flags) {
    return RiffChunk("VP8X", flags + Bytes("\0\0\0\x3C\0\0\x28\0\0"));
}
std::string File(const std::string& chunks) {
    return Riff("WEBP", chunks);
}
std::string Packet(const std::string& text) {
    return RiffChunk("XMP ", text);
}
std::string Exif(const std::string& text) {
    return RiffChunk("EXIF", ExifSaying(text));
}

struct ReadCase {
    const char* mName;
    std::string mFile;
    std::optional<std::string> mXMP;
    std::string mDescriptions;
};

class WebPReadTest : public testing::TestWithParam<ReadCase> {};

TEST_P(WebPReadTest, FindsTheBlocks) {
    ASSERT_TRUE(IsWebP(GetParam().mFile));
    const FileBlocks blocks = ReadBytes(WebPContainer(), GetParam().mFile);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(blocks.mXMP, GetParam().mXMP);
    EXPECT_EQ(Descriptions(blocks), GetParam().mDescriptions);
}

INSTANTIATE_TEST_SUITE_P(
    Files, WebPReadTest,
    testing::Values(ReadCase{"Simple", File(kLossy) + "trailer", {}, ""},
                    ReadCase{"Both", File(Extended(0x0C) + kLossless + Exif("a") + Packet("one") + Packet("two")),
                             "one", "a,"},
                    ReadCase{"OtherForms",
                             File(Extended(0x0C) + kLossy + RiffChunk(Bytes("XMP\0"), "one") +
                                  RiffChunk("EXIF", kExifSignature + ExifSaying("b"))),
                             "one", "b,"},
                    ReadCase{"Empty", File(Extended(0x0C) + kLossy + Packet("") + RiffChunk("EXIF", "")), {}, ""},
                    ReadCase{"WithoutPadding",
                             "RIFF" + Bytes("\x1B\0\0\0WEBPVP8L\x5\0\0\0\x2F\x3C\0\x0A\0\0XMP \1\0\0\0x"), "x", ""}),
    [](const auto& instance) { return std::string(instance.param.mName); });

struct EditCase {
    const char* mName;
    BlockChanges mChanges;
    std::string mFile;
    std::string mResult;
};

class WebPEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(WebPEditTest, ChangesTheBlockAndWhatFollowsFromIt) {
    EXPECT_EQ(Edited(WebPContainer(), GetParam().mFile, GetParam().mChanges), GetParam().mResult);
}

BlockChanges Both() {
    BlockChanges changes = NewDescription("b");
    changes.mXMP = kElement;
    return changes;
}

const std::string kNew = Packet(ShortPacket(kElement));
const std::string kUnknown = RiffChunk("what", "odd");

INSTANTIATE_TEST_SUITE_P(
    Edits, WebPEditTest,
    testing::Values(
        EditCase{"Lossy", NewPacket(), File(kLossy) + "trailer", File(Extended(0x04) + kLossy + kNew) + "trailer"},
        EditCase{"LosslessWithAlpha", NewDescription("b"), File(kLossless),
                 File(Extended(0x18) + kLossless + Exif("b"))},
        EditCase{"Animation", Both(), File(Extended(0x02) + kFrames + kUnknown),
                 File(Extended(0x0E) + kFrames + kUnknown + Exif("b") + kNew)},
        EditCase{"ExifBeforePacket", NewDescription("b"), File(Extended(0x04) + kLossy + Packet("old")),
                 File(Extended(0x0C) + kLossy + Exif("b") + Packet("old"))},
        EditCase{"InTheirPlaces", Both(),
                 File(Extended(0x0C) + RiffChunk(Bytes("XMP\0"), "old") +
                      RiffChunk("EXIF", kExifSignature + ExifSaying("a")) + kLossy + Packet("other")),
                 File(Extended(0x0C) + kNew + RiffChunk("EXIF", kExifSignature + ExifSaying("b")) + kLossy +
                      Packet("other"))},
        EditCase{"PaddingOfTheLast", Both(),
                 "RIFF" + Bytes("\x25\0\0\0") + "WEBP" + Extended(0) + "VP8L" + Bytes("\7\0\0\0") + "picture",
                 File(Extended(0x0C) + RiffChunk("VP8L", "picture") + Exif("b") + kNew)},
        EditCase{"Room", NewPacket(), File(Extended(0x04) + kLossy + Packet(WrappedPacket("old", 501))),
                 File(Extended(0x04) + kLossy + Packet(WrappedPacket(kElement, 501)))},
        EditCase{"NoPicture", NewPacket(), File(kUnknown), ""}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(WebPTest, CutFilesAreDamagedAndRepeatedEditsDoNotGrow) {
    const std::string file = File(Extended(0x0C) + kLossy + Exif("a") + Packet("packet"));
    ExpectCutsToBeFound(WebPContainer(), file, file.size());
    ExpectNoGrowth(WebPContainer(), file, file.size() + 500);
}

}  // namespace
}  // namespace zephmetadata::media
