#include "media/containers/tiff/tiff.h"

#include <gtest/gtest.h>

#include "media/native/iim/image_resources.h"
#include "media/native/tiff_fixture.h"

namespace zephmetadata::media {
namespace {

constexpr char kElement[] = "<x:xmpmeta xmlns:x='adobe:ns:meta/'/>";
const std::string kDatasets("\x1C\x02\x5A\0\x03Rom", 8);
const std::string kNewDatasets("\x1C\x02\x5A\0\x06Lisbon", 11);

std::string Resource(std::uint16_t number, const std::string& data) {
    std::string bytes = "8BIM" + NumberBytes(number, 2) + std::string(2, '\0') + NumberBytes(data.size(), 4) + data;
    bytes.resize((bytes.size() + 1) / 2 * 2, '\0');
    return bytes;
}

/// A picture of one strip, with some more fields.
std::string Picture(std::vector<TiffBuilder::Entry> entries, ByteOrder order = ByteOrder::kLittle) {
    TiffBuilder builder(order);
    const std::uint64_t strip = builder.Put("strip of image data");
    entries.insert(entries.begin(), {builder.Pointer(273, strip), builder.Pointer(279, 19)});
    return builder.Made(builder.PutDirectory(entries));
}

FileBlocks Read(const std::string& bytes) {
    return TIFFContainer().Read(std::make_shared<MemorySource>(bytes));
}

std::string Edited(const std::string& bytes, const BlockChanges& changes) {
    const auto file = std::make_shared<MemorySource>(bytes);
    const PlannedEdit edit = TIFFContainer().PlanEdit(file, changes);
    EXPECT_EQ(edit.mStatus, FileStatus::kFileStatus_Success) << edit.mDetail;
    const std::string after = Carried(edit.mPlan, *file).value_or("unsound");
    EXPECT_EQ(TIFFContainer().References(MemorySource(after)), TIFFContainer().References(*file));
    EXPECT_EQ(after.substr(8, 19), bytes.substr(8, 19));
    return after;
}

TEST(TiffFileTest, APacketThatFitsStaysWhereItIs) {
    for (const TiffType type : {TiffType::kByte, TiffType::kUndefined}) {
        const std::string before = Picture({{700, type, std::string(900, 'p')}});
        EXPECT_EQ(Read(before).mXMP, std::string(900, 'p'));
        const std::string after = Edited(before, {kElement, {}, {}, {}});
        EXPECT_EQ(after.size(), before.size());
        EXPECT_EQ(Read(after).mXMP, WrappedPacket(kElement, 900));
        EXPECT_EQ(ReadTiff(MemorySource(after)).Find(TiffDirectory::kMain, 700)->mType, type);
    }
}

TEST(TiffFileTest, AllBlocksChangeInOnePlan) {
    const BlockChanges changes{
        kElement,
        {},
        {{TiffDirectory::kExif, 36867, TiffType::kAscii, std::string("2001:02:03 04:05:06\0", 20)}},
        kNewDatasets};
    const std::string after = Edited(Picture({}), changes);
    const FileBlocks blocks = Read(after);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(blocks.mXMP, WrappedPacket(kElement));
    EXPECT_EQ(blocks.mIIM, kNewDatasets);
    ASSERT_EQ(blocks.mExif.size(), 1U);
    EXPECT_NE(ReadTiff(*blocks.mExif[0].mSource).Find(TiffDirectory::kExif, 36867), nullptr);
    EXPECT_EQ(Edited(after, changes), after);
}

struct IIMCase {
    const char* mName;
    TiffType mType;       // of the file's own field; none when it has no bytes
    std::string mInFile;  // big-endian numbers
    ByteOrder mOrder;
    std::string mResource;  // datasets among the image resources
    std::string mWritten;   // the bytes of the field in the file afterwards
};
const IIMCase kIIMCases[] = {
    {"Bytes", TiffType::kUndefined, kDatasets + std::string(2, '\0'), ByteOrder::kLittle, {}, kNewDatasets},
    {"Longs", TiffType::kLong, kDatasets, ByteOrder::kBig, {}, kNewDatasets + '\0'},
    {"LongsOfBytes", TiffType::kLong, {"\0\x5A\x02\x1CmoR\x03", 8}, ByteOrder::kLittle, {}, kNewDatasets + '\0'},
    {"LongsTurnedAbout", TiffType::kLong, kDatasets, ByteOrder::kLittle, {}, {"\0\x5A\x02\x1CsiL\x06\0nob", 12}},
    {"ResourceAlone", {}, {}, ByteOrder::kBig, kDatasets, {}},
    {"Both", TiffType::kByte, kDatasets, ByteOrder::kBig, kDatasets, kNewDatasets},
    {"None", {}, {}, ByteOrder::kBig, {}, kNewDatasets},
};
class TiffIIMTest : public testing::TestWithParam<IIMCase> {};
INSTANTIATE_TEST_SUITE_P(Forms, TiffIIMTest, testing::ValuesIn(kIIMCases),
                         [](const auto& instance) { return std::string(instance.param.mName); });

TEST_P(TiffIIMTest, DatasetsKeepTheirFormAndTheDigestFollows) {
    const std::string other = Resource(0x03ED, "resolution");
    const std::string mine = GetParam().mResource.empty() ? "" : Resource(kResourceIIM, GetParam().mResource);
    std::vector<TiffBuilder::Entry> entries;
    if (!GetParam().mInFile.empty()) {
        entries.push_back({33723, GetParam().mType, GetParam().mInFile});
    }
    const std::string resources = other + mine + Resource(kResourceIIMDigest, IIMDigest(kDatasets));
    entries.push_back({34377, TiffType::kByte, resources});
    const std::string before = Picture(entries, GetParam().mOrder);
    if (!GetParam().mInFile.empty() || !mine.empty()) {
        EXPECT_EQ(Read(before).mIIM, kDatasets);
    }
    EXPECT_EQ(Read(before).mIIMDigest, IIMDigest(kDatasets));

    const std::string after = Edited(before, {{}, {}, {}, kNewDatasets});
    EXPECT_EQ(Read(after).mIIM, kNewDatasets);
    EXPECT_EQ(Read(after).mIIMDigest, IIMDigest(kNewDatasets));
    const TiffFields fields = ReadTiff(MemorySource(after));
    const TiffField* const field = fields.Find(TiffDirectory::kMain, 33723);
    EXPECT_EQ(field == nullptr ? "" : ReadRange(MemorySource(after), field->mPlace), GetParam().mWritten);
    const std::string& written = fields.Find(TiffDirectory::kMain, 34377)->mBytes;
    EXPECT_EQ(written.substr(0, other.size()), other);
    EXPECT_EQ(written.find(kNewDatasets) != std::string::npos, !mine.empty());
}

TEST(TiffFileTest, AFileThatIsCutOffIsDamagedAndOneWithoutItsPictureIsNot) {
    TiffBuilder builder;
    const std::uint64_t first = builder.PutDirectory(
        {{273, TiffType::kLong, NumberBytes(38, 4)}, {279, TiffType::kLong, NumberBytes(200000, 4)}});
    std::string bytes = builder.Made(first);
    ASSERT_EQ(bytes.size(), 38U);
    EXPECT_EQ(Read(bytes).mStatus, FileStatus::kFileStatus_Success);
    const auto file = std::make_shared<MemorySource>(bytes);
    const std::string edited =
        Carried(TIFFContainer().PlanEdit(file, {kElement, {}, {}, {}}).mPlan, *file).value_or("");
    EXPECT_EQ(Read(edited).mStatus, FileStatus::kFileStatus_Success);
    EXPECT_EQ(Read(edited).mXMP, WrappedPacket(kElement));

    bytes += std::string(100000, 'i');
    EXPECT_EQ(Read(bytes).mStatus, FileStatus::kFileStatus_DamagedFile);
    EXPECT_FALSE(Read(bytes).mDetail.empty());
    bytes += std::string(100000, 'i');
    EXPECT_EQ(Read(bytes).mStatus, FileStatus::kFileStatus_Success);
    bytes.resize(20);
    EXPECT_EQ(Read(bytes).mStatus, FileStatus::kFileStatus_DamagedFile);
    const PlannedEdit refused = TIFFContainer().PlanEdit(std::make_shared<MemorySource>(bytes), {kElement, {}, {}, {}});
    EXPECT_EQ(refused.mStatus, FileStatus::kFileStatus_DamagedFile);
}

}  // namespace
}  // namespace zephmetadata::media
