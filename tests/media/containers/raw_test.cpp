#include "media/containers/tiff/raw.h"

#include <gtest/gtest.h>

#include "media/containers/tiff/tiff.h"
#include "media/native/tiff_fixture.h"

namespace zephmetadata::media {
namespace {

using namespace std::string_literals;

constexpr char kPacket[] = "<?xpacket begin=''?><x:xmpmeta xmlns:x='adobe:ns:meta/'/><?xpacket end='w'?>";

TiffBuilder::Entry Short(std::uint16_t tag, std::uint16_t value) {
    return {tag, TiffType::kShort, NumberBytes(value, 2)};
}

std::string Stream(const std::vector<TiffBuilder::Entry>& entries, const std::vector<TiffBuilder::Entry>& sub = {}) {
    TiffBuilder builder(ByteOrder::kLittle);
    builder.Put(std::string(16, '\0'));  // room for a signature behind the header
    std::vector<TiffBuilder::Entry> all = entries;
    if (!sub.empty()) {
        all.push_back(builder.Pointer(330, builder.PutDirectory(sub)));
    }
    return builder.Made(builder.PutDirectory(all));
}

std::string With(std::string bytes, std::size_t at, const std::string& signature) {
    return bytes.replace(at, signature.size(), signature);
}

struct Kind {
    const char* mName;
    std::string mBytes;
    bool mIsRaw;
};
const Kind kKinds[] = {
    {"Picture", Stream({Short(259, 5), Short(262, 2)}), false},
    {"PackBits", Stream({Short(259, 32773), Short(262, 1)}), false},
    {"ColourFilterArray", Stream({Short(262, 2)}, {Short(262, 32803)}), true},
    {"LinearRaw", Stream({Short(262, 34892)}), true},
    {"NikonCompression", Stream({Short(262, 2)}, {Short(259, 34713)}), true},
    {"SonyCompression", Stream({Short(259, 32767)}), true},
    {"PentaxCompression", Stream({Short(259, 65535)}), true},
    {"SonyPrivateDirectory", Stream({{50740, TiffType::kByte, "\1\2\3\4"}}), true},
    {"DNG", Stream({{50706, TiffType::kByte, "\1\4\0\0"s}}, {Short(262, 32803)}), false},
    {"CR2", With(Stream({Short(259, 6)}), 8, "CR\2\0"s), true},
    {"IIQ", With(Stream({Short(259, 1)}), 8, "IIIITwaR"), true},
    {"ORF", With(Stream({Short(259, 1)}), 0, "IIRO"), true},
    {"RW2", With(Stream({Short(259, 1)}), 0, "IIU\0"s), true},
    {"NoTiff", "FUJIFILMCCD-RAW 0201"s, false},
};
class RawKindTest : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Kinds, RawKindTest, testing::ValuesIn(kKinds),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST_P(RawKindTest, IsToldByWhatTheFileHolds) {
    EXPECT_EQ(IsRawTiff(MemorySource(GetParam().mBytes)), GetParam().mIsRaw);
}

/// A JPEG stream with a packet and an Exif block.
std::string Preview() {
    const auto segment = [](const std::string& data) { return "\xFF\xE1" + NumberBytes(data.size() + 2, 2) + data; };
    const std::vector<TiffEdit> edits = {{TiffDirectory::kMain, 271, TiffType::kAscii, "Maker\0"s}};
    return "\xFF\xD8" + segment("Exif\0\0"s + NewTiff(edits)) + segment("http://ns.adobe.com/xap/1.0/\0"s + kPacket) +
           "\xFF\xDA\0\x02\xFF\xD9"s;
}

std::string Fuji() {
    std::string bytes = "FUJIFILMCCD-RAW "s;
    bytes.resize(84, '\0');
    return bytes + NumberBytes(92, 4) + NumberBytes(Preview().size(), 4) + Preview();
}
std::string Sigma() {
    const auto number = [](std::uint64_t value) { return NumberBytes(value, 4, ByteOrder::kLittle); };
    const std::string image =
        "SECi" + number(0x20000) + number(2) + number(18) + number(1) + number(1) + number(0) + Preview();
    const std::string directory = "SECd" + number(0x20000) + number(1) + number(4) + number(image.size()) + "IMA2";
    return "FOVb" + image + directory + number(4 + image.size());
}
std::string Minolta() {
    const std::string stream = Stream({{271, TiffType::kAscii, "Maker\0"s}, {700, TiffType::kByte, kPacket}});
    const std::string blocks = "\0PRD"s + NumberBytes(2, 4) + "ab" + "\0TTW"s + NumberBytes(stream.size(), 4) + stream;
    return "\0MRM"s + NumberBytes(blocks.size(), 4) + blocks;
}

const Kind kFiles[] = {
    {"RAF", Fuji(), true},
    {"X3F", Sigma(), true},
    {"MRW", Minolta(), true},
    {"RW2", With(Stream({{46, TiffType::kUndefined, Preview()}}), 0, "IIU\0"s), true},
    {"CR2", With(Stream({{271, TiffType::kAscii, "Maker\0"s}, {700, TiffType::kByte, kPacket}}), 8, "CR\2\0"s), true},
    {"NEF", Stream({{271, TiffType::kAscii, "Maker\0"s}}, {Short(262, 32803), {700, TiffType::kByte, kPacket}}), false},
};
class RawFileTest : public testing::TestWithParam<Kind> {};
INSTANTIATE_TEST_SUITE_P(Files, RawFileTest, testing::ValuesIn(kFiles),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST_P(RawFileTest, IsReadAndNotWritten) {
    const std::string& bytes = GetParam().mBytes;
    const auto file = std::make_shared<MemorySource>(bytes);
    EXPECT_EQ(IsRaw(bytes.substr(0, 64)), GetParam().mIsRaw);
    const FileBlocks blocks = RawContainer().Read(file);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << blocks.mDetail;
    EXPECT_EQ(blocks.mXMP, kPacket);
    ASSERT_FALSE(blocks.mExif.empty());
    const TiffFields fields = ReadTiff(*blocks.mExif[0].mSource, blocks.mExif[0].mFirst);
    ASSERT_NE(fields.Find(TiffDirectory::kMain, 271), nullptr);
    EXPECT_EQ(fields.Find(TiffDirectory::kMain, 271)->mBytes, "Maker\0"s);
    EXPECT_EQ(RawContainer().PlanEdit(file, {"x", {}, {}, {}}).mStatus, FileStatus::kFileStatus_CannotCarryXMP);
    for (std::size_t size = 0; size < 100; ++size) {  // headers that are cut off have no packet, and say so
        const FileBlocks cut = RawContainer().Read(std::make_shared<MemorySource>(bytes.substr(0, size)));
        EXPECT_EQ(cut.mStatus, FileStatus::kFileStatus_DamagedFile) << size;
        EXPECT_EQ(cut.mXMP, std::nullopt) << size;
    }
}

}  // namespace
}  // namespace zephmetadata::media
