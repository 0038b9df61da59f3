// Loading extension packages, against parsing their files alone.
#include <memory>
#include <vector>

#include "many_packages.h"
#include "ratio.h"

using namespace zephmetadata;

namespace {

constexpr int kPackages = 500;
constexpr std::size_t kProperties = 20;
const std::string kShownNamespace = "http://ns.adobe.com/exif/1.0/";

/// The names of the properties that the views show: built-in ones, which are known whether or not the schemas of the
/// packages are registered.
std::vector<std::string> ShownProperties() {
    Initialize();
    std::vector<std::string> names;
    for (const auto& property : NamespaceDefinition(kShownNamespace)->mProperties) {
        if (names.size() < kProperties && property->mName.find('/') == std::string::npos) {
            names.push_back(property->mName);
        }
    }
    Terminate();
    bench::Require(names.size() == kProperties, "finding properties to show");
    return names;
}

void LoadPackages() {
    Initialize();
    LoadAllViewDefinitions();
    bench::Require(ExtensionPackages().size() == kPackages && !HasErrors(), "loading the packages");
    Terminate();
}

/// What every program needs that reads the same files. The start of the library is on both sides; it takes a small part.
void ParseFiles(const bench::ManyPackages& packages) {
    Initialize();
    std::size_t properties = 0;
    for (int number = 0; number < kPackages; ++number) {
        ExtensionManifestParser::ManifestInfo manifest;
        bench::Require(ParseExtensionManifestFromDocument(packages.Path(number, "manifest.xml"), manifest),
                       "parsing a manifest");
        const Definitions definitions = ParseDocumentForDefinitions(packages.Path(number, "schema/schema.xml"));
        const auto views = ParseViewDefinitionsFromDocument(packages.Path(number, "view/view.xml"));
        properties += definitions.first.front()->mProperties.size() + views.front()->mItems.size();
    }
    bench::Require(properties == 2 * kPackages * kProperties && !HasErrors(), "parsing the files");
    Terminate();
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    const auto packages = std::make_shared<ManyPackages>(kPackages, kProperties, kShownNamespace, ShownProperties());
    return {"packages", LoadPackages, [packages] { ParseFiles(*packages); }, 2};
}
