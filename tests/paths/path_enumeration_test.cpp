#include "support/library_test.h"
#include "support/path_printing.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> Expressions(const PolyRange<Path>& range) {
    std::vector<std::string> expressions;
    for (const Path& path : range) {
        expressions.push_back(path.mPathDescription +
                              (path.mEntryName == path.mPathDescription ? "" : ":" + path.mEntryName));
    }
    return expressions;
}

class PathEnumeration : public support::LibraryTest {
protected:
    PathEnumeration() {
        ParseBufferAndRegisterDefinitions(
            "<xmp_definitions>"
            "<xmp_type name='inner'><xmp_field namespace='n:e' prefix='e' name='i1' type='text'/>"
            "<xmp_field namespace='n:e' prefix='e' name='i2' type='text'/></xmp_type>"
            "<xmp_type name='outer'><xmp_field namespace='n:e' prefix='e' name='o1' type='inner'/>"
            "<xmp_field namespace='n:e' prefix='e' name='o2' type='langalt'/></xmp_type>"
            "<xmp_type name='loop'><xmp_field namespace='n:e' prefix='e' name='again' type='loop'/>"
            "<xmp_field namespace='n:e' prefix='e' name='leaf' type='text'/></xmp_type>"
            "<xmp_schema namespace='n:e' prefix='e'>"
            "<xmp_property name='plain' type='text'/>"
            "<xmp_property name='structure' type='outer'/>"
            "<xmp_property name='bag' type='bag' element_type='inner'/>"
            "<xmp_property name='internalBag' type='bag' element_type='text' category='internal'/>"
            "<xmp_property name='internalSeq' type='seq' element_type='inner' category='internal'/>"
            "</xmp_schema>"
            "<xmp_schema namespace='n:l' prefix='l'><xmp_property name='p' type='loop'/></xmp_schema>"
            "</xmp_definitions>",
            u"", false);
    }
};

TEST_F(PathEnumeration, ListsChildrenInTheOrderOfTheDefinitions) {
    EXPECT_THAT(Expressions(ChildPaths(NamespaceDefinition("n:e"))),
                ElementsAre("plain", "structure", "bag", "internalBag", "internalSeq"));
    struct Row {
        const char* mProperty;
        std::vector<std::string> mChildren;
    };
    const Row rows[] = {
        {"plain", {}},
        {"structure", {"structure/e:o1:o1", "structure/e:o2:o2"}},
        {"bag", {}},
        {"internalBag", {"internalBag:text"}},
        {"internalSeq", {"internalSeq/e:i1:i1", "internalSeq/e:i2:i2"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Expressions(ChildPaths(PathForSchemaNameAndPropertyName("n:e", UTF8String(row.mProperty)))),
                  row.mChildren)
            << row.mProperty;
    }
    EXPECT_THAT(Expressions(ChildPaths(Path())), IsEmpty());
    EXPECT_THAT(Expressions(ChildPaths(sp<SchemaDefinition>())), IsEmpty());
}

TEST_F(PathEnumeration, WalksDepthFirstToTheLeaves) {
    EXPECT_THAT(Expressions(DescendantLeafPaths(NamespaceDefinition("n:e"))),
                ElementsAre("plain", "structure/e:o1/e:i1:i1", "structure/e:o1/e:i2:i2", "structure/e:o2:o2", "bag",
                            "internalBag:text", "internalSeq/e:i1:i1", "internalSeq/e:i2:i2"));
    EXPECT_THAT(Expressions(DescendantLeafPaths(PathForSchemaNameAndPropertyName("n:e", UTF8String("plain")))),
                IsEmpty());
}

TEST_F(PathEnumeration, EndsForAStructureThatContainsItself) {
    EXPECT_THAT(Expressions(DescendantLeafPaths(NamespaceDefinition("n:l"))), ElementsAre("p/e:leaf:leaf"));
}

TEST_F(PathEnumeration, EndsForStructuresThatReferToEachOther) {
    constexpr int kTypes = 9;
    std::string types;
    for (int type = 0; type < kTypes; ++type) {
        types += "<xmp_type name='m" + std::to_string(type) + "'>";
        for (int field = 0; field < kTypes; ++field) {
            const std::string number = std::to_string(field);
            types += "<xmp_field namespace='n:e' prefix='e' name='f" + number + "' type='m" + number + "'/>";
        }
        types += "<xmp_field namespace='n:e' prefix='e' name='leaf' type='text'/></xmp_type>";
    }
    ParseBufferAndRegisterDefinitions("<xmp_definitions>" + types +
                                          "<xmp_schema namespace='n:m' prefix='m'><xmp_property name='p' type='m0'/>"
                                          "<xmp_property name='q' type='text'/></xmp_schema></xmp_definitions>",
                                      u"", false);
    const auto leaves = Expressions(DescendantLeafPaths(NamespaceDefinition("n:m")));
    EXPECT_LT(leaves.size(), 20000U) << "of about 100,000";
    EXPECT_EQ(leaves.back(), "q");
}

TEST_F(PathEnumeration, ThrowsNothingForANamespaceThatIsNotRegistered) {
    ParseBufferAndRegisterDefinitions(
        "<xmp_definitions><xmp_schema namespace='n:x'>"
        "<xmp_property name='p' type='text'/><xmp_property name='s' type='bag' element_type='inner' "
        "category='internal'/></xmp_schema></xmp_definitions>",
        u"", false);
    EXPECT_THAT(Expressions(DescendantLeafPaths(NamespaceDefinition("n:x"))), ElementsAre("p"));
}

TEST_F(PathEnumeration, StopsAtAChildThatCannotBeBuilt) {
    TypeIdDefinition("outer")->mFields[1]->mNamespace = "n:unregistered";
    EXPECT_THAT(Expressions(DescendantLeafPaths(NamespaceDefinition("n:e"))),
                ElementsAre("plain", "structure/e:o1/e:i1:i1", "structure/e:o1/e:i2:i2"));
}

}  // namespace
}  // namespace zephmetadata
