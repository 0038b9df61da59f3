#include "media/containers/chunks/aiff.h"

#include "chunk_files.h"

namespace zephmetadata::media {
namespace {

using namespace chunk_files;

std::string Chunk(const std::string& type, const std::string& data) {
    return PaddedChunk(type, data, ByteOrder::kBig);
}
std::string File(const std::string& chunks, const std::string& name = "AIFF") {
    return Chunk("FORM", name + Chunk("COMM", "common") + chunks);
}
std::string Packet(const std::string& text) {
    return Chunk("APPL", "XMP " + text);
}

const std::string kSound = Chunk("SSND", "samples") + Chunk("APPL", "stocother");
const std::string kRoomy = WrappedPacket("old", 501);

struct EditCase {
    std::string mFile;
    std::optional<std::string> mXMP;
    std::string mResult;
};

TEST(AiffTest, PacketsAreReadAndWritten) {
    const std::string packet = Packet(ShortPacket(kElement));
    const std::vector<EditCase> cases = {
        {File(kSound) + "trailer", {}, File(kSound + packet) + "trailer"},
        {File(Packet("old") + kSound + Packet("two"), "AIFC"), "old", File(packet + kSound + Packet("two"), "AIFC")},
        {File(kSound + Packet(kRoomy)), kRoomy, File(kSound + Packet(WrappedPacket(kElement, 501)))},
        {File(kSound + Packet("")), {}, File(kSound + packet)},
    };
    for (const EditCase& each : cases) {
        ASSERT_TRUE(IsAiff(each.mFile));
        EXPECT_EQ(ReadBytes(AiffContainer(), each.mFile).mXMP, each.mXMP);
        EXPECT_EQ(Edited(AiffContainer(), each.mFile, NewPacket()), each.mResult);
    }
}

TEST(AiffTest, TextChunksAreValues) {
    const std::string file = File(Chunk("NAME", "\xD8") + Chunk("AUTH", Bytes("a\0b")) + Chunk("(c) ", "c") +
                                  Chunk("ANNO", "one") + Chunk("ANNO", "two") + kSound);
    const std::vector<NativeValue> expected = {
        {"http://purl.org/dc/elements/1.1/", "title", ValueForm::kLangAlt, {{"x-default", "\xC3\x98"}}},
        {"http://purl.org/dc/elements/1.1/", "creator", ValueForm::kSeq, {{"", "a"}}},
        {"http://purl.org/dc/elements/1.1/", "rights", ValueForm::kLangAlt, {{"x-default", "c"}}},
        {"http://ns.adobe.com/xmp/1.0/DynamicMedia/", "logComment", ValueForm::kSimple, {{"", "two"}}},
    };
    EXPECT_EQ(ReadBytes(AiffContainer(), file).mValues, expected);
}

TEST(AiffTest, CutFilesAreDamagedAndRepeatedEditsDoNotGrow) {
    const std::string file = File(kSound + Packet("old"));
    ExpectCutsToBeFound(AiffContainer(), file, file.size());
    ExpectNoGrowth(AiffContainer(), file, file.size() + 500);
}

}  // namespace
}  // namespace zephmetadata::media
