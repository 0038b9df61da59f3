#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "support/library_test.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/views.h"

namespace zephmetadata {
namespace {

using zephcore::UTF16to8;
using zephcore::UTF8to16;

/// Default texts by their keys.
using Texts = std::map<std::string, std::string>;

void AddText(const std::string& zString, Texts& texts) {
    if (zString.starts_with("$$$/")) {
        const std::size_t end = zString.find('=');
        texts[zString.substr(0, end)] = zString.substr(end + 1);
    }
}

/// The texts of all built-in documents: those that every language has to give, and those that it may give.
struct DocumentTexts {
    Texts mRequired;
    Texts mOptional;

    void Add(const LocalizedTexts& texts) {
        AddText(UTF16to8(texts.mLabelZString), mRequired);
        AddText(UTF16to8(texts.mDescriptionZString), mOptional);
    }

    void AddEntry(const EntryDefinition& entry) {
        Add(entry);
        for (const auto& choice : entry.mChoices) {
            AddText(UTF16to8(choice->mLabelZString), mRequired);
        }
        for (const auto& qualifier : entry.mQualifiers) {
            AddEntry(*qualifier);
        }
    }

    /// A view is all text for people: descriptions, hints, formats and messages are translated with it.
    void AddItem(const ViewItem& item) {
        AddText(item.mLabel, mRequired);
        AddText(item.mDescription, mRequired);
        for (const auto& [name, value] : item.mParameters) {
            AddText(value, mRequired);
        }
        for (const auto& choice : item.mChoices) {
            AddText(UTF16to8(choice->mLabelZString), mRequired);
        }
        for (const auto& child : item.mChildItems) {
            AddItem(*child);
        }
    }
};

void AddDefinitions(const Definitions& definitions, DocumentTexts& texts) {
    for (const auto& schema : definitions.first) {
        texts.Add(*schema);
        std::ranges::for_each(schema->mProperties, [&](const auto& property) { texts.AddEntry(*property); });
    }
    for (const auto& type : definitions.second) {
        texts.AddEntry(*type);
        std::ranges::for_each(type->mFields, [&](const auto& field) { texts.AddEntry(*field); });
    }
}

std::string Resource(const std::string& name, const std::string& type) {
    std::string_view bytes;
    EXPECT_TRUE(zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, type, bytes)) << name << '.' << type;
    return std::string(bytes);
}

/// With the views loaded.
DocumentTexts TextsOfDocuments() {
    DocumentTexts texts;
    for (const UTF8String& name : zephcore::GetResourceNames(zephcore::Module::kOwn, "xml")) {
        if (name.ends_with("_definitions")) {
            AddDefinitions(ParseBufferForDefinitions(Resource(name, "xml"), UTF8to16(name)), texts);
        }
    }
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        AddText(view->mLabel, texts.mRequired);
        AddText(view->mDescription, texts.mRequired);
        std::ranges::for_each(view->mItems, [&](const auto& item) { texts.AddItem(*item); });
    }
    // Some items of views have the description of a definition.
    std::ranges::for_each(texts.mOptional, [&](const auto& text) { texts.mRequired.erase(text.first); });
    return texts;
}

/// The keys that the library and the command line have in their code.
Texts TextsOfCode() {
    Texts texts;
    for (const char* const folder : {"src", "tools"}) {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::filesystem::path(ZEPHMETADATA_SOURCE_DIR) / folder)) {
            if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") {
                continue;
            }
            static const std::regex betweenLiterals("\"\\s+u?\"");
            const std::string code = std::regex_replace(support::ReadFile(entry.path()), betweenLiterals, "");
            for (std::size_t at = 0; (at = code.find("\"$$$/", at)) != std::string::npos; ++at) {
                AddText(code.substr(at + 1, code.find('"', at + 1) - at - 1), texts);
            }
        }
    }
    return texts;
}

/// Texts by their keys in the order of a translations file.
std::vector<std::pair<std::string, std::string>> Entries(const std::string& file) {
    std::vector<std::pair<std::string, std::string>> entries;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() != '#') {
            const std::size_t end = std::min(line.find('='), line.size());
            entries.emplace_back(line.substr(0, end), line.substr(std::min(end + 1, line.size())));
        }
    }
    return entries;
}

/// The digits of @0 to @9 in a text.
std::multiset<char> Placeholders(std::string_view text) {
    std::multiset<char> digits;
    for (std::size_t at = 0; at + 1 < text.size(); ++at) {
        if (text[at] == '@' && text[at + 1] >= '0' && text[at + 1] <= '9') {
            digits.insert(text[at + 1]);
        }
    }
    return digits;
}

/// The library started in one user-interface language, over folders of its own.
class Session {
public:
    explicit Session(const std::string& language) {
        setenv("ZEPHCORE_LANGUAGE", language.c_str(), 1);
        Initialize();
        LoadAllViewDefinitions();
    }
    ~Session() { Terminate(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

private:
    support::TempFolder mFolder;
};

class InLanguage : public ::testing::TestWithParam<std::string> {
private:
    Session mSession{GetParam()};
};

TEST_P(InLanguage, EveryTextOfTheDocumentsIsTranslated) {
    const DocumentTexts documents = TextsOfDocuments();
    ASSERT_GT(documents.mRequired.size(), 1300U);
    const zephcore::Localizer& translations = zephcore::Localizer::Get();
    std::string missing;
    for (const auto& [key, text] : documents.mRequired) {
        if (!text.empty() && translations.Translate(UTF8to16(key + "=")).empty()) {
            missing += "\n" + key + "=" + text;
        }
    }
    EXPECT_TRUE(missing.empty()) << "missing:" << missing;
}

TEST_P(InLanguage, EveryTranslationIsOfATextThatExists) {
    const DocumentTexts documents = TextsOfDocuments();
    Texts known = TextsOfCode();
    known.insert(documents.mRequired.begin(), documents.mRequired.end());
    known.insert(documents.mOptional.begin(), documents.mOptional.end());
    std::set<std::string> seen;
    std::string unknown;
    for (const auto& [key, text] : Entries(Resource(GetParam(), "dat"))) {
        EXPECT_TRUE(seen.insert(key).second) << key << " stands twice";
        const auto original = known.find(key);
        if (original == known.end()) {
            unknown += "\n" + key + "=" + text;
        } else {
            EXPECT_EQ(Placeholders(text), Placeholders(original->second)) << key << "=" << text;
        }
    }
    EXPECT_TRUE(unknown.empty()) << "of no document:" << unknown;
    for (const auto& [key, text] : known) {
        const bool isMessage = key.starts_with("$$$/zephmetadata/") && !key.ends_with("/") && !text.starts_with("#{U+");
        EXPECT_TRUE(!isMessage || seen.contains(key)) << "missing: " << key << "=" << text;
    }
}

void ExpectLabel(const std::string& where, const UTF16String& label) {
    EXPECT_FALSE(label.empty()) << where;
    EXPECT_FALSE(UTF16to8(label).starts_with("$$$/")) << where << ": " << UTF16to8(label);
}

void ExpectLabels(const std::string& where, const EntryDefinition& entry) {
    ExpectLabel(where, entry.mLabel);
    std::map<UTF16String, std::string> values;
    for (const auto& choice : entry.mChoices) {
        ExpectLabel(where + " " + choice->mRawValue, choice->mLabel);
        const auto [other, isNew] = values.emplace(choice->mLabel, choice->mRawValue);
        EXPECT_TRUE(isNew) << where << ": " << other->second << " and " << choice->mRawValue << " are both \""
                           << UTF16to8(choice->mLabel) << '"';
    }
    for (const auto& qualifier : entry.mQualifiers) {
        ExpectLabels(where + "/?" + qualifier->mName, *qualifier);
    }
}

/// The entries of one schema or type: a label each, no two alike.
template <typename Entry>
void ExpectDistinctLabels(const std::string& where, const std::vector<sp<Entry>>& entries) {
    std::map<UTF16String, std::string> names;
    for (const auto& entry : entries) {
        ExpectLabels(where + entry->mName, *entry);
        const auto [other, isNew] = names.emplace(entry->mLabel, entry->mName);
        EXPECT_TRUE(isNew) << where << ": " << other->second << " and " << entry->mName << " are both \""
                           << UTF16to8(entry->mLabel) << '"';
    }
}

TEST_P(InLanguage, PeopleCanTellThePropertiesAndValuesApart) {
    const std::vector<sp<SchemaDefinition>> schemas = RegisteredSchemaDefinitions();
    ASSERT_GE(schemas.size(), 29U);
    for (const sp<SchemaDefinition>& schema : schemas) {
        ExpectLabel(schema->mPrefix, schema->mLabel);
        ExpectDistinctLabels(schema->mPrefix + ":", schema->mProperties);
    }
    const std::vector<sp<TypeDefinition>> types = RegisteredTypeDefinitions();
    ASSERT_GE(types.size(), 58U);
    for (const sp<TypeDefinition>& type : types) {
        ExpectLabels(type->mName, *type);
        ExpectDistinctLabels(type->mName + "/", type->mFields);
    }
}

void ExpectViewLabels(const std::string& where, const std::vector<sp<ViewItem>>& items) {
    for (const sp<ViewItem>& item : items) {
        const std::string place = where + " > " + item->mLabel;
        if (!item->mLabel.empty() || PathEntryDefinition(item->mPath)) {
            ExpectLabel(place, item->GetLabel());
        }
        ExpectViewLabels(place, item->mChildItems);
    }
}

TEST_P(InLanguage, PanelsShowNoKeys) {
    std::size_t count = 0;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        ExpectLabel(view->mName, LocalizedText(view->mLabel));
        ExpectViewLabels(view->mName, view->mItems);
        ++count;
    }
    EXPECT_EQ(count, 10U);
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, InLanguage,
                         ::testing::ValuesIn(zephcore::GetResourceNames(zephcore::Module::kOwn, "dat")),
                         [](const auto& row) { return row.param; });

struct LanguageRow {
    std::string mName;
    std::string mLanguage;
    std::string mTitle;  ///< the label of dc:title
    friend std::ostream& operator<<(std::ostream& out, const LanguageRow& row) { return out << row.mLanguage; }
};

class LanguageChoice : public ::testing::TestWithParam<LanguageRow> {};

TEST_P(LanguageChoice, FindsTheTranslationsOfTheLanguageOrOfItsBase) {
    const Session session(GetParam().mLanguage);
    const sp<SchemaDefinition> schema = NamespaceDefinition(StandardSchemaNamespace(kStandardSchema_DC));
    ASSERT_TRUE(schema);
    const auto title =
        std::ranges::find(schema->mProperties, "title", [](const auto& property) { return property->mName; });
    ASSERT_NE(title, schema->mProperties.end());
    EXPECT_EQ(UTF16to8((*title)->mLabel), GetParam().mTitle);
}

INSTANTIATE_TEST_SUITE_P(Rows, LanguageChoice,
                         ::testing::ValuesIn(std::vector<LanguageRow>{
                             {"German", "de", "Titel"},
                             {"GermanOfAustria", "de_AT", "Titel"},
                             {"WithAHyphen", "de-AT", "Titel"},
                             {"FrenchOfCanadaAsALanguageTag", "fr-CA", "Titre"},
                             {"SpanishWithAnEncoding", "es_MX.UTF-8", "Título"},
                             {"Japanese", "ja_JP", "タイトル"},
                             {"English", "en_GB", "Title"},
                             {"ALanguageWithoutTranslations", "tlh", "Title"},
                             {"ALanguageThatBeginsLikeAnother", "den_CA", "Title"},
                             {"NotALanguage", "_", "Title"},
                         }),
                         [](const auto& row) { return row.param.mName; });

}  // namespace
}  // namespace zephmetadata
