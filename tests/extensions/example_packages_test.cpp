// The packages of examples/packages, installed as they are.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

#include "extensions/package_fixture.h"
#include "zephcore/localizer.h"

namespace zephmetadata {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using zephcore::UTF16to8;

const fs::path kExamples = ZEPHMETADATA_SOURCE_DIR "/examples/packages";

class ExamplePackages : public support::PackageTest {
protected:
    ExamplePackages() {
        fs::create_directories(UserFolder());
        fs::copy(kExamples, UserFolder(), fs::copy_options::recursive);
    }
    static void StartIn(const std::string& language) {
        Terminate();
        setenv("ZEPHCORE_LANGUAGE", language.c_str(), 1);
        Initialize();
        LoadAllViewDefinitions();
    }
};

/// The localisation keys in the schema and view documents of a package.
std::set<std::string> KeysOfDocuments(const fs::path& package) {
    std::set<std::string> keys;
    for (const char* folder : {"schema", "view"}) {
        for (const auto& entry : fs::directory_iterator(package / folder)) {
            const std::string text = support::ReadFile(entry.path());
            for (std::size_t at = 0; (at = text.find("\"$$$/", at)) != std::string::npos; ++at) {
                keys.insert(text.substr(at + 1, text.find('=', at) - at - 1));
            }
        }
    }
    return keys;
}

TEST_F(ExamplePackages, AreLoadedWithoutARecord) {
    for (const char* language : {"en_US", "de", "fr_FR"}) {
        StartIn(language);
        EXPECT_THAT(Records(), IsEmpty()) << language;
        EXPECT_THAT(support::Names(ExtensionPackages()), ElementsAre("IPTC Photo Metadata", "Tide Table"));
        for (const ExtensionPackage& package : ExtensionPackages()) {
            EXPECT_FALSE(package.schemas.empty());
            EXPECT_FALSE(package.views.empty());
        }
    }
}

TEST_F(ExamplePackages, AreTranslatedWhole) {
    struct Row {
        const char* mPackage;
        const char* mLanguage;
    };
    for (const Row& row : {Row{"tide-table", "de"}, Row{"tide-table", "fr_CA"}, Row{"iptc-photo-metadata", "de_DE"}}) {
        StartIn(row.mLanguage);
        const std::set<std::string> keys = KeysOfDocuments(kExamples / row.mPackage);
        EXPECT_GT(keys.size(), 10U);
        for (const std::string& key : keys) {
            EXPECT_FALSE(zephcore::Localizer::Get().Translate(zephcore::UTF8to16(key + "=")).empty())
                << row.mPackage << ' ' << row.mLanguage << ": " << key;
        }
    }
    StartIn("de_DE");
    EXPECT_EQ(PathEntryDefinition(PathForExpression("tides:height"))->mLabel, u"Wasserstand");
}

/// A row of the published list of properties and of the fields of structures.
struct IptcRow {
    std::string mLevel, mStructure, mId, mValue, mOccurrence, mOrder, mTopic;

    int Position() const { return std::stoi(mOrder.substr(mOrder.find_first_of("0123456789"))); }
    /// The expression of a value below @p parent, which is empty or ends with a slash.
    std::string Expression(const std::string& parent) const {
        return parent + mId + (mOccurrence == "multi" ? "[1]" : "");
    }
};

std::vector<IptcRow> IptcRows() {
    std::istringstream lines(support::ReadFile(ZEPHMETADATA_SOURCE_DIR "/tests/extensions/iptc_rows.tsv"));
    std::vector<IptcRow> rows;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        IptcRow row;
        std::istringstream columns(line);
        for (std::string* const column :
             {&row.mLevel, &row.mStructure, &row.mId, &row.mValue, &row.mOccurrence, &row.mOrder, &row.mTopic}) {
            std::getline(columns, *column, '\t');
        }
        rows.push_back(row);
    }
    return rows;
}

/// Whether each row below @p parent is defined, down to the fields of fields; @p depth bounds structures that hold
/// themselves.
void CheckFields(const std::vector<IptcRow>& rows, const std::string& structure, const std::string& parent, int depth,
                 std::set<std::string>& seen) {
    for (const IptcRow& row : rows) {
        if (row.mStructure != structure || depth == 0) {
            continue;
        }
        seen.insert(row.mStructure + " " + row.mId);
        const std::string expression = row.Expression(parent);
        EXPECT_TRUE(PathEntryDefinition(PathForExpression(parent + row.mId))) << expression;
        CheckFields(rows, row.mValue, expression + "/", depth - 1, seen);
    }
}

TEST_F(ExamplePackages, DefineWhatTheIptcListSays) {
    const std::vector<IptcRow> rows = IptcRows();
    ASSERT_GT(rows.size(), 140U);
    StartIn("en_US");
    std::set<std::string> seen;
    CheckFields(rows, "", "", 4, seen);
    EXPECT_EQ(seen.size(), rows.size()) << "every structure is the value of something";
}

/// The namespace and the name of a property.
using Property = std::pair<std::string, std::string>;

Property PropertyOf(const Path& path) {
    return {path.mNamespace, path.mPathDescription.substr(0, path.mPathDescription.find_first_of("/["))};
}

/// The properties that @p item and the items below it show, each once.
void AddShown(const ViewItem& item, std::vector<Property>& shown) {
    const Property property = PropertyOf(item.mPath);
    if (!property.second.empty() && std::find(shown.begin(), shown.end(), property) == shown.end()) {
        shown.push_back(property);
    }
    for (const sp<ViewItem>& child : item.mChildItems) {
        AddShown(*child, shown);
    }
}

TEST_F(ExamplePackages, ShowTheIptcListTopicByTopicInItsOrder) {
    StartIn("en_US");
    std::vector<IptcRow> rows = IptcRows();
    std::erase_if(rows, [](const IptcRow& row) { return row.mLevel != "property"; });
    std::stable_sort(rows.begin(), rows.end(),
                     [](const IptcRow& left, const IptcRow& right) { return left.Position() < right.Position(); });
    std::map<std::string, std::vector<Property>> expected;
    for (const IptcRow& row : rows) {
        expected[row.mTopic].push_back(PropertyOf(PathForExpression(row.mId)));
    }
    const sp<ViewDefinition> view = GetViewDefinitionForName("org.zephmetadata.view.iptc-photo-metadata");
    ASSERT_TRUE(view);
    const std::string topicKey = "$$$/iptc-photo/view/section/";
    std::map<std::string, std::vector<Property>> shown;
    for (const sp<ViewItem>& section : view->mItems) {
        if (section->mLabel.starts_with(topicKey)) {
            const std::string rest = section->mLabel.substr(topicKey.size());
            AddShown(*section, shown[rest.substr(0, rest.find('='))]);
        }
    }
    EXPECT_EQ(shown, expected);
}

}  // namespace
}  // namespace zephmetadata
