#include "media/plan.h"

#include <gtest/gtest.h>

#include <vector>

namespace zephmetadata::media {
namespace {

struct Case {
    const char* mName;
    std::vector<Replacement> mReplacements;
    const char* mResult;                                    // of "0123456789"
    std::vector<std::optional<std::uint64_t>> mNewOffsets;  // of bytes 0, 3 and 9
};

class PlanTest : public testing::TestWithParam<Case> {};

TEST_P(PlanTest, ReplacesWhatItSaysAndKeepsTheRest) {
    Plan plan;
    for (const Replacement& replacement : GetParam().mReplacements) {
        plan.Replace(replacement.mRange, replacement.mBytes, replacement.mTouch);
    }
    const MemorySource source("0123456789");
    ASSERT_TRUE(plan.IsSound(source.Size()));
    EXPECT_EQ(Carried(plan, source), GetParam().mResult);
    EXPECT_EQ(plan.NewSize(source.Size()), std::string(GetParam().mResult).size());
    const OffsetMap map(plan);
    const std::vector<std::optional<std::uint64_t>> found = {map.NewOffset(0), map.NewOffset(3), map.NewOffset(9)};
    EXPECT_EQ(found, GetParam().mNewOffsets);
}

INSTANTIATE_TEST_SUITE_P(
    Plans, PlanTest,
    testing::Values(Case{"Nothing", {}, "0123456789", {0, 3, 9}},
                    Case{"Insertions", {{{3, 0}, "ab"}, {{3, 0}, "c"}, {{10, 0}, "z"}}, "012abc3456789z", {0, 6, 12}},
                    Case{"InsertionBeforeReplacement", {{{3, 1}, "X"}, {{3, 0}, "ab"}}, "012abX456789", {0, {}, 11}},
                    Case{"OutOfOrder", {{{8, 2}, {}}, {{0, 2}, "a"}}, "a234567", {{}, 2, {}}},
                    Case{"Neighbours", {{{2, 1}, "a"}, {{3, 1}, "b"}}, "01ab456789", {0, {}, 9}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

TEST(PlanTest, OverlapsAndRangesOutsideAreNotSound) {
    const std::vector<std::vector<Range>> unsound = {{{2, 4}, {5, 1}}, {{9, 2}}, {{11, 0}}, {{1, ~std::uint64_t{0}}}};
    const MemorySource source("0123456789");
    for (const std::vector<Range>& ranges : unsound) {
        Plan plan;
        for (const Range& range : ranges) {
            plan.Replace(range, "x", Touch::kBlock);
        }
        EXPECT_FALSE(plan.IsSound(source.Size())) << ranges.front().mOffset;
        EXPECT_EQ(Carried(plan, source), std::nullopt) << ranges.front().mOffset;
    }
}

TEST(ByteSourceTest, PagesAndWindowsAnswerLikeTheWhole) {
    std::string bytes;
    for (int i = 0; i < 50000; ++i) {
        bytes += static_cast<char>(i * 7);
    }
    const auto whole = std::make_shared<MemorySource>(bytes);
    const PagedSource paged(*whole);
    const WindowSource window(whole, {100, 1000000});
    EXPECT_EQ(window.Size(), bytes.size() - 100);
    for (const Range& range :
         std::vector<Range>{{0, 4}, {8190, 10}, {40000, 9000}, {5, 0}, {49990, 10}, {8192, 8192}}) {
        EXPECT_EQ(ReadRange(paged, range), bytes.substr(range.mOffset, range.mSize)) << range.mOffset;
    }
    EXPECT_EQ(ReadRange(window, {0, 3}), bytes.substr(100, 3));
    EXPECT_EQ(ReadRange(window, {49899, 2}), std::nullopt);
    EXPECT_EQ(ReadRange(paged, {49999, 2}), std::nullopt);
    EXPECT_EQ(ReadRange(paged, {~std::uint64_t{0}, 2}), std::nullopt);
}

}  // namespace
}  // namespace zephmetadata::media
