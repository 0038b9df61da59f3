// The packages of resources/packages, as one call registers them.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include "extensions/iptc_rows.h"
#include "extensions/package_fixture.h"
#include "media/native/iim/iim_values.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"

namespace zephmetadata {
namespace {

using support::IptcRow;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using zephcore::UTF16to8;
using zephcore::UTF8to16;

constexpr const char* kPhotoshop = "http://ns.adobe.com/photoshop/1.0/";
constexpr const char* kSyntheticPhoto = "http://cv.iptc.org/newscodes/digitalsourcetype/trainedAlgorithmicMedia";

class BundledPackagesTest : public support::PackageTest {
protected:
    static void Restart(const std::string& language = "en_US") {
        Terminate();
        setenv("ZEPHCORE_LANGUAGE", language.c_str(), 1);
        Initialize();
    }
};

bool Defines(const std::string& expression) {
    return PathEntryDefinition(PathForExpression(expression)) != nullptr;
}

TEST_F(BundledPackagesTest, AreRegisteredByOneCallAndByNothingElse) {
    LoadAllViewDefinitions();
    EXPECT_THAT(ExtensionPackages(), IsEmpty());
    EXPECT_FALSE(Defines("photoshop:City"));
    RegisterBundledPackages();
    const std::vector<std::string> names = support::Names(ExtensionPackages());
    EXPECT_THAT(names,
                ElementsAre("Image Regions", "IPTC Photo Metadata", "Picture Managers", "Raw Development Settings",
                            "Additions to Standard Schemas", "Telephones and Drones"));
    for (const ExtensionPackage& package : ExtensionPackages()) {
        EXPECT_TRUE(package.bundled);
        EXPECT_FALSE(package.schemas.empty()) << UTF16to8(package.path);
    }
    RegisterBundledPackages();
    EXPECT_EQ(support::Names(ExtensionPackages()), names);
    EXPECT_THAT(Records(), IsEmpty());
    Terminate();
    RegisterBundledPackages();
    EXPECT_THAT(ExtensionPackages(), IsEmpty());
    Initialize();
    RegisterBundledPackages();
    const auto rangeOfViews = CommonViewDefinitions();
    const std::size_t views = static_cast<std::size_t>(std::distance(rangeOfViews.begin(), rangeOfViews.end()));
    LoadAllViewDefinitions();
    EXPECT_EQ(views, 11U) << "with the built-in ones, whose loading it does";
    EXPECT_THAT(Records(), IsEmpty());
}

TEST_F(BundledPackagesTest, LeaveWhatUsersDefined) {
    Folder().Write("base/GLOBAL_PREF/Corvid/XMP/Custom Quillet Panels/4.0/custom/mine.xml",
                   "<xmp_definitions><xmp_type name='mwgArea' extends='text'/><xmp_schema namespace='" +
                       std::string(kPhotoshop) +
                       "' prefix='photoshop' label='Mine'><xmp_property name='City' type='integer'/></xmp_schema>"
                       "</xmp_definitions>");
    WriteUser("log/manifest.xml", Manifest("Log", "1"));
    WriteUser("log/view/log.xml",
              "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:mwg-rs='"
              "http://www.metadataworkinggroup.com/schemas/regions/'><view name='log'><property name='mwg-rs:Regions'/>"
              "</view></views>");
    Restart();
    RegisterBundledPackages();
    EXPECT_THAT(Records(), IsEmpty());
    EXPECT_EQ(UTF16to8(NamespaceDefinition(kPhotoshop)->mLabel), "Mine");
    EXPECT_EQ(PathEntryDefinition(PathForExpression("photoshop:City"))->mType, "integer");
    EXPECT_TRUE(Defines("photoshop:Headline"));
    EXPECT_TRUE(TypeIdDefinition("mwgArea")->mFields.empty());
    EXPECT_TRUE(GetViewDefinitionForName("log")) << "other packages build on bundled ones";
}

TEST_F(BundledPackagesTest, AreReplacedByAHigherVersion) {
    WriteUser("iptc/manifest.xml", Manifest("IPTC Photo Metadata", "2025.1"));
    WriteUser("iptc/view/view.xml", View("org.test.iptc"));
    Restart();
    RegisterBundledPackages();
    EXPECT_THAT(ShortRecords(),
                ElementsAre(Record{ErrorKind::ExtensionPackageRegistrationError,
                                   "Error registering extension package: extension package with name #{quot}IPTC Photo "
                                   "Metadata#{quot} already exists. Package with lower version number #{quot}2024.2"
                                   "#{quot} will be ignored.",
                                   "iptc-photo-metadata"}));
    EXPECT_EQ(support::Names(ExtensionPackages()).back(), "IPTC Photo Metadata");
    EXPECT_FALSE(Defines("photoshop:City"));
}

TEST_F(BundledPackagesTest, AcceptNewerCodesOfAVocabulary) {
    const XMPMetaPtr tree = CreateXMPMeta();
    const Path path = PathForExpression("Iptc4xmpExt:DigitalSourceType");
    EXPECT_TRUE(SetValue(tree.get(), path, kSyntheticPhoto));
    EXPECT_THAT(ValidateXMP(tree.get()), SizeIs(1));
    RegisterBundledPackages();
    EXPECT_THAT(ValidateXMP(tree.get()), IsEmpty());
    EXPECT_TRUE(SetValue(tree.get(), path, "http://cv.iptc.org/newscodes/digitalsourcetype/noSuchCode"));
    EXPECT_THAT(ValidateXMP(tree.get()), SizeIs(1));
}

TEST_F(BundledPackagesTest, DefineWhatIIMStandsFor) {
    RegisterBundledPackages();
    for (const media::IIMRow& row : media::IIMRows()) {
        const auto path = PathForSchemaNameAndPropertyName(UTF8String(row.mNamespace), UTF8String(row.mProperty));
        EXPECT_TRUE(PathEntryDefinition(path)) << row.mNamespace << row.mProperty;
    }
}

/// The keys and texts of all documents of packages, without the descriptions of definitions, which may stay English.
std::map<std::string, std::string> KeysOfDocuments() {
    std::map<std::string, std::string> keys;
    for (const UTF8String& name : zephcore::GetResourceNames(zephcore::Module::kOwn, "xml")) {
        std::string_view text;
        zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "xml", text);
        for (std::size_t at = 0;
             name.find('/') != std::string::npos && (at = text.find("\"$$$/", at)) != std::string_view::npos; ++at) {
            const std::string_view entry = text.substr(at + 1, text.find('"', at + 1) - at - 1);
            const std::string key(entry.substr(0, entry.find('=')));
            const bool mayStay = key.ends_with("description") && name.find("/schema/") != std::string::npos;
            keys.emplace(key, mayStay ? "" : "needed");
        }
    }
    return keys;
}

class BundledTexts : public BundledPackagesTest, public ::testing::WithParamInterface<std::string> {
protected:
    BundledTexts() {
        Restart(GetParam());
        RegisterBundledPackages();
    }
};

TEST_P(BundledTexts, AreWhole) {
    const std::map<std::string, std::string> keys = KeysOfDocuments();
    EXPECT_GT(keys.size(), 900U);
    const zephcore::Localizer& translations = zephcore::Localizer::Get();
    for (const auto& [key, need] : keys) {
        EXPECT_TRUE(need.empty() || !translations.Translate(UTF8to16(key + "=")).empty()) << key;
    }
    for (const UTF8String& name : zephcore::GetResourceNames(zephcore::Module::kOwn, "dict")) {
        std::string_view text;
        zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "dict", text);
        for (std::size_t at = 0; (at = text.find("$$$/", at)) != std::string_view::npos; ++at) {
            const std::string key(text.substr(at, text.find('=', at) - at));
            EXPECT_TRUE(keys.contains(key)) << name << ": no document has " << key;
        }
    }
    EXPECT_THAT(Records(), IsEmpty());
}

/// The labels that several of @p entries have.
template <typename Entry>
std::vector<std::string> RepeatedLabels(const std::vector<sp<Entry>>& entries) {
    std::set<UTF16String> seen;
    std::vector<std::string> repeated;
    for (const auto& entry : entries) {
        if (!seen.insert(entry->mLabel).second || entry->mLabel.empty()) {
            repeated.push_back(entry->mName + " \"" + UTF16to8(entry->mLabel) + '"');
        }
    }
    return repeated;
}

TEST_P(BundledTexts, TellPropertiesApart) {
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        EXPECT_THAT(RepeatedLabels(schema->mProperties), IsEmpty()) << schema->mPrefix;
    }
    for (const sp<TypeDefinition>& type : RegisteredTypeDefinitions()) {
        EXPECT_THAT(RepeatedLabels(type->mFields), IsEmpty()) << type->mName;
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, BundledTexts, ::testing::Values("de_AT", "es", "fr", "ja"),
                         [](const auto& row) { return row.param; });

std::vector<IptcRow> IptcRows() {
    return support::ReadIptcRows(ZEPHMETADATA_SOURCE_DIR "/tests/extensions/iptc_rows.tsv");
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

TEST_F(BundledPackagesTest, DefineWhatTheIptcListSays) {
    const std::vector<IptcRow> rows = IptcRows();
    ASSERT_GT(rows.size(), 150U);
    RegisterBundledPackages();
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

TEST_F(BundledPackagesTest, ShowTheIptcListTopicByTopicInItsOrder) {
    RegisterBundledPackages();
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
