#include "extensions/bundled_packages.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string_view>
#include <utility>

#include "definitions/definitions_parser.h"
#include "definitions/loading.h"
#include "extensions/package_discovery.h"
#include "frame/translations.h"
#include "platform/compiled/compiled_document.h"
#include "views/views_parser.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr auto kOwn = zephcore::Module::kOwn;
constexpr std::string_view kManifest = "/manifest";
constexpr std::string_view kEvents = "events";

bool Find(std::string_view name, std::string_view type, std::string_view& bytes) {
    return zephcore::GetBinaryFromModule(kOwn, name, type, bytes);
}

/// Calls @p load with the events (ReplayDocument) and the name of each XML document in @p folder of the resources.
template <typename Load>
void LoadDocuments(const UTF8String& folder, const Load& load) {
    for (const UTF8String& name : zephcore::GetResourceNames(kOwn, kEvents)) {
        if (std::string_view events; name.starts_with(folder) && Find(name, kEvents, events)) {
            load(events, zephcore::UTF8to16(name));
        }
    }
}

}  // namespace

std::vector<ExtensionPackage> BundledPackages() {
    std::vector<ExtensionPackage> packages;
    for (const UTF8String& name : zephcore::GetResourceNames(kOwn, kEvents)) {
        std::string_view events;
        if (!name.ends_with(kManifest) || !Find(name, kEvents, events)) {
            continue;
        }
        ExtensionManifestParser handler;
        zephcore::ReplayDocument(events, handler);
        const ExtensionManifestParser::ManifestInfo& info = handler.Info();
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

void LoadBundledTranslations(const ExtensionPackage& package) {
    const UTF8String folder = zephcore::UTF16to8(package.path);
    for (const UTF16String& language : ApplicationLanguages()) {
        const UTF16String file = package.locFilePrefix + u"_" + language;
        if (std::string_view texts; Find(folder + "/loc/" + zephcore::UTF16to8(file), "dict", texts)) {
            zephcore::Localizer::Get().LoadBuffer(UTF8String(texts));
        }
    }
}

void LoadBundledPackage(ExtensionPackage& package, Views& views) {
    const UTF8String folder = zephcore::UTF16to8(package.path);
    LoadBundledTranslations(package);
    std::set<UTF8String> seen;
    LoadDocuments(folder + "/schema/", [&](std::string_view events, const UTF16String& name) {
        Definitions parsed = ReplayDefinitions(events, name);
        JoinRegisteredDefinitions(parsed, name, package.fields);
        const LoadedDocument loaded = LoadDefinitions(std::move(parsed), name, DocumentOrigin::kPackageInMemory);
        std::ranges::copy_if(loaded.mNamespaces, std::back_inserter(package.schemas),
                             [&](const UTF8String& schema) { return seen.insert(schema).second; });
    });
    LoadDocuments(folder + "/view/", [&](std::string_view events, const UTF16String& name) {
        AddPackageViews(package, ReplayViewDefinitions(events, name), name, views);
    });
}

}  // namespace zephmetadata
