#include "support/values_test.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;

class ArrayValues : public support::TreeTest {};

TEST_F(ArrayValues, GrowAtTheGivenPlace) {
    const Path path = At("dc:creator");
    EXPECT_TRUE(AddArrayItem(Tree(), path, 7)) << "the index does not matter in a missing array";
    EXPECT_THAT(GetItems(Tree(), path), ElementsAre(""));
    SetValue(Tree(), At("dc:creator[1]"), "a");
    struct Row {
        int mIndex;
        std::vector<std::string> mItems;
    };
    const Row rows[] = {{1, {"a", ""}}, {0, {"", "a", ""}}, {-1, {"", "a", "", ""}}};
    for (const Row& row : rows) {
        EXPECT_TRUE(AddArrayItem(Tree(), path, row.mIndex)) << row.mIndex;
        EXPECT_EQ(GetItems(Tree(), path), row.mItems) << row.mIndex;
    }
    EXPECT_FALSE(HasErrors());
    EXPECT_FALSE(AddArrayItem(Tree(), path, 9));
    EXPECT_THAT(Records(), ElementsAre(Invalid(ErrorKind::ErrorWritingXMP, "dc:creator")));
    EXPECT_EQ(CountArrayItems(Tree(), path), 4);
}

TEST_F(ArrayValues, AreMadeInTheFormOfTheirDefinition) {
    EXPECT_TRUE(AddArrayItem(Tree(), At("dc:creator"), 0));
    EXPECT_TRUE(AddArrayItem(Tree(), At("dc:subject"), 0));
    EXPECT_TRUE(AddArrayItem(Tree(), At("Iptc4xmpExt:LocationShown"), 0));
    std::vector<std::pair<std::string, NodeKind>> kinds;
    for (const XMPNode& node : XMPNodes(Tree())) {
        kinds.emplace_back(node.mPath, node.mKind);
    }
    EXPECT_THAT(kinds, ElementsAre(std::pair("dc:creator", NodeKind::kNodeKind_Seq),
                                   std::pair("dc:creator[1]", NodeKind::kNodeKind_Simple),
                                   std::pair("dc:subject", NodeKind::kNodeKind_Bag),
                                   std::pair("dc:subject[1]", NodeKind::kNodeKind_Simple),
                                   std::pair("Iptc4xmpExt:LocationShown", NodeKind::kNodeKind_Bag),
                                   std::pair("Iptc4xmpExt:LocationShown[1]", NodeKind::kNodeKind_Struct)));
}

TEST_F(ArrayValues, ShrinkAndVanish) {
    SetValue(Tree(), At("dc:creator"), "a; b");
    EXPECT_FALSE(DeleteArrayItem(Tree(), At("dc:creator"), 2));
    EXPECT_FALSE(DeleteArrayItem(Tree(), At("dc:creator"), -1));
    EXPECT_EQ(Records(), std::vector<Record>(2, Invalid(ErrorKind::ErrorWritingXMP, "dc:creator")));
    EXPECT_TRUE(DeleteArrayItem(Tree(), At("dc:creator"), 0));
    EXPECT_EQ(Text("dc:creator"), "b");
    EXPECT_TRUE(DeleteArrayItem(Tree(), At("dc:creator"), 0));
    EXPECT_FALSE(HasValue(Tree(), At("dc:creator")));
}

TEST_F(ArrayValues, AreBagsAndSeqsOnly) {
    SetValue(Tree(), At("dc:title"), "t");
    for (const char* expression : {"dc:title", "dc:source", "dc:nothing"}) {
        EXPECT_FALSE(AddArrayItem(Tree(), At(expression), 0)) << expression;
        EXPECT_FALSE(DeleteArrayItem(Tree(), At(expression), 0)) << expression;
        EXPECT_EQ(CountArrayItems(Tree(), At(expression)), 0) << expression;
    }
    EXPECT_EQ(CountArrayItems(nullptr, At("dc:creator")), 0);
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata
