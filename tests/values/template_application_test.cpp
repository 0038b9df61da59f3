#include "support/values_test.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {
namespace {

constexpr std::array kModes{kTemplateImport_ClearAndReplace, kTemplateImport_Replace, kTemplateImport_Add};

struct ByMode {
    std::string mClearAndReplace;
    std::string mReplace;
    std::string mAdd;

    const std::string& Of(TemplateImportOptions mode) const {
        return mode == kTemplateImport_ClearAndReplace ? mClearAndReplace
               : mode == kTemplateImport_Replace       ? mReplace
                                                       : mAdd;
    }
};

std::string Title(const std::string& items) {
    std::string title = "<dc:title><rdf:Alt>";
    for (const char language : items) {
        title += std::string("<rdf:li xml:lang='") + (language == 'x' ? "x-default" : std::string(1, language) + "o") +
                 "'>" + items + "</rdf:li>";
    }
    return title + "</rdf:Alt></dc:title>";
}

std::string Subject(const std::string& items) {
    std::string subject = "<dc:subject><rdf:Bag>";
    for (const char item : items) {
        subject += std::string("<rdf:li>") + item + "</rdf:li>";
    }
    return subject + "</rdf:Bag></dc:subject>";
}

std::string Structure(const std::string& fields) {
    return "<xmpRights:own rdf:parseType='Resource'>" + fields + "</xmpRights:own>";
}

class Templates : public support::TreeTest {
protected:
    /// The tree of an RDF description body.
    XMPMetaPtr Made(const std::string& body) {
        Load(body);
        return std::exchange(mTree, nullptr);
    }
};

TEST_F(Templates, AreMergedByWholeProperties) {
    struct Row {
        const char* mLabel;
        std::string mDestination;
        std::string mTemplate;
        ByMode mResults;
    };
    const std::string source = "<dc:source>old</dc:source>";
    const std::string newSource = "<dc:source>new</dc:source>";
    const std::string format = "<dc:format>image/png</dc:format>";  // an internal property, as is the next
    const std::string tool = "<xmp:CreatorTool>pen</xmp:CreatorTool>";
    const std::string rating = "<xmp:Rating>3</xmp:Rating>";
    const std::string undefined = "<dc:undefined>u</dc:undefined>";
    const Row rows[] = {
        {"simple values", source + rating, newSource, {newSource, newSource + rating, source + rating}},
        {"what is missing", rating, source, {source, source + rating, source + rating}},
        {"an empty template",
         source + rating + format,
         "",
         {format, source + rating + format, source + rating + format}},
        {"an empty tree",
         "",
         source + Subject("ab") + format,
         {source + Subject("ab"), source + Subject("ab"), source + Subject("ab")}},
        {"an empty value of the template", source, "<dc:source/>", {"<dc:source/>", "<dc:source/>", source}},
        {"an empty value of the tree", "<dc:source/>", newSource, {newSource, newSource, "<dc:source/>"}},
        {"internal properties",
         format + source,
         "<dc:format>image/jpeg</dc:format>" + tool,
         {format, format + source, format + source}},
        {"properties without a definition",
         undefined + source,
         "<dc:other>o</dc:other>",
         {"<dc:other>o</dc:other>", undefined + source + "<dc:other>o</dc:other>",
          undefined + source + "<dc:other>o</dc:other>"}},
        {"arrays", Subject("abc"), Subject("cd"), {Subject("cd"), Subject("cd"), Subject("abc")}},
        {"an emptied array", Subject("abc"), Subject(""), {Subject(""), Subject(""), Subject("abc")}},
        {"language alternatives", Title("xd"), Title("xf"), {Title("xf"), Title("xf"), Title("xd")}},
        {"structures",
         Structure("<dc:a>1</dc:a><dc:b>1</dc:b>"),
         Structure("<dc:b>2</dc:b><dc:c>2</dc:c>"),
         {Structure("<dc:b>2</dc:b><dc:c>2</dc:c>"), Structure("<dc:b>2</dc:b><dc:c>2</dc:c>"),
          Structure("<dc:a>1</dc:a><dc:b>1</dc:b>")}},
        {"a property of another kind",
         "<dc:subject>text</dc:subject>",
         Subject("a"),
         {Subject("a"), Subject("a"), "<dc:subject>text</dc:subject>"}},
        {"qualifiers",
         "<dc:source xml:lang='de'>q</dc:source>",
         source,
         {source, source, "<dc:source xml:lang='de'>q</dc:source>"}},
    };
    for (const Row& row : rows) {
        for (const TemplateImportOptions mode : kModes) {
            const XMPMetaPtr destination = Made(row.mDestination);
            const XMPMetaPtr applied = Made(row.mTemplate);
            EXPECT_TRUE(ApplyTemplate(destination.get(), applied.get(), mode)) << row.mLabel;
            EXPECT_TRUE(toolkit::TreesEqual(destination.get(), Made(row.mResults.Of(mode)).get()))
                << row.mLabel << ", mode " << mode << ": " << SerializeXMPMeta(destination.get());
            EXPECT_TRUE(toolkit::TreesEqual(applied.get(), Made(row.mTemplate).get())) << row.mLabel;
        }
    }
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(Templates, DoNothingInAnUnknownMode) {
    const XMPMetaPtr destination = Made("<dc:source>old</dc:source>");
    const XMPMetaPtr before = toolkit::CloneTree(destination.get());
    const XMPMetaPtr source = Made("<dc:source>new</dc:source><xmp:Rating>3</xmp:Rating>");
    for (const int mode : {-1, 3, 8, 0x12}) {
        EXPECT_TRUE(ApplyTemplate(destination.get(), source.get(), static_cast<TemplateImportOptions>(mode))) << mode;
        EXPECT_TRUE(toolkit::TreesEqual(destination.get(), before.get())) << mode;
    }
    for (const TemplateImportOptions mode : kModes) {
        EXPECT_TRUE(ApplyTemplate(destination.get(), destination.get(), mode)) << "a tree as its own template";
        EXPECT_TRUE(toolkit::TreesEqual(destination.get(), before.get())) << mode;
    }
}

TEST_F(Templates, SettleMixedProperties) {
    // Marked are: a value that is there, a value that is not, a field of a structure, an internal value.
    struct Row {
        const char* mLabel;
        std::string mTemplate;
        ByMode mMixed;  // what is mixed after each mode
        ByMode mSource;
    };
    const std::string all = "dc:source dc:rights xmpRights:own/dc:f dc:format ";
    const Row rows[] = {
        {"empty", "", {"dc:format ", all, all}, {"<none>", "old", "old"}},
        {"a value for each",
         "<dc:source>new</dc:source><dc:rights>r</dc:rights><dc:format>f</dc:format>" + Structure("<dc:f>1</dc:f>"),
         {"dc:format ", "dc:format ", all},
         {"new", "new", "old"}},
        {"a structure without the field",
         Structure("<dc:g>1</dc:g>"),
         {"dc:format ", "dc:source dc:rights dc:format ", all},
         {"<none>", "old", "old"}},
    };
    for (const Row& row : rows) {
        for (const TemplateImportOptions mode : kModes) {
            const XMPMetaPtr source = Made(row.mTemplate);
            Load("<dc:source>old</dc:source><dc:format>f</dc:format>" + Structure("<dc:f>1</dc:f>"));
            const std::string expressions[] = {"dc:source", "dc:rights", "xmpRights:own/dc:f", "dc:format"};
            for (const std::string& expression : expressions) {
                toolkit::MarkMixed(Tree(), At(expression).mNamespace, At(expression).mPathDescription);
            }
            EXPECT_TRUE(ApplyTemplate(Tree(), source.get(), mode)) << row.mLabel;
            std::string mixed;
            for (const std::string& expression : expressions) {
                const Path path = At(expression);
                mixed += toolkit::IsMixed(Tree(), path.mNamespace, path.mPathDescription) ? expression + " " : "";
            }
            EXPECT_EQ(mixed, row.mMixed.Of(mode)) << row.mLabel << ", mode " << mode;
            toolkit::ClearMixed(Tree(), At("dc:source").mNamespace, "source");
            EXPECT_EQ(Raw("dc:source"), row.mSource.Of(mode)) << row.mLabel << ", mode " << mode;
        }
    }
}

TEST_F(Templates, ThatAreMixedLeaveThePropertyAsItIs) {
    for (const TemplateImportOptions mode : kModes) {
        const std::string body = "<dc:source>old</dc:source>" + Structure("<dc:f>1</dc:f>");
        const XMPMetaPtr destination = Made(body);
        Load("<dc:source>new</dc:source><dc:rights>r</dc:rights>" + Structure("<dc:f>2</dc:f><dc:g>2</dc:g>"));
        for (const char* expression : {"dc:source", "dc:rights", "dc:coverage", "xmpRights:own/dc:f"}) {
            toolkit::MarkMixed(Tree(), At(expression).mNamespace, At(expression).mPathDescription);
        }
        EXPECT_TRUE(ApplyTemplate(destination.get(), Tree(), mode));
        EXPECT_TRUE(toolkit::TreesEqual(destination.get(), Made(body).get())) << mode;
    }
}

TEST_F(Templates, AreRefusedWithARecordWhenTheToolkitFails) {
    const XMPMetaPtr tree = Made("<dc:source>old</dc:source>");
    for (const TemplateImportOptions mode : kModes) {
        EXPECT_FALSE(ApplyTemplate(nullptr, tree.get(), mode));
        EXPECT_FALSE(ApplyTemplate(tree.get(), nullptr, mode));
    }
    EXPECT_FALSE(HasErrors());
    toolkit::Stop();
    EXPECT_FALSE(ApplyTemplate(tree.get(), tree.get(), kTemplateImport_Add));
    toolkit::Start();
    EXPECT_EQ(
        Records(),
        std::vector<Record>({{ErrorKind::ErrorWritingXMP, "Error writing XMP data: template cannot be applied.", ""}}));
}

}  // namespace
}  // namespace zephmetadata
