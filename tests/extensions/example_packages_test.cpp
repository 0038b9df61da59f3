// The packages of examples/packages, installed as they are.
#include <algorithm>
#include <cstdlib>
#include <set>

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
        EXPECT_THAT(support::Names(ExtensionPackages()), ElementsAre("Tide Table"));
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
    for (const Row& row : {Row{"tide-table", "de"}, Row{"tide-table", "fr_CA"}}) {
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

}  // namespace
}  // namespace zephmetadata
