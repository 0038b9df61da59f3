#include "support/library_test.h"
#include "support/path_printing.h"
#include "zephcore/files.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {
namespace {

using Paths = std::set<Path>;

constexpr const char* kEmpty = "<?xml version='1.0'?>\n<md.paths version='1.0'>\n</md.paths>\n";

/// All five members of each, for comparisons.
std::vector<std::string> Listed(const Paths& paths) {
    std::vector<std::string> lines;
    for (const Path& path : paths) {
        lines.push_back(::testing::PrintToString(path));
    }
    return lines;
}

std::string Written(const Paths& paths) {
    UTF8String document = "to be replaced";
    IncludedLeafPathsAsXMLString(paths, document);
    return document;
}

class IncludedLeafPaths : public support::LibraryTest {
protected:
    /// One element of a document, for a path of the dynamic schema xmpPMMemo but for what a row changes.
    static std::string Element(const std::string& internal, const std::string& description,
                               const std::string& namespaceURI = Memo()) {
        return "<metadata_path><internal>" + internal + "</internal><namespace>" + namespaceURI +
               "</namespace><description>" + description + "</description><entry_name>" + description +
               "</entry_name><parent_id>" + namespaceURI + "</parent_id></metadata_path>";
    }
    static std::string Memo() { return StandardSchemaNamespace(kStandardSchema_XMPPMMemo); }
    static Path MemoPath(const std::string& name, bool internal = false) {
        return {internal, Memo(), name, name, Memo()};
    }

    Paths mKept{MemoPath("kept")};
};

TEST_F(IncludedLeafPaths, HaveOneByteForm) {
    EXPECT_EQ(Written({}), kEmpty);
    const Path title = PathForExpression("dc:title");
    const std::string dc = title.mNamespace;
    EXPECT_EQ(Written({MemoPath("a<b>&\"'", true), title}),
              "<?xml version='1.0'?>\n<md.paths version='1.0'>\n"
              "<metadata_path><internal>true</internal>\n<namespace>" +
                  Memo() +
                  "</namespace>\n<description>a&lt;b&gt;&amp;&quot;&apos;</description>\n"
                  "<entry_name>a&lt;b&gt;&amp;&quot;&apos;</entry_name>\n<parent_id>" +
                  Memo() +
                  "</parent_id>\n</metadata_path>\n"
                  "<metadata_path><internal>false</internal>\n<namespace>" +
                  dc + "</namespace>\n<description>title</description>\n<entry_name>title</entry_name>\n<parent_id>" +
                  dc + "</parent_id>\n</metadata_path>\n</md.paths>\n");
}

TEST_F(IncludedLeafPaths, ComeBackForEverySchema) {
    Paths paths{MemoPath("a & <b> \t\n ]]> \xC3\xA9"), MemoPath("&amp;", true)};
    for (const sp<SchemaDefinition>& schema : CommonSchemaDefinitions()) {
        for (const Path& path : DescendantLeafPaths(schema)) {
            paths.insert(path);
        }
    }
    ASSERT_GT(paths.size(), 500U);
    Paths read = mKept;
    EXPECT_TRUE(ReadIncludedLeafPathsAsXMLString(read, Written(paths)));
    EXPECT_EQ(Listed(read), Listed(paths));
    const auto file = Folder().Write("paths.xml", Written(paths));
    read = mKept;
    EXPECT_TRUE(ReadIncludedLeafPathsAsXMLFile(read, zephcore::PathFromNative(file.string())));
    EXPECT_EQ(Listed(read), Listed(paths));
    EXPECT_TRUE(ReadIncludedLeafPathsAsXMLString(read, Written({})));
    EXPECT_TRUE(read.empty());
}

TEST_F(IncludedLeafPaths, AreReadFromAnyWellFormedDocument) {
    const Path a = MemoPath("a");
    struct Row {
        const char* mLabel;
        std::string mBody;
        Paths mPaths;
    };
    const Row rows[] = {
        {"text between elements", "\n x " + Element("false", "a") + " y\n", {a}},
        {"letter case of true", Element("TRUE", "a"), {a}},
        {"blank before true", Element(" true", "a"), {a}},
        {"internal", Element("true", "a"), {MemoPath("a", true)}},
        {"the first of equal paths", Element("true", "a") + Element("false", "a"), {MemoPath("a", true)}},
        {"comments, sections and references",
         Element("fal<!-- -->se", "<![CDATA[a]]><!-- -->&amp;&#65;"),
         {MemoPath("a&A")}},
        {"text after a foreign element in a field", Element("", "a<x>b</x>c"), {MemoPath("ab")}},
        {"a nested path begins anew",
         "<metadata_path><internal>true</internal>" + Element("", "a") + "</metadata_path>",
         {a}},
        {"elements of other letter case", "<Metadata_path><namespace>x</namespace></Metadata_path>", {}},
        {"fields of a namespace", "<p:metadata_path xmlns:p='urn:p'><namespace>x</namespace></p:metadata_path>", {}},
        {"a path without fields", "<metadata_path/>", {}},
        {"no such property", Element("false", "nothing", "http://purl.org/dc/elements/1.1/"), {}},
        {"no such namespace", Element("false", "a", "urn:none"), {}},
        {"a structure", Written({PathForExpression("xmpMM:DerivedFrom")}).substr(22), {}},
    };
    for (const Row& row : rows) {
        Paths paths = mKept;
        EXPECT_TRUE(ReadIncludedLeafPathsAsXMLString(paths, "<other version='9'>" + row.mBody + "</other>"))
            << row.mLabel;
        EXPECT_EQ(Listed(paths), Listed(row.mPaths)) << row.mLabel;
    }
    EXPECT_FALSE(HasErrors());
}

TEST_F(IncludedLeafPaths, StayAsTheyWereWhenADocumentIsBroken) {
    const std::string good = "<md.paths>" + Element("false", "a");
    const std::pair<const char*, std::string> rows[] = {
        {"empty", ""},
        {"no XML", "paths"},
        {"cut off", good},
        {"crossed elements", good + "<a></md.paths></a>"},
        {"no UTF-8", good + "\xFF</md.paths>"},
        {"something after the root", good + "</md.paths><x/>"},
        {"an entity", "<!DOCTYPE x [<!ENTITY e 'a'>]>" + good + "&e;</md.paths>"},
    };
    for (const auto& [label, document] : rows) {
        Paths paths = mKept;
        EXPECT_FALSE(ReadIncludedLeafPathsAsXMLString(paths, document)) << label;
        EXPECT_EQ(Listed(paths), Listed(mKept)) << label;
        const auto file = zephcore::PathFromNative(Folder().Write("broken.xml", document).string());
        EXPECT_FALSE(ReadIncludedLeafPathsAsXMLFile(paths, file)) << label;
        EXPECT_FALSE(ReadIncludedLeafPathsAsXMLFile(paths, file + u".none")) << label;
        EXPECT_EQ(Listed(paths), Listed(mKept)) << label;
    }
    EXPECT_FALSE(ReadIncludedLeafPathsAsXMLFile(mKept, zephcore::PathFromNative(Folder().Path().string())));
    EXPECT_EQ(mKept.size(), 1U);
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata
