#include <random>

#include "media_fixture.h"

namespace zephmetadata::media {
namespace {

constexpr const char* kFixtures[] = {"harbour.jpg", "packet.png", "packet.tif",  "packet.gif",  "packet.mp3",
                                     "packet.mp4",  "packet.wav", "drawing.svg", "sidecar.xmp", "truncated.jpg"};
constexpr int kVariants = 60;  // of each fixture

class HostileFiles : public MediaTest, public ::testing::WithParamInterface<const char*> {
protected:
    /// The fixture with some bytes changed, or cut off somewhere.
    std::string Damaged(std::mt19937& random) const {
        std::string bytes = support::ReadFile(Fixture(GetParam()));
        const auto below = [&](std::size_t limit) {
            return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
        };
        if (below(3) == 0) {
            return bytes.substr(0, below(bytes.size()));
        }
        for (std::size_t changes = 1 + below(12); changes > 0; --changes) {
            // Lengths and offsets stand at the front of most containers.
            const std::size_t at = below(below(2) == 0 ? std::min<std::size_t>(bytes.size(), 600) : bytes.size());
            bytes[at] = static_cast<char>(below(256));
        }
        return bytes;
    }
};

TEST_P(HostileFiles, AreReadOrRefusedAndNeverMadeWorse) {
    std::mt19937 random(20240518);
    for (int variant = 0; variant < kVariants; ++variant) {
        const std::string bytes = Damaged(random);
        const auto path = mFolder.Write(GetParam(), bytes);
        const MediaReading file = Read(path);
        ASSERT_EQ(file.mTree != nullptr, file.mStatus == FileStatus::kFileStatus_Success) << variant;
        const WriteOutcome outcome = Edit(path, "edited");
        if (outcome.mStatus == FileStatus::kFileStatus_Success) {
            ASSERT_EQ(Value(Read(path), kXMP, "Label"), "edited") << variant;
        } else {
            ASSERT_EQ(support::ReadFile(path), bytes) << variant;
        }
        ASSERT_THAT(FolderNames(), ::testing::ElementsAre(GetParam())) << "a working copy was left behind";
    }
}

INSTANTIATE_TEST_SUITE_P(Every, HostileFiles, ::testing::ValuesIn(kFixtures), [](const auto& row) {
    std::string name = row.param;
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '.' || c == '-'; }, '_');
    return name;
});

}  // namespace
}  // namespace zephmetadata::media
