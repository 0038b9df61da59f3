// Makes an extension package at run time, uses it and takes it out again: make_package FOLDER
//
// The package is a schema and a panel for lighthouses. In the user's folder of packages (CustomExtensionsUserDirectory)
// the command line and every other host would find it from then on; this one is loaded from a folder of the host's own.
#include <zephcore/files.h>
#include <zephcore/localizer.h>
#include <zephcore/text.h>
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <string>

namespace {

using zephmetadata::kPrimitiveType_Integer;
using zephmetadata::kPrimitiveType_Text;

/// A message or a label for people: escapes that stand for quotes and the like resolved, in UTF-8.
std::string Shown(const zephmetadata::UTF16String& text) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(text));
}

bool WritePackage(const zephcore::Dir& folder) {
    // Each text has a key for its translations, and stands here in English.
    const auto schema = zephmetadata::CreateNewSchema("http://example.org/lighthouses/1.0/", "lights",
                                                      u"$$$/example/lights=Lighthouses", u"Lighthouses", u"", u"");
    schema->mProperties = {
        zephmetadata::CreateNewProperty(kPrimitiveType_Text, "flash", u"$$$/example/lights/flash=Flash", u"Flash",
                                        u"$$$/example/lights/flashText=Its rhythm", u"Its rhythm"),
        zephmetadata::CreateNewProperty(kPrimitiveType_Integer, "height", u"$$$/example/lights/height=Height",
                                        u"Height", u"", u""),
    };
    schema->mProperties.back()->mMin = 0;

    zephmetadata::GenericPanelManifestParser::ManifestInfo info;
    info.name = u"Lighthouses";
    info.version = u"1.0";
    const bool hasManifest = WriteExtensionManifest(info, zephcore::File(folder, u"manifest.xml").FullPath());
    const bool hasSchema = zephmetadata::WriteSchemaFile({{schema}, {}}, zephcore::File(folder, u"schema/lights.xml"));
    info.name = u"org.example.view.lighthouses";
    info.label = u"Lighthouses";
    const zephcore::File view(folder, u"view/lights.xml");
    return hasManifest && hasSchema && WriteViewDefinitionsFileFromSchema({schema}, {}, info, view.FullPath());
}

/// What the loading of packages had to complain of.
bool ShowProblems(const std::vector<zephmetadata::ErrorInfo>& problems) {
    for (const zephmetadata::ErrorInfo& problem : problems) {
        std::cerr << Describe(problem) << '\n';
    }
    return !problems.empty();
}

void UsePackage() {
    const zephmetadata::XMPMetaPtr tree = zephmetadata::CreateXMPMeta();
    const zephmetadata::Path height = zephmetadata::PathForExpression("lights:height");
    std::cout << "-3: " << Describe(TrySetValue(tree.get(), height, -3)) << '\n';
    if (TrySetValue(tree.get(), height, 41).mResult == zephmetadata::kEditResult_Changed) {
        std::cout << Shown(PathEntryDefinition(height)->mLabel) << ": 41\n";
    }
    if (const auto view = zephmetadata::GetViewDefinitionForName("org.example.view.lighthouses")) {
        std::cout << "A view with " << view->mItems.size() << " item\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    const zephmetadata::Library library;
    const zephcore::Dir folder(argc == 2 ? zephcore::PathFromNative(argv[1]) : u"");
    if (argc != 2 || !library.IsRunning() || !WritePackage(folder)) {
        std::cerr << "the package cannot be written\n";
        return 1;
    }
    const zephmetadata::ErrorScope scope;
    const auto package = zephmetadata::LoadExtensionPackage(folder.FullPath());
    if (ShowProblems(scope.Errors()) || !package) {
        return 1;
    }
    UsePackage();
    zephmetadata::RemoveExtensionPackage(package->name);
    std::cout << (PathEntryDefinition(zephmetadata::PathForExpression("lights:height")) ? "still there\n" : "Gone\n");
}
