#include "media/containers/boxes/boxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "media/bytes.h"

namespace zephmetadata::media {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kUuid = "0123456789abcdef";

std::string LongBox(std::string_view type, std::string_view contents) {
    return NumberBytes(1, 4).append(type).append(NumberBytes(contents.size() + 16, 8)).append(contents);
}

std::string ToEnd(std::string_view type, std::string_view contents) {
    return NumberBytes(0, 4).append(type).append(contents);
}

/// "type(contents)" of each box, then the rest.
std::vector<std::string> Listed(const MemorySource& file, const BoxList& list) {
    std::vector<std::string> texts;
    for (const Box& box : list.mBoxes) {
        texts.push_back(box.mType + box.mUuid + "(" + ReadRange(file, box.Contents()).value_or("outside") + ")");
    }
    if (list.mRest.mSize > 0) {
        texts.push_back("rest " + std::to_string(list.mRest.mSize));
    }
    return texts;
}

struct Case {
    const char* mName;
    std::string mBytes;
    std::vector<std::string> mFound;
};

class BoxListTest : public testing::TestWithParam<Case> {};

TEST_P(BoxListTest, ReadsBoxesAndWhatIsLeft) {
    const MemorySource file(GetParam().mBytes);
    EXPECT_EQ(Listed(file, ReadBoxes(file, {0, file.Size()})), GetParam().mFound);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, BoxListTest,
    testing::Values(
        Case{"Nothing", "", {}},
        Case{"AllSizes",
             BoxBytes("aaaa", "1") + LongBox("bbbb", "22") + UuidBoxBytes(kUuid, "3") + ToEnd("dddd", "444"),
             {"aaaa(1)", "bbbb(22)", "uuid" + kUuid + "(3)", "dddd(444)"}},
        Case{"Empty",
             BoxBytes("aaaa", "") + LongBox("bbbb", "") + UuidBoxBytes(kUuid, "") + ToEnd("dddd", ""),
             {"aaaa()", "bbbb()", "uuid" + kUuid + "()", "dddd()"}},
        Case{"EndMark", BoxBytes("aaaa", "1") + std::string(4, '\0'), {"aaaa(1)", "rest 4"}},
        Case{"ZeroPadding", BoxBytes("aaaa", "1") + std::string(40, '\0'), {"aaaa(1)", "rest 40"}},
        Case{"CutOff", BoxBytes("aaaa", "1") + BoxBytes("bbbb", "1234").substr(0, 11), {"aaaa(1)", "rest 11"}},
        Case{"CutLongHeader", LongBox("aaaa", "").substr(0, 15), {"rest 15"}},
        Case{"SmallerThanHeader", NumberBytes(7, 4) + "aaaa", {"rest 8"}},
        Case{"LongSmallerThanHeader", NumberBytes(1, 4) + "aaaa" + NumberBytes(15, 8), {"rest 16"}},
        Case{"LongWithoutEnd", NumberBytes(1, 4) + "aaaa" + NumberBytes(~std::uint64_t{0}, 8), {"rest 16"}},
        Case{"UuidWithoutUuid", BoxBytes("uuid", "0123456789abcde") + BoxBytes("aaaa", ""), {"rest 31"}}),
    [](const auto& instance) { return std::string(instance.param.mName); });

std::optional<std::uint64_t> Nested(const ByteSource& file, const Box& box, const BoxList& /*parents*/) {
    return box.mType == "meta"   ? std::optional(MetaChildrenAt(file, box))
           : box.mType == "moov" ? std::optional<std::uint64_t>(0)
                                 : std::nullopt;
}

TEST(BoxTreeTest, NestsAndKnowsParents) {
    const std::string handler = BoxBytes("hdlr", std::string(4, '\0'));
    const MemorySource file(BoxBytes("moov", BoxBytes("meta", handler) + BoxBytes("mdat", "") + std::string(4, '\0')) +
                            FullBoxBytes("meta", {}, handler + BoxBytes("mdat", BoxBytes("none", "").substr(4))));
    const BoxList tree = ReadBoxTree(file, {0, file.Size()}, &Nested);
    std::vector<std::string> types;
    for (const Box& box : tree.mBoxes) {
        types.push_back(box.mParent == kNoBox ? box.mType : tree.mBoxes[box.mParent].mType + "/" + box.mType);
    }
    EXPECT_THAT(types, ElementsAre("moov", "moov/meta", "meta/hdlr", "moov/mdat", "meta", "meta/hdlr", "meta/mdat"));
    EXPECT_TRUE(tree.mIsWhole);
    EXPECT_EQ(tree.FindPath({"moov", "meta", "hdlr"}), &tree.mBoxes[2]);
    EXPECT_EQ(tree.FindPath({"meta", "hdlr"}), &tree.mBoxes[5]);
    EXPECT_EQ(tree.FindPath({"meta", "moov"}), nullptr);
    EXPECT_EQ(tree.Find("mdat", 4), &tree.mBoxes[6]);
}

TEST(BoxTreeTest, DepthAndCountAreBoundedAndCutsShow) {
    std::string deep;
    for (int i = 0; i < 1000; ++i) {
        deep = BoxBytes("moov", deep);
    }
    std::string many;
    for (std::size_t i = 0; i < kMaxBoxes + 10; ++i) {
        many += BoxBytes("free", "");
    }
    const std::vector<std::pair<std::string, std::size_t>> cases = {
        {deep, kMaxBoxDepth}, {BoxBytes("moov", many), kMaxBoxes}, {BoxBytes("moov", "rubbish of a box"), 1}};
    for (const auto& [bytes, count] : cases) {
        const MemorySource file(bytes);
        const BoxList tree = ReadBoxTree(file, {0, file.Size()}, &Nested);
        EXPECT_FALSE(tree.mIsWhole) << count;
        EXPECT_EQ(tree.mBoxes.size(), count);
    }
}

TEST(BoxWritingTest, SizesAreWrittenWhereTheyStand) {
    const MemorySource file(BoxBytes("aaaa", "1") + LongBox("bbbb", "2") + ToEnd("cccc", "3"));
    const BoxList list = ReadBoxes(file, {0, file.Size()});
    ASSERT_EQ(list.mBoxes.size(), 3U);
    Plan plan;
    for (const Box& box : list.mBoxes) {
        plan.Insert(box.mWhole.End(), "!", Touch::kBlock);
        EXPECT_TRUE(ResizeBox(plan, box, box.mWhole.mSize + 1));
    }
    EXPECT_FALSE(ResizeBox(plan, list.mBoxes[0], std::uint64_t{1} << 32U));
    const MemorySource grown(Carried(plan, file).value_or(""));
    EXPECT_THAT(Listed(grown, ReadBoxes(grown, {0, grown.Size()})), ElementsAre("aaaa(1!)", "bbbb(2!)", "cccc(3!)"));

    Plan appending;
    for (const Box& box : list.mBoxes) {
        MakeExplicit(appending, box);
    }
    appending.Insert(file.Size(), FreeBox(8), Touch::kSpace);
    const MemorySource longer(Carried(appending, file).value_or(""));
    EXPECT_THAT(Listed(longer, ReadBoxes(longer, {0, longer.Size()})),
                ElementsAre("aaaa(1)", "bbbb(2)", "cccc(3)", "free()"));
}

/// A header, and zeros for as long as nobody looks closely.
class HugeSource : public ByteSource {
public:
    explicit HugeSource(std::string head) : mHead(std::move(head)) {}
    std::uint64_t Size() const override { return std::uint64_t{5} << 32U; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        for (std::size_t i = 0; i < size; ++i) {
            static_cast<char*>(into)[i] =
                offset + i < mHead.size() ? mHead[static_cast<std::size_t>(offset + i)] : '\0';
        }
        return IsWithin({offset, size}, Size());
    }

private:
    std::string mHead;
};

TEST(BoxWritingTest, HugeBoxesGetTheLongSize) {
    EXPECT_EQ(BoxHeader("mdat", 0xFFFFFFF7U), "\xFF\xFF\xFF\xFFmdat");
    EXPECT_EQ(BoxHeader("mdat", 0xFFFFFFF8U), NumberBytes(1, 4) + "mdat" + NumberBytes(0x100000008U, 8));
    const HugeSource file(ToEnd("mdat", ""));
    const BoxList list = ReadBoxes(file, {0, file.Size()});
    ASSERT_EQ(list.mBoxes.size(), 1U);
    Plan plan;
    MakeExplicit(plan, list.mBoxes[0]);
    ASSERT_TRUE(plan.IsSound(file.Size()));
    std::string head;
    for (const Replacement& replacement : plan.Replacements()) {
        head += replacement.mBytes;
    }
    EXPECT_EQ(head, NumberBytes(1, 4) + NumberBytes(file.Size() + 8, 8));
    EXPECT_EQ(OffsetMap(plan).NewOffset(8), 16U);
}

}  // namespace
}  // namespace zephmetadata::media
