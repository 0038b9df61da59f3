#include "media/containers/documents/psd.h"

#include <gtest/gtest.h>

#include "media/support/jpeg_files.h"

namespace zephmetadata::media {
namespace {

using namespace testing_support;

constexpr const char* kElement = "<x:xmpmeta>new</x:xmpmeta>";

/// A document of the version with a palette, layers and a picture.
std::string DocumentOf(char version, const std::string& resources) {
    const std::string header =
        std::string("8BPS\0", 5) + version + std::string(6, '\0') + std::string("\0\1\0\0\0\1\0\0\0\1\0\x08\0\2", 14);
    const std::string layers = "layers";
    return header + NumberBytes(3, 4) + "pal" + NumberBytes(resources.size(), 4) + resources +
           NumberBytes(layers.size(), version == 1 ? 4 : 8) + layers + "picture";
}

struct EditCase {
    const char* mName;
    std::string mBefore;
    BlockChanges mChanges;
    std::string mAfter;
};

std::vector<EditCase> EditCases() {
    const std::string resolution = Resource(0x03ED, "resolution", "odd");
    const std::string flags = Resource(0x2710, "\1\2", {}, "MeSa");
    const std::string wide = std::string(400, ' ');
    const std::string digest = Resource(kResourceIIMDigest, std::string(16, 'd'));
    return {
        {"packet in place", resolution + Resource(kResourceXMP, wide) + flags, XMPChange(kElement),
         resolution + Resource(kResourceXMP, WrappedPacket(kElement, wide.size())) + flags},
        {"larger packet", Resource(kResourceXMP, "tiny") + flags, XMPChange(kElement),
         Resource(kResourceXMP, WrappedPacket(kElement)) + flags},
        {"new packet", flags, XMPChange(kElement), flags + Resource(kResourceXMP, WrappedPacket(kElement))},
        {"no packet", resolution + Resource(kResourceXMP, wide) + flags, XMPChange(""), resolution + flags},
        {"datasets", digest + Resource(kResourceIIM, "old") + flags, IIMChange("datasets"),
         Resource(kResourceIIMDigest, IIMDigest("datasets")) + Resource(kResourceIIM, "datasets") + flags},
        {"new datasets", resolution, IIMChange("odd"), resolution + Resource(kResourceIIM, "odd")},
        {"new Exif", flags, ExifChange("me"), flags + Resource(kResourceExif, NewTiff(ExifChange("me").mExif))},
        {"nothing to remove", flags, ExifChange(""), flags},
    };
}

TEST(PSDTest, EditsChangeTheirResourcesAlone) {
    for (const char version : {'\1', '\2'}) {
        for (const EditCase& row : EditCases()) {
            const std::string made = Edited(PSDContainer(), DocumentOf(version, row.mBefore), row.mChanges);
            EXPECT_EQ(made, DocumentOf(version, row.mAfter)) << row.mName << " version " << int{version};
            EXPECT_EQ(Edited(PSDContainer(), made, row.mChanges), made) << row.mName;
        }
    }
}

TEST(PSDTest, BlocksAreReadWhereTheyAre) {
    const std::string exif = NewTiff(ExifChange("me").mExif);
    const std::string bytes = DocumentOf('\2', Resource(7, "x") + Resource(kResourceIIM, "iim") +
                                                   Resource(kResourceIIMDigest, "0123456789abcdef") +
                                                   Resource(kResourceExif, exif) + Resource(kResourceXMP, "packet"));
    ASSERT_TRUE(IsPSD(bytes));
    const FileBlocks blocks = PSDContainer().Read(std::make_shared<MemorySource>(bytes));
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_Success) << blocks.mDetail;
    EXPECT_EQ(blocks.mXMP, "packet");
    EXPECT_EQ(blocks.mIIM, "iim");
    EXPECT_EQ(blocks.mIIMDigest, "0123456789abcdef");
    ASSERT_EQ(blocks.mExif.size(), 1U);
    EXPECT_EQ(ReadUpTo(*blocks.mExif.front().mSource, 0, 1000), exif);
}

TEST(PSDTest, DamagedDocumentsAreNotWritten) {
    const std::string resources = Resource(kResourceXMP, "packet") + Resource(7, "x");
    const std::string bytes = DocumentOf('\1', resources);
    const std::size_t picture = bytes.size() - std::string("picture").size();
    for (std::size_t size = 6; size < picture; ++size) {
        const auto cut = std::make_shared<MemorySource>(bytes.substr(0, size));
        EXPECT_EQ(PSDContainer().Read(cut).mStatus, FileStatus::kFileStatus_DamagedFile) << size;
        const PlannedEdit edit = PSDContainer().PlanEdit(cut, XMPChange(kElement));
        EXPECT_EQ(edit.mStatus, FileStatus::kFileStatus_DamagedFile) << size;
    }
    const auto junk = std::make_shared<MemorySource>(DocumentOf('\1', resources + "no resource"));
    const FileBlocks blocks = PSDContainer().Read(junk);
    EXPECT_EQ(blocks.mStatus, FileStatus::kFileStatus_DamagedFile);
    EXPECT_EQ(blocks.mXMP, "packet");
    EXPECT_FALSE(IsPSD(std::string_view("8BPS\0\3", 6)));
}

}  // namespace
}  // namespace zephmetadata::media
