#include <fstream>
#include <map>
#include <set>

#include "support/library_test.h"
#include "zephcore/environment.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {
namespace {

using Row = std::vector<std::string>;

std::string Text(const std::optional<UTF8String>& text) {
    return text.value_or("");
}

/// The rows of a document as catalogue.tsv has them: what it defines, in its order.
std::vector<Row> DocumentRows(const std::string& resource, const Definitions& definitions) {
    std::vector<Row> rows;
    for (const auto& schema : definitions.first) {
        rows.push_back({"schema", resource, schema->mPrefix, schema->mDynamic ? "dynamic" : "static"});
        for (const auto& property : schema->mProperties) {
            rows.push_back({"property", resource, property->mName, Text(property->mType), Text(property->mElementType),
                            property->mInternal ? "internal" : "external"});
        }
    }
    for (const auto& type : definitions.second) {
        const std::string kind = !type->mFields.empty() ? "structure"
                                 : type->mExtends       ? PrimitiveTypeAsPrimitiveTypeId(*type->mExtends)
                                                        : "primitive";
        rows.push_back({"type", resource, type->mName, kind, Text(type->mElementType)});
        for (const auto& field : type->mFields) {
            rows.push_back({"field", resource, type->mName, field->mPrefix + ":" + field->mName});
        }
    }
    return rows;
}

/// The raw values of each closed choice, by document and owner.
using ChoicesByOwner = std::map<std::string, std::vector<std::string>>;

void AddClosedChoices(const std::string& owner, const EntryDefinition& entry, ChoicesByOwner& choices) {
    for (const auto& choice : entry.mChoices) {
        if (PrimitiveTypeOf(entry) == kPrimitiveType_ClosedChoice) {
            choices[owner].push_back(choice->mRawValue);
        }
    }
}

std::vector<Row> ReadCatalogue() {
    std::ifstream in(ZEPHMETADATA_SOURCE_DIR "/tests/definitions/catalogue.tsv");
    std::vector<Row> rows;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line.front() == '#') {
            continue;
        }
        Row row(1);
        for (const char c : line) {
            if (c == '\t') {
                row.emplace_back();
            } else {
                row.back() += c;
            }
        }
        rows.push_back(row);
    }
    return rows;
}

class BuiltInDocuments : public support::LibraryTest {
protected:
    /// Every built-in definitions document, parsed anew: registration would fill in what a document leaves out.
    std::map<std::string, Definitions> ParseAll() {
        std::map<std::string, Definitions> documents;
        for (const UTF8String& name : zephcore::GetResourceNames(zephcore::Module::kOwn, "xml")) {
            std::string_view bytes;
            if (name.ends_with("_definitions") &&
                zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "xml", bytes)) {
                documents[name] = ParseBufferForDefinitions(UTF8String(bytes), zephcore::UTF8to16(name));
            }
        }
        return documents;
    }
};

/// Hosts and files count on what was ever defined: all of the catalogue is there, as it was and in its order. What came
/// later needs no row.
TEST_F(BuiltInDocuments, DefineAllThatTheCatalogueLists) {
    std::map<std::string, std::vector<Row>> expected;
    ChoicesByOwner expectedChoices;
    for (const Row& row : ReadCatalogue()) {
        if (row[0] == "choice") {
            expectedChoices[row[1] + " " + row[2]].push_back(row[3]);
        } else {
            expected[row[1]].push_back(row);
        }
    }
    ChoicesByOwner choices;
    for (const auto& [resource, definitions] : ParseAll()) {
        const std::set<Row> listed(expected[resource].begin(), expected[resource].end());
        std::vector<Row> found = DocumentRows(resource, definitions);
        std::erase_if(found, [&](const Row& row) { return !listed.contains(row); });
        EXPECT_EQ(found, expected[resource]) << resource;
        for (const auto& schema : definitions.first) {
            for (const auto& property : schema->mProperties) {
                AddClosedChoices(resource + " " + property->mName, *property, choices);
            }
        }
        for (const auto& type : definitions.second) {
            for (const auto& field : type->mFields) {
                AddClosedChoices(resource + " " + type->mName + "/" + field->mName, *field, choices);
            }
        }
        expected.erase(resource);
    }
    EXPECT_TRUE(expected.empty()) << "no document for " << expected.begin()->first;
    for (const auto& [owner, values] : expectedChoices) {
        EXPECT_THAT(choices[owner], ::testing::IsSupersetOf(values)) << owner;
    }
    EXPECT_FALSE(HasErrors()) << Records().front();
}

TEST_F(BuiltInDocuments, AreListedByStandardSchema) {
    std::size_t common = 0;
    for (const sp<SchemaDefinition>& schema : CommonSchemaDefinitions()) {
        EXPECT_FALSE(schema->mCustom) << schema->mPrefix;
        EXPECT_FALSE(schema->mDynamic) << schema->mPrefix;
        ++common;
    }
    EXPECT_GE(common, 25U);
    std::vector<std::string> dynamic;
    for (const sp<SchemaDefinition>& schema : DynamicSchemaDefinitions()) {
        EXPECT_EQ(NamespaceDefinition(schema->mNamespace), schema);
        dynamic.push_back(schema->mPrefix);
    }
    EXPECT_THAT(dynamic, ::testing::ElementsAre("xmpPMAssign", "xmpPMMemo"));
    for (int value = 0; value <= 26; ++value) {
        EXPECT_TRUE(NamespaceDefinition(StandardSchemaNamespace(static_cast<StandardSchema>(value)))) << value;
    }
    EXPECT_EQ(StandardSchemaNamespace(static_cast<StandardSchema>(27)), "");
    EXPECT_EQ(StandardSchemaNamespace(kStandardSchema_DC), "http://purl.org/dc/elements/1.1/");
    EXPECT_EQ(StandardSchemaNamespace(kStandardSchema_DICOM), DICOMNamespaceURI);
    EXPECT_EQ(StandardSchemaNamespace(kStandardSchema_Mobile), SWFNamespaceURI);
    EXPECT_EQ(NamespaceForPrefix("dc"), "http://purl.org/dc/elements/1.1/");
}

/// Runs over every text of every definition.
class TextCheck {
public:
    void Entry(const std::string& where, const EntryDefinition& entry) {
        Texts(where, entry);
        for (const auto& choice : entry.mChoices) {
            Key(where + " choice", choice->mLabelZString);
        }
        for (const auto& qualifier : entry.mQualifiers) {
            Entry(where + " qualifier", *qualifier);
        }
    }
    void Texts(const std::string& where, const LocalizedTexts& texts) {
        Key(where + " label", texts.mLabelZString);
        Key(where + " description", texts.mDescriptionZString);
    }

private:
    void Key(const std::string& where, const UTF16String& zString) {
        const std::string text = zephcore::UTF16to8(zString);
        const std::string key = text.substr(0, text.find('='));
        EXPECT_TRUE(key.starts_with("$$$/xmp/")) << where << ": " << text;
        EXPECT_GT(text.size(), key.size() + 1) << where << " is empty: " << text;
        EXPECT_TRUE(mKeys.insert(key).second) << where << ": the key " << key << " stands twice";
    }

    std::set<std::string> mKeys;
};

TEST_F(BuiltInDocuments, CarryATextOfTheirOwnForEverything) {
    TextCheck check;
    for (const auto& [resource, definitions] : ParseAll()) {
        for (const auto& schema : definitions.first) {
            check.Texts(resource, *schema);
            for (const auto& property : schema->mProperties) {
                check.Entry(resource + " " + property->mName, *property);
            }
        }
        for (const auto& type : definitions.second) {
            check.Entry(resource + " type " + type->mName, *type);
            for (const auto& field : type->mFields) {
                check.Entry(resource + " " + type->mName + "/" + field->mName, *field);
            }
        }
    }
}

}  // namespace
}  // namespace zephmetadata
