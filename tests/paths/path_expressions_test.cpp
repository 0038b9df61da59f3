#include "support/library_test.h"
#include "support/path_printing.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {
namespace {

class PathExpressions : public support::LibraryTest {};

TEST_F(PathExpressions, ResolveToWhatDescribesEachNode) {
    struct Row {
        const char* mExpression;
        const char* mType;  // null: no definition describes it
    };
    const Row rows[] = {
        {"dc:title", "langalt"},
        {"dc:subject[2]", "text"},
        {"dc:subject[last()]", "text"},
        {"dc:title[?xml:lang=\"de\"]", "text"},
        {"dc:title[1]/?xml:lang", nullptr},
        {"Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity", "text"},
        {"Iptc4xmpExt:LocationShown[12]/Iptc4xmpExt:City", "text"},
        {"xmpMM:History[1]/stEvt:when", "date"},
        {"xmpMM:DerivedFrom/stRef:nothing", nullptr},
        {"dc:nothing", nullptr},
        {"dc:date", "seq"},
        {"dc:text", nullptr},  // the name of a type is not a property
        {"photoshop:City", nullptr},
        {"xmpPMMemo:whatever", "text"},
    };
    for (const Row& row : rows) {
        const Path path = PathForExpression(row.mExpression);
        EXPECT_EQ(ExpressionForPath(path), row.mExpression);
        const auto entry = PathEntryDefinition(path);
        EXPECT_EQ(entry ? entry->mType : std::nullopt, row.mType ? std::optional<UTF8String>(row.mType) : std::nullopt)
            << row.mExpression;
    }
}

TEST_F(PathExpressions, AreEmptyPathsWhereTheyAreNone) {
    for (const char* bad : {"",
                            "title",
                            "dc:",
                            ":title",
                            "nope:title",
                            "dc:title[",
                            "dc:title[0]",
                            "dc:title[-1]",
                            "dc:title[029]",
                            "dc:title[1",
                            "dc:title[1]x",
                            "dc:title/",
                            "dc:title/x",
                            "dc:title/nope:x",
                            "dc:title//dc:x",
                            "dc:title[?xml:lang=\"a\"b\"]",
                            "dc:title[99999999999]",
                            "dc:a b",
                            "dc:title[1]]",
                            "dc:7x",
                            "xmpMM:History[1]/stEvt:7hen",
                            "dc:\xC3"}) {
        EXPECT_TRUE(SamePath(PathForExpression(bad), Path())) << bad;
    }
    EXPECT_TRUE(SamePath(PathForExpression(std::string("dc\0junk:title", 13)), Path()));
    EXPECT_EQ(NamespaceForPrefix(std::string("dc\0junk", 7)), "");
    EXPECT_TRUE(SamePath(PathForExpression("dc:a" + std::string(400, '/')), Path()));
    std::string deep = "dc:a";
    for (int i = 0; i < 5000; ++i) {
        deep += "[1]";
    }
    EXPECT_TRUE(SamePath(PathForExpression(deep), Path()));
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata
