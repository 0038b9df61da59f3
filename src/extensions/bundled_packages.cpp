#include "extensions/bundled_packages.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "definitions/loading.h"
#include "extensions/package_discovery.h"
#include "frame/translations.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr auto kOwn = zephcore::Module::kOwn;
constexpr std::string_view kManifest = "/manifest";

std::optional<UTF8String> Document(std::string_view name, std::string_view type) {
    std::string_view bytes;
    return zephcore::GetBinaryFromModule(kOwn, name, type, bytes) ? std::optional(UTF8String(bytes)) : std::nullopt;
}

void LoadTranslations(const ExtensionPackage& package, const UTF8String& folder) {
    for (const UTF16String& language : ApplicationLanguages()) {
        const UTF16String file = package.locFilePrefix + u"_" + language;
        if (const auto texts = Document(folder + "/loc/" + zephcore::UTF16to8(file), "dict")) {
            zephcore::Localizer::Get().LoadBuffer(*texts);
        }
    }
}

/// Calls @p load with the text and the name of each document in @p folder of the resources.
template <typename Load>
void LoadDocuments(const UTF8String& folder, const Load& load) {
    for (const UTF8String& name : zephcore::GetResourceNames(kOwn, "xml")) {
        if (name.starts_with(folder)) {
            load(Document(name, "xml").value_or(UTF8String()), zephcore::UTF8to16(name));
        }
    }
}

}  // namespace

std::vector<ExtensionPackage> BundledPackages() {
    std::vector<ExtensionPackage> packages;
    for (const UTF8String& name : zephcore::GetResourceNames(kOwn, "xml")) {
        if (!name.ends_with(kManifest)) {
            continue;
        }
        auto handler = std::make_unique<ExtensionManifestParser>();
        const ExtensionManifestParser::ManifestInfo& info = handler->Info();
        const auto parser = zephcore::GetParser(std::move(handler));
        parser->ParseBuffer(Document(name, "xml").value_or(UTF8String()));
        const UTF8String folder = name.substr(0, name.size() - kManifest.size());
        packages.push_back({.path = zephcore::UTF8to16(folder),
                            .name = info.name,
                            .version = VersionNumber(info.version),
                            .locFilePrefix = info.locFilePrefix,
                            .schemas = {},
                            .views = {},
                            .fields = {},
                            .bundled = true});
    }
    return packages;
}

void LoadBundledPackage(ExtensionPackage& package, Views& views) {
    const UTF8String folder = zephcore::UTF16to8(package.path);
    LoadTranslations(package, folder);
    std::set<UTF8String> seen;
    LoadDocuments(folder + "/schema/", [&](const UTF8String& document, const UTF16String& name) {
        Definitions parsed = ParseBufferForDefinitions(document, name);
        JoinRegisteredDefinitions(parsed, name, package.fields);
        const LoadedDocument loaded = LoadDefinitions(std::move(parsed), name, DocumentOrigin::kPackageInMemory);
        std::ranges::copy_if(loaded.mNamespaces, std::back_inserter(package.schemas),
                             [&](const UTF8String& schema) { return seen.insert(schema).second; });
    });
    LoadDocuments(folder + "/view/", [&](const UTF8String& document, const UTF16String& name) {
        AddPackageViews(package, ParseViewDefinitionsFromBuffer(document, name), name, views);
    });
}

}  // namespace zephmetadata
