// Loading extension packages, against parsing their files alone.
#include <filesystem>
#include <memory>
#include <vector>

#include "ratio.h"
#include "support/temp_folder.h"
#include "zephcore/files.h"
#include "zephmetadata/zephmetadata.h"

using namespace zephmetadata;

namespace {

constexpr int kPackages = 500;
constexpr std::size_t kProperties = 20;
const std::string kShownNamespace = "http://ns.adobe.com/exif/1.0/";

std::string Prefix(int number) {
    return "bench" + std::to_string(number);
}

std::string Manifest(int number) {
    return "<extension xmlns=\"" + ExtensionNamespaceURI + "\" name=\"" + Prefix(number) + "\" version=\"1.0\"/>";
}

std::string PropertyName(std::size_t number) {
    return "property" + std::to_string(number);
}

std::string Schema(int number) {
    std::string text = "<xmp_definitions><xmp_schema namespace=\"http://example.org/" + Prefix(number) +
                       "/\" prefix=\"" + Prefix(number) + "\" label=\"$$$/bench/schema=Schema\">\n";
    for (std::size_t property = 0; property < kProperties; ++property) {
        text += "<xmp_property category=\"external\" name=\"" + PropertyName(property) +
                "\" type=\"text\" label=\"$$$/bench/label=Label\" description=\"$$$/bench/text=What it means\"/>\n";
    }
    return text + "</xmp_schema></xmp_definitions>";
}

/// Of built-in properties: they are known whether or not the schemas of the packages are registered.
std::string View(int number, const std::vector<std::string>& shown) {
    std::string text = "<views xmlns=\"" + UINamespaceURI + "\" xmlns:b=\"" + kShownNamespace +
                       "\"><view name=\"org.example." + Prefix(number) + "\" label=\"$$$/bench/view=View\">\n";
    for (const std::string& name : shown) {
        text += "<property name=\"b:" + name + "\"/>\n";
    }
    return text + "</view></views>";
}

/// The names of the properties that the views show.
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

/// The packages, in the machine-wide folder for the life of the object.
class Packages {
public:
    Packages() {
        const std::vector<std::string> shown = ShownProperties();
        for (int number = 0; number < kPackages; ++number) {
            Write(number, "manifest.xml", Manifest(number));
            Write(number, "schema/schema.xml", Schema(number));
            Write(number, "view/view.xml", View(number, shown));
        }
    }

    UTF16String Path(int number, const std::string& file) const {
        return zephcore::PathFromNative((Folder(number) / file).native());
    }

private:
    std::filesystem::path Folder(int number) const {
        return mFolder.Path() / "base/SYSTEM/Corvid/XMP/Metadata Extensions" / Prefix(number);
    }
    void Write(int number, const std::string& file, const std::string& text) const {
        mFolder.Write(Folder(number) / file, text);
    }

    support::TempFolder mFolder;
};

void LoadPackages() {
    Initialize();
    LoadAllViewDefinitions();
    bench::Require(ExtensionPackages().size() == kPackages && !HasErrors(), "loading the packages");
    Terminate();
}

/// What every program needs that reads the same files. The start of the library is on both sides; it takes a small part.
void ParseFiles(const Packages& packages) {
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
    return {"packages", LoadPackages, [packages = std::make_shared<Packages>()] { ParseFiles(*packages); }, 2};
}
