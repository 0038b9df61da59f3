#include <set>

#include "support/library_test.h"
#include "support/path_printing.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {
namespace {

constexpr const char* kDC = "http://purl.org/dc/elements/1.1/";
constexpr const char* kCore = "http://iptc.org/std/Iptc4xmpCore/1.0/xmlns/";
constexpr const char* kExt = "http://iptc.org/std/Iptc4xmpExt/2008-02-29/";
constexpr const char* kMM = "http://ns.adobe.com/xap/1.0/mm/";

class Paths : public support::LibraryTest {
protected:
    static sp<FieldDefinition> Field(const char* type, const std::string& name) {
        for (const auto& field : TypeIdDefinition(type)->mFields) {
            if (field->mName == name) {
                return field;
            }
        }
        return nullptr;
    }
    static Path Property(const char* namespaceURI, const char* name) {
        return PathForSchemaNameAndPropertyName(UTF8String(namespaceURI), UTF8String(name));
    }
};

TEST_F(Paths, AreBuiltFromDefinitions) {
    const Path contact = Property(kCore, "CreatorContactInfo");
    const Path shown = Property(kExt, "LocationShown");
    const Path history = Property(kMM, "History");
    const Path title = Property(kDC, "title");
    struct Row {
        const char* mCase;
        Path mPath;
        Path mExpected;
    };
    const Row rows[] = {
        {"property", title, {false, kDC, "title", "title", kDC}},
        {"internal property", history, {true, kMM, "History", "History", kMM}},
        {"UTF-16", PathForSchemaNameAndPropertyName(u"http://purl.org/dc/elements/1.1/", u"title"), title},
        {"field of a structure",
         CreatePathFromStructureField(contact, Field("CreatorContactInfo", "CiAdrCity")),
         {false, kCore, "CreatorContactInfo/Iptc4xmpCore:CiAdrCity", "CiAdrCity", "CreatorContactInfo"}},
        {"item of an external bag of structures",
         CreatePathFromArrayItem(shown, 2),
         {false, kExt, "LocationShown[2]", "LocationDetails", "bag"}},
        {"field of such an item",
         CreatePathFromStructureField(CreatePathFromArrayItem(shown, 2), Field("LocationDetails", "City")),
         {false, kExt, "LocationShown[2]/Iptc4xmpExt:City", "City", "LocationDetails"}},
        {"item of an internal seq of structures",
         CreatePathFromArrayItem(history, -1),
         {true, kMM, "History[last()]", "resourceevent", "resourceevent"}},
        {"item of an alternative", CreatePathFromArrayItem(title, 1), {false, kDC, "title[1]", "text", "alt"}},
        {"field in every item",
         CreatePathFromArrayedStructureField(history, Field("resourceevent", "action")),
         {true, kMM, "History/stEvt:action", "action", "resourceevent"}},
        {"element type",
         CreatePathFromElementType(history, PathEntryDefinition(history), TypeIdDefinition("resourceevent")),
         {true, kMM, "History", "resourceevent", "resourceevent"}},
        {"qualifier",
         CreatePathFromQualifier(title,
                                 [] {
                                     const auto qualifier = std::make_shared<QualifierDefinition>();
                                     qualifier->mName = "lang";
                                     qualifier->mNamespace = "http://www.w3.org/XML/1998/namespace";
                                     return qualifier;
                                 }()),
         {false, kDC, "title/?xml:lang", "lang", "langalt"}},
    };
    for (const Row& row : rows) {
        EXPECT_TRUE(SamePath(row.mPath, row.mExpected)) << row.mCase << ": " << ::testing::PrintToString(row.mPath)
                                                        << " instead of " << ::testing::PrintToString(row.mExpected);
    }
}

TEST_F(Paths, AreEmptyWhereDefinitionsDoNotAllowThem) {
    const Path title = Property(kDC, "title");
    const auto field = Field("LocationDetails", "City");
    const auto unregistered = std::make_shared<FieldDefinition>();
    unregistered->mName = "x";
    unregistered->mNamespace = "http://nobody/";
    const Path paths[] = {
        Property("http://nobody/", "title"),
        Property(kDC, "nothing"),
        CreatePathFromSchemaProperty(nullptr, nullptr),
        CreatePathFromStructureField(Path(), field),
        CreatePathFromStructureField(title, nullptr),
        CreatePathFromStructureField(title, unregistered),
        CreatePathFromArrayedStructureField(Property(kMM, "History"), nullptr),
        CreatePathFromArrayedStructureField(title, field),
        CreatePathFromArrayedStructureField(Path(), field),
        CreatePathFromArrayItem(Property(kDC, "source"), 1),
        CreatePathFromQualifier(title, nullptr),
        CreatePathFromElementType(title, PathEntryDefinition(title), nullptr),
        CreatePathFromElementType(title, nullptr, TypeIdDefinition("resourceevent")),
    };
    for (const Path& path : paths) {
        EXPECT_TRUE(SamePath(path, Path())) << ::testing::PrintToString(path);
    }
    EXPECT_FALSE(HasErrors());
    EXPECT_THROW(CreatePathFromArrayItem(title, 0), XMPError);
    EXPECT_THROW(CreatePathFromArrayItem(title, -2), XMPError);
    EXPECT_THROW(CreatePathFromArrayedStructureField(Property(kExt, "LocationShown"), unregistered), XMPError);
}

TEST_F(Paths, AreOrderedByNamespaceAndExpression) {
    std::set<Path> paths = {{false, "b", "a", "", ""},
                            {false, "a", "z", "", ""},
                            {false, "a", "\xC3\xA9", "", ""},
                            {false, "a", "zz", "", ""},
                            {true, "a", "z", "other", "other"}};
    std::string order;
    for (const Path& path : paths) {
        order += path.mNamespace + path.mPathDescription + " ";
    }
    EXPECT_EQ(order, "az azz a\xC3\xA9 ba ");
    EXPECT_FALSE(paths.begin()->mInternal) << "the path that is there stays";
}

TEST_F(Paths, ResolveToDefinitions) {
    const Path history = Property(kMM, "History");
    EXPECT_EQ(PathEntryDefinition(Path()), nullptr);
    EXPECT_EQ(PathEntryDefinition(history)->mName, "History");
    EXPECT_EQ(TypeEntryDefinition(history)->mName, "resourceevent");
    EXPECT_EQ(TypeEntryDefinition(Property(kExt, "LocationShown"))->mName, "bag");
    EXPECT_EQ(PathEntryDefinition(CreatePathFromArrayItem(history, 1)), TypeIdDefinition("resourceevent"));
    EXPECT_EQ(PrimitiveTypeOfPath(Property(kDC, "title")), kPrimitiveType_Alt);
    EXPECT_EQ(PrimitiveTypeOfPath(Property(kCore, "CreatorContactInfo")), std::nullopt);
    EXPECT_TRUE(IsPathAnArray(history, false));
    EXPECT_FALSE(IsPathAnArray(Property(kDC, "subject"), false));
    EXPECT_TRUE(IsPathAnArray(Property(kDC, "subject"), true));
    EXPECT_FALSE(IsPathAnArray(Property(kDC, "title"), true));
}

TEST_F(Paths, OfDynamicSchemasAreFreshTextProperties) {
    const UTF8String dynamic = StandardSchemaNamespace(kStandardSchema_XMPPMMemo);
    const Path path{false, dynamic, "anything", "anything", dynamic};
    const auto entry = PathEntryDefinition(path);
    EXPECT_EQ(entry->mType, kTypeText);
    EXPECT_EQ(entry->mLabel, u"anything");
    EXPECT_EQ(entry->mLabelZString, u"anything");
    EXPECT_NE(PathEntryDefinition(path), entry);
}

}  // namespace
}  // namespace zephmetadata
