#include <filesystem>
#include <fstream>

#include "host.h"
#include "zephcore/files.h"
#include "zephcore/text.h"

using namespace zephmetadata;

namespace host {

namespace {

using PanelInfo = GenericPanelManifestParser::ManifestInfo;

constexpr const char* kPanel =
    "<panel xmlns='http://ns.zephmetadata.org/xmp/quillet/' name='buoys' label='Buoys' type='generic' version='1.0' "
    "propertyDescriptionFile='buoys.xml'/>";
constexpr const char* kPanelProperties =
    "<xmp_definitions><xmp_schema namespace='http://example.org/buoys/' prefix='buoys' label='Buoys'>"
    "<xmp_property category='external' name='number' type='integer' label='Number'/></xmp_schema></xmp_definitions>";

void Write(const std::filesystem::path& path, const char* text) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

/// Makes a package with the library's own writers and has it loaded.
int CheckMakingAPackage() {
    const Session session;
    const zephcore::Dir package(zephcore::Dir(CustomExtensionsUserDirectory()), u"lighthouses");
    const auto schema = CreateNewSchema("http://example.org/lighthouses/", "lights", {}, u"Lighthouses", {}, {});
    schema->mProperties.push_back(CreateNewProperty(kPrimitiveType_Text, "flash", {}, u"Flash", {}, {}));
    PanelInfo info;
    info.name = u"Lighthouses";
    info.version = u"1.5";
    const zephcore::File manifest(package, u"manifest.xml");
    CHECK(WriteExtensionManifest(info, manifest.FullPath()));
    CHECK(WriteSchemaFile({{schema}, {}}, zephcore::File(package, u"schema/lights.xml")));
    info.name = u"org.example.view.lighthouses";
    CHECK(
        WriteViewDefinitionsFileFromSchema({schema}, {}, info, zephcore::File(package, u"view/lights.xml").FullPath()));

    ExtensionManifestParser::ManifestInfo read;
    CHECK(ParseExtensionManifestFromDocument(manifest.FullPath(), read));
    CHECK(read.name == u"Lighthouses" && read.version == u"1.5" && read.locFilePrefix.empty());
    CHECK(ExtensionPackages().empty());
    LoadAllViewDefinitions();
    CHECK(ExtensionPackages().size() == 1 && !HasErrors());
    const ExtensionPackage& loaded = ExtensionPackages().front();
    CHECK(loaded.path == package.FullPath() && loaded.version == 1.5F);
    CHECK(loaded.schemas == std::vector<UTF8String>{"http://example.org/lighthouses/"});
    CHECK(loaded.views == std::vector<UTF8String>{"org.example.view.lighthouses"});
    CHECK(PathEntryDefinition(PathForExpression("lights:flash")));
    return 0;
}

/// The same package from a folder of the host's own, and one from memory.
int CheckPackagesFromAnywhere() {
    const Session session;
    const UTF8String manifest = "<extension xmlns='" + ExtensionNamespaceURI + "' name='Piers' version='2'/>";
    ExtensionManifestParser::ManifestInfo info;
    CHECK(ParseExtensionManifestFromBuffer(manifest, u"manifest", info) && info.name == u"Piers");
    CHECK(LoadExtensionPackage(
        std::vector<PackageDocument>{{u"manifest.xml", manifest}, {u"schema/s.xml", kPanelProperties}}));
    CHECK(PathEntryDefinition(PathForExpression("buoys:number")));
    CHECK(RemoveExtensionPackage(u"Piers") && !PathEntryDefinition(PathForExpression("buoys:number")));
    CHECK(!LoadExtensionPackage(CustomExtensionsUserDirectory()));
    return 0;
}

int CheckConvertingAPanel() {
    const Session session;
    const zephcore::Dir panel(zephcore::Dir(PanelsDefinitionsUserDirectory(OrbVersion::kOrbVersion_4_0)), u"buoys");
    const std::filesystem::path folder = zephcore::PathToNative(panel.FullPath());
    Write(folder / "manifest.xml", kPanel);
    Write(folder / "buoys.xml", kPanelProperties);
    CHECK(panel.IsReadable());
    PanelInfo info;
    CHECK(ParseManifestFromDocument(zephcore::File(panel, u"manifest.xml").FullPath(), info));
    CHECK(info.label == u"Buoys" && info.propertyDescriptionFile == u"buoys.xml");

    UTF16String log;
    utility::LoadAndConvertGenericPanels(OrbVersion::kOrbVersion_4_0, log);
    CHECK(log.starts_with(u"SUCCESS - "));
    LoadAllViewDefinitions();
    CHECK(ExtensionPackages().size() == 2 && GetViewDefinitionForName("imported_buoys"));
    CHECK(PathEntryDefinition(PathForExpression("buoys:number")));
    RegisterBundledPackages();
    CHECK(ExtensionPackages().back().bundled && PathEntryDefinition(PathForExpression("photoshop:City")));
    return 0;
}

}  // namespace

int CheckExtensions(const Arguments& /*arguments*/) {
    return CheckMakingAPackage() | CheckPackagesFromAnywhere() | CheckConvertingAPanel();
}

}  // namespace host
