#include "media/containers/chunks/png.h"

#include <functional>

#include "chunk_files.h"

namespace zephmetadata::media {
namespace {

using namespace chunk_files;

const std::string kSignature = Bytes("\x89PNG\r\n\x1A\n");
const std::string kHeader = kSignature + PngChunk("IHDR", Bytes("\0\0\0\1\0\0\0\1\10\0\0\0\0"));
const std::string kPicture = PngChunk("PLTE", "abc") + PngChunk("IDAT", "first") + PngChunk("IDAT", "second");
const std::string kEnd = PngChunk("IEND", "");
const std::string kPacketKeyword = Bytes("XML:com.adobe.xmp\0");
const std::string kOtherText = PngChunk("iTXt", Bytes("Artist\0\0\0\0\0\xC3\x98"));

std::string Packet(const std::string& text) {
    return PngChunk("iTXt", kPacketKeyword + Bytes("\0\0\0\0") + text);
}
std::string Deflated(const std::string& text) {
    uLongf size = compressBound(text.size());
    std::string into(size, '\0');
    compress(reinterpret_cast<Bytef*>(into.data()), &size, reinterpret_cast<const Bytef*>(text.data()), text.size());
    into.resize(size);
    return into;
}
std::string Hexadecimal(const std::string& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        constexpr const char* kDigits = "0123456789abcdef";
        text += kDigits[Get8(bytes, i) / 16];
        text += kDigits[Get8(bytes, i) % 16];
        text += i % 36 == 35 ? "\n" : "";
    }
    return text;
}
std::string Profile(const std::string& kind, const std::string& bytes) {
    return "\n" + kind + "\n    " + std::to_string(bytes.size()) + "\n" + Hexadecimal(bytes) + "\n";
}
std::string RawProfile(const std::string& kind, const std::string& bytes) {
    return PngChunk("tEXt", "Raw profile type " + kind + '\0' + Profile(kind, bytes));
}
std::string CompressedRawProfile(const std::string& kind, const std::string& bytes) {
    return PngChunk("zTXt", "Raw profile type " + kind + Bytes("\0\0") + Deflated(Profile(kind, bytes)));
}
const std::string kSegmentPacket = Bytes("http://ns.adobe.com/xap/1.0/\0");
const std::string kExifSignature = Bytes("Exif\0\0");

std::string File(const std::string& front, const std::string& back = {}) {
    return kHeader + front + kPicture + back + kEnd;
}

struct ReadCase {
    const char* mName;
    std::string mFile;
    std::optional<std::string> mXMP;
    std::string mDescriptions;
    std::optional<std::string> mIIM;
};

class PngReadTest : public testing::TestWithParam<ReadCase> {};

TEST_P(PngReadTest, FindsTheBlocks) {
    ASSERT_TRUE(IsPng(GetParam().mFile));
    const FileBlocks blocks = ReadBytes(PngContainer(), GetParam().mFile);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << blocks.mDetail;
    EXPECT_EQ(blocks.mXMP, GetParam().mXMP);
    EXPECT_EQ(Descriptions(blocks), GetParam().mDescriptions);
    EXPECT_EQ(blocks.mIIM, GetParam().mIIM);
}

const std::string kIIM = Bytes("\x1C\x02\x5A\0\4Oslo");
const std::string kFolded = kPacketKeyword + Bytes("\1\0en\0name\0") + Deflated("folded packet");

INSTANTIATE_TEST_SUITE_P(
    Files, PngReadTest,
    testing::Values(
        ReadCase{"None", File(kOtherText), {}, "", {}},
        ReadCase{"BehindOtherText", File(kOtherText + Packet("one") + Packet("two")), "one", "", {}},
        ReadCase{"BehindThePicture", File("", kOtherText + Packet("one")) + "trailer", "one", "", {}},
        ReadCase{"Compressed", File(PngChunk("iTXt", kFolded)), "folded packet", "", {}},
        ReadCase{"Exif", File(PngChunk("eXIf", ExifSaying("a"))), {}, "a,", {}},
        ReadCase{"ExifWithSignature", File("", PngChunk("eXIf", kExifSignature + ExifSaying("b"))), {}, "b,", {}},
        ReadCase{
            "CompressedExif", File(PngChunk("zxIf", Bytes("\0\0\0\0\x20") + Deflated(ExifSaying("c")))), {}, "c,", {}},
        ReadCase{"ProperBeforeRaw",
                 File(RawProfile("exif", kExifSignature + ExifSaying("raw")) + RawProfile("xmp", "raw"),
                      PngChunk("eXIf", ExifSaying("own")) + Packet("own")),
                 "own",
                 "own,raw,",
                 {}},
        ReadCase{"Segments",
                 File(CompressedRawProfile("APP1", kExifSignature + ExifSaying("d")),
                      RawProfile("APP1", kSegmentPacket + "one")),
                 "one",
                 "d,",
                 {}},
        ReadCase{"Datasets", File(RawProfile("iptc", kIIM)), {}, "", kIIM},
        ReadCase{"Resources", File(RawProfile("iptc", Bytes("8BIM\4\4\0\0\0\0\0\x9") + kIIM + '\0')), {}, "", kIIM},
        ReadCase{"NoRawProfiles",
                 File(PngChunk("tEXt", Bytes("Raw profile type xmp\0\nxmp\n 99999999999\n00")) +
                      PngChunk("tEXt", Bytes("Raw profile type xmp\0\nxmp\n 4\nzz112233")) +
                      PngChunk("zTXt", Bytes("Raw profile type xmp\0\0no stream"))),
                 {},
                 "",
                 {}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

struct EditCase {
    const char* mName;
    BlockChanges mChanges;
    std::string mFile;
    std::string mResult;
};

class PngEditTest : public testing::TestWithParam<EditCase> {};

TEST_P(PngEditTest, ChangesTheBlockAlone) {
    EXPECT_EQ(Edited(PngContainer(), GetParam().mFile, GetParam().mChanges), GetParam().mResult);
}

const std::string kRoomy = WrappedPacket("old", 500);
const std::string kNew = ShortPacket(kElement);
const std::string kRaw = RawProfile("exif", kExifSignature + ExifSaying("a"));

INSTANTIATE_TEST_SUITE_P(
    Edits, PngEditTest,
    testing::Values(
        EditCase{"NewPacket", NewPacket(), File(kOtherText) + "trailer", File(Packet(kNew) + kOtherText) + "trailer"},
        EditCase{"FirstPacket", NewPacket(), File(kOtherText, Packet("old") + Packet("other")),
                 File(kOtherText, Packet(kNew) + Packet("other"))},
        EditCase{"Room", NewPacket(), File(Packet(kRoomy)), File(Packet(WrappedPacket(kElement, kRoomy.size())))},
        EditCase{"FarTooMuchRoom", NewPacket(), File(Packet(WrappedPacket("old", 99999))), File(Packet(kNew))},
        EditCase{"Compressed", NewPacket(), File(PngChunk("iTXt", kFolded)),
                 File(PngChunk("iTXt", kPacketKeyword + Bytes("\0\0en\0name\0") + kNew))},
        EditCase{"RawPacket", NewPacket(),
                 File(kOtherText + RawProfile("xmp", "old"), RawProfile("APP1", kSegmentPacket + "old")),
                 File(Packet(kNew) + kOtherText)},
        EditCase{"RawPacketThatDiffers", NewPacket(), File(Packet("old") + RawProfile("xmp", "other")),
                 File(Packet(kNew) + RawProfile("xmp", "other"))},
        EditCase{"NewExif", NewDescription("a"), File(""), File(PngChunk("eXIf", ExifSaying("a")))},
        EditCase{"Exif", NewDescription("b"), File("", PngChunk("eXIf", kExifSignature + ExifSaying("a")) + kRaw),
                 File("", PngChunk("eXIf", kExifSignature + ExifSaying("b")))},
        EditCase{"RawExif", NewDescription("b"), File(kOtherText, kRaw + kOtherText),
                 File(PngChunk("eXIf", ExifSaying("b")) + kOtherText, kOtherText)}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(PngTest, CutFilesAreDamagedAndRepeatedEditsDoNotGrow) {
    const std::string file = File(kOtherText + Packet("old"), PngChunk("eXIf", ExifSaying("a")));
    ExpectCutsToBeFound(PngContainer(), file, file.size());
    ExpectNoGrowth(PngContainer(), file, file.size() + 500);
}

TEST(PngTest, PacketsThatCannotBeUnfoldedAreDamage) {
    const std::string bomb = Deflated(std::string(std::size_t{65} << 20U, 'x'));
    for (const std::string& data : {std::string("no stream"), bomb}) {
        const std::string file = File(PngChunk("iTXt", kPacketKeyword + Bytes("\1\0\0\0") + data));
        EXPECT_EQ(ReadBytes(PngContainer(), file).mStatus, FileStatus::kFileStatus_DamagedFile);
        EXPECT_EQ(Edited(PngContainer(), file, NewPacket()), "");
    }
}

}  // namespace
}  // namespace zephmetadata::media
