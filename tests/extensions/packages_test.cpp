#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>

#include "extensions/package_discovery.h"
#include "extensions/package_fixture.h"
#include "support/growth.h"

namespace zephmetadata {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using zephcore::UTF8to16;

constexpr const char* kProperty = "<xmp_property category='external' name='level' type='integer'/>";
constexpr const char* kTitleAgain =
    "<xmp_definitions><xmp_schema namespace='http://purl.org/dc/elements/1.1/' prefix='dc'>"
    "<xmp_property category='external' name='title' type='text'/>"
    "<xmp_property category='external' name='subtitle' type='text'/></xmp_schema></xmp_definitions>";

/// The manifest of a package that the tables of records are about.
const std::string kManifest = "<extension xmlns='http://ns.zephmetadata.org/metadata/extension/1.0/' name='A'/>";
const std::string kWithPrefix =
    "<extension xmlns='http://ns.zephmetadata.org/metadata/extension/1.0/' name='A' locFilePrefix='a'/>";

struct PackageRow {
    const char* mLabel;
    std::vector<std::pair<std::string, std::string>> mFiles;  // below the machine-wide folder
    std::vector<Record> mRecords;
    std::vector<std::string> mNames;
    std::vector<std::string> mSchemas;  // of the first package
    std::vector<std::string> mViews;

    friend void PrintTo(const PackageRow& row, std::ostream* out) { *out << row.mLabel; }
};

class PackageRecords : public support::PackageTest, public ::testing::WithParamInterface<PackageRow> {
public:
    using PackageTest::Schema;
    using PackageTest::View;
};

TEST_P(PackageRecords, SayWhatIsWrong) {
    for (const auto& [name, text] : GetParam().mFiles) {
        Write(name, text);
    }
    LoadAllViewDefinitions();
    EXPECT_EQ(ShortRecords(), GetParam().mRecords);
    EXPECT_EQ(support::Names(ExtensionPackages()), GetParam().mNames);
    if (!ExtensionPackages().empty()) {
        EXPECT_EQ(ExtensionPackages().front().schemas, GetParam().mSchemas);
        EXPECT_EQ(ExtensionPackages().front().views, GetParam().mViews);
    }
}

constexpr auto kManifestKind = ErrorKind::ExtensionManifestParsingError;
const std::string kInManifest = "Error parsing manifest file: ";
const std::string kSchemaText = PackageRecords::Schema("tsta", kProperty);
const std::string kViewText = PackageRecords::View("org.test.a");

const PackageRow kRows[] = {
    {"Whole",
     {{"p/manifest.xml", kManifest}, {"p/schema/s.xml", kSchemaText}, {"p/view/v.xml", kViewText}},
     {},
     {"A"},
     {"http://test/tsta/"},
     {"org.test.a"}},
    {"WithoutManifest",
     {{"p/schema/s.xml", kSchemaText}, {"file.txt", "beside the packages"}},
     {{kManifestKind, kInManifest + "manifest file is missing from extension package.", "G/p/manifest.xml"}},
     {},
     {},
     {}},
    {"BrokenManifest",
     {{"p/manifest.xml", kManifest + "<"}, {"p/view/v.xml", kViewText}},
     {{kManifestKind, kInManifest + "invalid XML.", "G/p/manifest.xml"}},
     {},
     {},
     {}},
    {"PrefixWithoutFolder",
     {{"p/manifest.xml", kWithPrefix}, {"p/schema/s.xml", kSchemaText}, {"p/view/v.xml", kViewText}},
     {{kManifestKind, kInManifest + "localization directory is missing from extension package.", "G/p/loc"}},
     {"A"},
     {"http://test/tsta/"},
     {"org.test.a"}},
    {"FolderWithoutTheLanguage",
     {{"p/manifest.xml", kWithPrefix}, {"p/loc/a_xx_XX.dict", ""}, {"p/view/v.xml", kViewText}},
     {},
     {"A"},
     {},
     {"org.test.a"}},
    {"NothingInIt",
     {{"p/manifest.xml", kManifest}, {"p/schema/s.txt", kSchemaText}, {"p/view/v.XML", kViewText}},
     {{kManifestKind, kInManifest + "neither schema nor view file is present in extension package.", "G/p"}},
     {"A"},
     {},
     {}},
    {"BrokenFiles",
     {{"p/manifest.xml", kManifest}, {"p/schema/s.xml", "<xmp_definitions>"}, {"p/view/v.xml", "<views"}},
     {{ErrorKind::DefinitionParsingError, "Error parsing definitions file: invalid XML.", "G/p/schema/s.xml"},
      {ErrorKind::ViewDefinitionParsingError, "Error parsing view definitions file: invalid XML.", "G/p/view/v.xml"}},
     {"A"},
     {},
     {}},
    {"BuiltInPropertyAgain",
     {{"p/manifest.xml", kManifest}, {"p/schema/s.xml", kTitleAgain}},
     {{ErrorKind::DefinitionRegistrationError,
       "Error registering definition: property definition for namespace "
       "#{quot}http://purl.org/dc/elements/1.1/title#{quot} already exists.",
       "G/p/schema/s.xml"}},
     {"A"},
     {"http://purl.org/dc/elements/1.1/"},
     {}},
    {"BuiltInViewAgain",
     {{"p/manifest.xml", kManifest}, {"p/view/v.xml", PackageRecords::View("com.corvid.xmp.view.gps")}},
     {{ErrorKind::ViewDefinitionRegistrationError,
       "Error registering view definition: View definition for #{quot}com.corvid.xmp.view.gps#{quot} already exists.",
       "G/p/view/v.xml"}},
     {"A"},
     {},
     {}},
    {"ManifestsOfAnotherKind",
     {{"p/manifest.xml", "<extension xmlns='urn:other' name='A' version='2'/>"},
      {"p/view/v.xml", kViewText},
      {"q/manifest.xml", "<extension name='B' version='3'/>"}},
     {{ErrorKind::ExtensionPackageRegistrationError,
       "Error registering extension package: extension package with name #{quot}#{quot} already exists.", "G/p"}},
     {""},
     {},
     {"org.test.a"}},
};
INSTANTIATE_TEST_SUITE_P(Packages, PackageRecords, ::testing::ValuesIn(kRows),
                         [](const auto& test) { return std::string(test.param.mLabel); });

struct VersionsRow {
    const char* mLabel;
    const char *mGlobal, *mUser;
    const char* mKept;  // the folder
    const char* mRecord;
    const char* mContext;

    friend void PrintTo(const VersionsRow& row, std::ostream* out) { *out << row.mLabel; }
};

class PackageVersions : public support::PackageTest, public ::testing::WithParamInterface<VersionsRow> {};

TEST_P(PackageVersions, DecideWhichOfTwoIsLoaded) {
    Write("p/manifest.xml", Manifest("A", GetParam().mGlobal));
    Write("p/view/v.xml", View("org.test.global"));
    WriteUser("own/manifest.xml", Manifest("A", GetParam().mUser));
    WriteUser("own/view/v.xml", View("org.test.user"));
    LoadAllViewDefinitions();
    ASSERT_EQ(ExtensionPackages().size(), 1U);
    EXPECT_EQ(Short(ExtensionPackages().front().path), GetParam().mKept);
    const bool isGlobal = GetParam().mKept[0] == 'G';
    EXPECT_EQ(GetViewDefinitionForName("org.test.global") != nullptr, isGlobal);
    EXPECT_EQ(GetViewDefinitionForName("org.test.user") != nullptr, !isGlobal);
    EXPECT_THAT(ShortRecords(), ElementsAre(Record{ErrorKind::ExtensionPackageRegistrationError,
                                                   std::string("Error registering extension package: extension package "
                                                               "with name #{quot}A#{quot} already exists.") +
                                                       GetParam().mRecord,
                                                   GetParam().mContext}));
}

const VersionsRow kVersions[] = {
    {"Same", "1.0", "1.0", "G/p", "", "G/p"},
    {"SameNumber", "1", "1.0", "G/p", "", "G/p"},
    {"NewerOfTheUser", "1.0", "2.0", "U/own", " Package with lower version number #{quot}1#{quot} will be ignored.",
     "G/p"},
    {"OlderOfTheUser", "10", "9.26", "G/p", " Package with lower version number #{quot}9.3#{quot} will be ignored.",
     "U/own"},
    {"NumberAtTheStart", "1.5.9", "1.5.3", "G/p", "", "G/p"},
    {"BlanksBefore", " 1", "2", "U/own", " Package with lower version number #{quot}1#{quot} will be ignored.", "G/p"},
    {"WordsAreZero", "inf", "nan", "G/p", "", "G/p"},
    {"HexadecimalIsZero", "0x10", "0.5", "U/own", " Package with lower version number #{quot}0#{quot} will be ignored.",
     "G/p"},
    {"TooGreatIsZero", "1e99", "0.5", "U/own", " Package with lower version number #{quot}0#{quot} will be ignored.",
     "G/p"},
    {"NegativeIsLower", "-1", "", "U/own", " Package with lower version number #{quot}-1#{quot} will be ignored.",
     "G/p"},
};
INSTANTIATE_TEST_SUITE_P(Packages, PackageVersions, ::testing::ValuesIn(kVersions),
                         [](const auto& test) { return std::string(test.param.mLabel); });

using Packages = support::PackageTest;

TEST_F(Packages, KeepTheirOrderWhenOneIsReplaced) {
    PackageDiscovery discovery;
    const auto package = [](const char16_t* name, float version) {
        return ExtensionPackage{UTF16String(u"/") + name, name, version, {}, {}, {}, {}};
    };
    EXPECT_TRUE(discovery.Add(package(u"A", 1)));
    EXPECT_TRUE(discovery.Add(package(u"B", 1)));
    EXPECT_TRUE(discovery.Add(package(u"a", 1))) << "letter case counts";
    EXPECT_FALSE(discovery.Add(package(u"A", 3)));
    EXPECT_FALSE(discovery.Add(package(u"A", 2)));
    EXPECT_FALSE(discovery.Add(package(u"B", std::numeric_limits<float>::quiet_NaN()))) << "neither less nor greater";
    const std::vector<ExtensionPackage> kept = discovery.Take();
    EXPECT_THAT(support::Names(kept), ElementsAre("B", "a", "A"));
    EXPECT_EQ(kept.back().version, 3);
    EXPECT_EQ(Records().size(), 3U);
}

TEST_F(Packages, TranslateTheirSchemas) {
    Write("p/manifest.xml", Manifest("A", "1", "locFilePrefix='words'"));
    Write("p/schema/s.xml", Schema("tsta", kProperty));
    Write("p/loc/words_en_US.dict",
          "\"$$$/test/tsta=Prefixed\"\n\"$$$/test/tstb=Of another\"\n\"$$$/zephmetadata/own=Forged\"\n");
    Write("p/loc/en_US.dict", "\"$$$/test/tsta=Bare\"\n");
    Write("q/manifest.xml", Manifest("B", "1"));
    Write("q/schema/s.xml", Schema("tstb", kProperty));
    Write("q/loc/words_en_US.dict", "\"$$$/test/tstb=Prefixed\"\n");
    Write("q/loc/en_US.dict", "\"$$$/test/tstb=Bare\"\n");
    Write("q/schema/t.xml", Schema("tstc", kProperty));
    Write("q/loc/en.dict", "\"$$$/test/tstb=General\"\n\"$$$/test/tstc=General\"\n");
    LoadAllViewDefinitions();
    EXPECT_THAT(Records(), IsEmpty());
    EXPECT_EQ(NamespaceDefinition("http://test/tsta/")->mLabel, u"Prefixed");
    EXPECT_EQ(LocalizedText("$$$/zephmetadata/own=Own"), u"Own") << "messages of the library are its own";
    EXPECT_EQ(NamespaceDefinition("http://test/tstb/")->mLabel, u"Bare");
    EXPECT_EQ(NamespaceDefinition("http://test/tstc/")->mLabel, u"General") << "of the base language";
}

TEST_F(Packages, AddToSchemasThatExist) {
    Write("p/manifest.xml", Manifest("A", "1"));
    Write("p/schema/1.xml",
          "<xmp_definitions><xmp_schema namespace='http://purl.org/dc/elements/1.1/' prefix='dc'><xmp_property "
          "category='external' name='subtitle' type='langalt' label='Subtitle'/></xmp_schema></xmp_definitions>");
    Write("p/schema/2.xml", Schema("tsta", kProperty));
    Write("q/manifest.xml", Manifest("B", "1"));
    Write("q/schema/s.xml", Schema("tsta", "<xmp_property category='external' name='depth' type='real'/>"));
    Write("q/schema/t.xml", Schema("tsta", "<xmp_property category='external' name='width' type='real'/>"));
    Write("q/view/v.xml",
          "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/' "
          "xmlns:t='http://test/tsta/'><view name='org.test.b'><property name='dc:subtitle'/><property name='t:level'/>"
          "<property name='t:width'/></view></views>");
    LoadAllViewDefinitions();
    EXPECT_THAT(Records(), IsEmpty());
    ASSERT_EQ(ExtensionPackages().size(), 2U);
    EXPECT_THAT(ExtensionPackages()[0].schemas, ElementsAre("http://purl.org/dc/elements/1.1/", "http://test/tsta/"));
    EXPECT_THAT(ExtensionPackages()[1].schemas, ElementsAre("http://test/tsta/"));
    EXPECT_EQ(NamespaceDefinition("http://test/tsta/")->mProperties.size(), 3U);
    EXPECT_FALSE(NamespaceDefinition("http://test/tsta/")->mCustom);
    const sp<EntryDefinition> subtitle = PathEntryDefinition(PathForExpression("dc:subtitle"));
    ASSERT_TRUE(subtitle);
    EXPECT_EQ(subtitle->mLabel, u"Subtitle");
    EXPECT_EQ(GetViewDefinitionForName("org.test.b")->mItems.size(), 3U);

    std::multiset<std::string> namespaces;
    for (const sp<SchemaDefinition>& schema : CommonSchemaDefinitions()) {
        namespaces.insert(schema->mNamespace);
    }
    EXPECT_EQ(namespaces.count("http://purl.org/dc/elements/1.1/"), 1U);
    EXPECT_EQ(namespaces.count("http://test/tsta/"), 1U);
}

TEST_F(Packages, AddFieldsToStructuresThatExist) {
    const auto location = [](const std::string& fields) {
        return "<xmp_definitions><xmp_type name='LocationDetails'>" + fields + "</xmp_type></xmp_definitions>";
    };
    const auto field = [](const std::string& name) {
        return "<xmp_field namespace='http://test/tsta/' prefix='tsta' name='" + name + "' type='text' label='L'/>";
    };
    Write("p/manifest.xml", Manifest("A", "1"));
    Write("p/schema/1.xml", location(field("Depth") + field("Width")));
    Write("p/schema/2.xml", location(field("City") + field("Height")));
    Write("p/schema/4.xml", location(field("Twice") + field("Twice")));
    Write("p/schema/3.xml", "<xmp_definitions><xmp_type name='url' extends='text'/></xmp_definitions>");
    const std::size_t before = TypeIdDefinition("LocationDetails")->mFields.size();
    LoadAllViewDefinitions();
    const auto duplicate = [](const std::string& name, const std::string& file) {
        return Record{ErrorKind::DefinitionRegistrationError,
                      "Error registering definition: type definition for #{quot}" + name + "#{quot} already exists.",
                      "G/p/schema/" + file};
    };
    EXPECT_THAT(ShortRecords(), ElementsAre(duplicate("LocationDetails", "2.xml"), duplicate("url", "3.xml"),
                                            duplicate("LocationDetails", "4.xml")));
    EXPECT_EQ(TypeIdDefinition("LocationDetails")->mFields.size(), before + 2);
    const StructureFields& fields = ExtensionPackages().at(0).fields;
    ASSERT_EQ(fields.size(), 2U);
    EXPECT_EQ(fields[1].first + "/" + fields[1].second->mName, "LocationDetails/Width");
    const Path depth = PathForExpression("Iptc4xmpExt:LocationShown[1]/tsta:Depth");
    const XMPMetaPtr tree = CreateXMPMeta();
    EXPECT_TRUE(SetValue(tree.get(), depth, "3"));
    EXPECT_EQ(PathEntryDefinition(depth)->mLabel, u"L");
    EXPECT_THAT(ValidateXMP(tree.get()), IsEmpty());
}

TEST_F(Packages, AreLoadedOncePerStart) {
    Write("p/manifest.xml", Manifest("A", "1"));
    Write("p/schema/s.xml", Schema("tsta", kProperty));
    EXPECT_THAT(ExtensionPackages(), IsEmpty()) << "the host decides when to load";
    LoadAllViewDefinitions();
    EXPECT_EQ(ExtensionPackages().size(), 1U);
    Write("q/manifest.xml", Manifest("B", "1"));
    Write("q/schema/s.xml", Schema("tstb", kProperty));
    Initialize();
    LoadAllViewDefinitions();
    Terminate();
    EXPECT_EQ(ExtensionPackages().size(), 1U) << "of two starts the first is undone last";
    EXPECT_THAT(Records(), IsEmpty());

    Terminate();
    EXPECT_THAT(ExtensionPackages(), IsEmpty());
    LoadAllViewDefinitions();
    EXPECT_THAT(ExtensionPackages(), IsEmpty()) << "the library is stopped";
    Initialize();
    EXPECT_FALSE(NamespaceDefinition("http://test/tsta/"));
    LoadAllViewDefinitions();
    EXPECT_EQ(ExtensionPackages().size(), 2U);
    EXPECT_TRUE(NamespaceDefinition("http://test/tstb/"));
    EXPECT_THAT(Records(), IsEmpty());
}

/// What the registries know, of packages and for them: names and counts, in order.
std::vector<std::string> Snapshot() {
    std::vector<std::string> known;
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        known.push_back(schema->mNamespace + ' ' + std::to_string(schema->mProperties.size()));
    }
    for (const PolyRange<sp<SchemaDefinition>>& listed : {CommonSchemaDefinitions(), DynamicSchemaDefinitions()}) {
        known.push_back(std::to_string(std::distance(listed.begin(), listed.end())));
    }
    for (const sp<TypeDefinition>& type : RegisteredTypeDefinitions()) {
        known.push_back(type->mName + ' ' + std::to_string(type->mFields.size()));
    }
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        known.push_back(view->mName);
    }
    known.push_back(zephcore::UTF16to8(LocalizedText("$$$/test/word=Default")));
    known.push_back(std::to_string(ExtensionPackages().size()));
    return known;
}

TEST_F(Packages, AreLoadedFromAnywhereAndTakenOut) {
    const auto field = [](const std::string& type, const std::string& name) {
        return "<xmp_type name='" + type + "'><xmp_field namespace='http://test/tsta/' prefix='tsta' name='" + name +
               "' type='text'/></xmp_type></xmp_definitions>";
    };
    const auto schema = [&](const std::string& name) {
        const std::string document =
            Schema("tsta", "<xmp_property category='external' name='" + name + "' type='text'/>");
        return document.substr(0, document.rfind("</")) + field("LocationDetails", "Of" + name);
    };
    const auto memory = [](const std::string& manifest, const std::string& definitions, const std::string& view) {
        return std::vector<PackageDocument>{{u"schema/s.xml", definitions},
                                            {u"view/v.xml", view},
                                            {u"manifest.xml", manifest},
                                            {u"loc/en_US.dict", "$$$/test/word=Memory"}};
    };
    RegisterBundledPackages();
    const std::vector<std::string> before = Snapshot();
    Folder().Write(Folder().Path() / "own/manifest.xml", Manifest("A", "2"));
    Folder().Write(Folder().Path() / "own/schema/s.xml", schema("a"));
    Folder().Write(Folder().Path() / "own/loc/en_US.dict", "$$$/test/word=Folder");
    const UTF16String folder = zephcore::PathFromNative((Folder().Path() / "own").native());
    const auto ofMemory = memory(Manifest("B", "1"), schema("b"), View("org.test.b"));

    for (const UTF16String first : {u"A", u"B"}) {
        const std::optional<ExtensionPackage> loaded = LoadExtensionPackage(folder);
        ASSERT_TRUE(loaded);
        EXPECT_EQ(zephcore::PathToNative(loaded->path), (Folder().Path() / "own").native());
        EXPECT_THAT(loaded->schemas, ElementsAre("http://test/tsta/"));
        EXPECT_EQ(LocalizedText("$$$/test/word=Default"), u"Folder");
        EXPECT_THAT(LoadExtensionPackage(ofMemory).value().views, ElementsAre("org.test.b"));
        EXPECT_EQ(LocalizedText("$$$/test/word=Default"), u"Memory");
        EXPECT_THAT(Records(), IsEmpty());
        const sp<SchemaDefinition> held = NamespaceDefinition("http://test/tsta/");
        const sp<ViewDefinition> view = GetViewDefinitionForName("org.test.b");

        EXPECT_TRUE(RemoveExtensionPackage(first));
        EXPECT_FALSE(RemoveExtensionPackage(first));
        const bool leavesA = first == u"B";
        EXPECT_EQ(PathEntryDefinition(PathForExpression("tsta:a")) != nullptr, leavesA);
        EXPECT_EQ(PathEntryDefinition(PathForExpression("tsta:b")) == nullptr, leavesA);
        EXPECT_EQ(GetViewDefinitionForName("org.test.b") == nullptr, leavesA);
        EXPECT_EQ(LocalizedText("$$$/test/word=Default"), leavesA ? u"Folder" : u"Memory");
        EXPECT_TRUE(RemoveExtensionPackage(leavesA ? u"A" : u"B"));
        EXPECT_EQ(Snapshot(), before);
        EXPECT_EQ(held->mProperties.size(), 1U) << "what a host holds stays";
        EXPECT_EQ(view->mItems.size(), 1U);
        EXPECT_EQ(filePathForSchema(held), u"");
    }
    while (!ExtensionPackages().empty()) {
        EXPECT_TRUE(RemoveExtensionPackage(UTF16String(ExtensionPackages().back().name)));
    }
    EXPECT_FALSE(NamespaceDefinition("http://www.metadataworkinggroup.com/schemas/regions/"));

    ASSERT_TRUE(LoadExtensionPackage(ofMemory));
    EXPECT_FALSE(LoadExtensionPackage(memory(Manifest("B", "9"), "", ""))) << "the name is taken";
    EXPECT_FALSE(LoadExtensionPackage(memory("<", "", "")));
    EXPECT_FALSE(LoadExtensionPackage(std::vector<PackageDocument>()));
    EXPECT_FALSE(LoadExtensionPackage(UTF16String(u"/nowhere")));
    EXPECT_TRUE(LoadExtensionPackage(memory(Manifest("C", "1", "locFilePrefix='x'"), "<", "<")));
    std::vector<std::string> contexts;
    for (const Record& record : Records()) {
        contexts.push_back(record.mContext);
    }
    EXPECT_THAT(contexts,
                ElementsAre("", "manifest.xml", "manifest.xml", "/nowhere/manifest.xml", "schema/s.xml", "view/v.xml"));
}

TEST_F(Packages, AreTakenOutWholeWhenACallbackLoadedAnother) {
    const auto documents = [](const char* name, const char* prefix) {
        return std::vector<PackageDocument>{{u"manifest.xml", Manifest(name, "1")},
                                            {u"schema/1.xml", "<"},
                                            {u"schema/2.xml", Schema(prefix, kProperty)}};
    };
    const std::vector<std::string> before = Snapshot();
    bool isFirst = true;
    const auto loadInner = std::make_shared<std::function<void(UTF16String)>>([&](const UTF16String&) {
        if (std::exchange(isFirst, false)) {
            LoadExtensionPackage(documents("Inner", "tstb"));
        }
    });
    NotifyOnError(loadInner);
    EXPECT_TRUE(LoadExtensionPackage(documents("Outer", "tsta")));
    *loadInner = nullptr;
    EXPECT_TRUE(RemoveExtensionPackage(u"Outer"));
    EXPECT_FALSE(NamespaceDefinition("http://test/tsta/"));
    EXPECT_TRUE(NamespaceDefinition("http://test/tstb/"));
    EXPECT_TRUE(RemoveExtensionPackage(u"Inner"));
    EXPECT_EQ(Snapshot(), before);
}

TEST_F(Packages, WithManyViewsAndSchemasAreTakenOutInLinearTime) {
    const auto takeOut = [](int many) {
        std::string views =
            "<views xmlns='http://ns.zephmetadata.org/metadata/ui/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/'>";
        std::string schemas = "<xmp_definitions>";
        for (int i = 0; i < many; ++i) {
            const std::string number = std::to_string(i);
            views += "<view name='org.test." + number + "'><property name='dc:title'/></view>";
            schemas += "<xmp_schema namespace='http://test/" + number + "/' prefix='t" + number + "'/>";
        }
        ASSERT_TRUE(LoadExtensionPackage(std::vector<PackageDocument>{{u"manifest.xml", Manifest("A", "1")},
                                                                      {u"schema/s.xml", schemas + "</xmp_definitions>"},
                                                                      {u"view/v.xml", views + "</views>"}}));
        EXPECT_TRUE(RemoveExtensionPackage(u"A"));
    };
    EXPECT_LT(support::GrowthByFour(5000, takeOut), support::kLinearGrowth);
}

}  // namespace
}  // namespace zephmetadata
