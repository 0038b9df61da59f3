#include "extensions/packages.h"

#include <set>
#include <string_view>
#include <utility>

#include "definitions/entry_index.h"
#include "definitions/loading.h"
#include "definitions/registry.h"
#include "extensions/bundled_packages.h"
#include "extensions/package_discovery.h"
#include "extensions/package_folder.h"
#include "frame/errors.h"
#include "frame/translations.h"
#include "views/view_registry.h"
#include "zephcore/files.h"
#include "zephcore/localizer.h"

namespace zephmetadata {

namespace {

using zephcore::File;

constexpr std::u16string_view kMissingLocFolder =
    u"$$$/zephmetadata/ErrorInManifestParser/MissingLocDir=localization directory is missing from extension package.";
constexpr std::u16string_view kNothingToLoad =
    u"$$$/zephmetadata/ErrorInManifestParser/MissingSchemaAndView=neither schema nor view file is present in extension "
    u"package.";
constexpr std::u16string_view kUnreadableTranslations =
    u"$$$/zephmetadata/ExtensionPackages/UnreadableLocFile=localization file can't be read.";

/// What the library itself has to say, of packages among others, is in nobody else's words.
constexpr std::u16string_view kOwnMessages = u"$$$/zephmetadata/";

std::vector<ExtensionPackage>& Loaded() {
    static std::vector<ExtensionPackage> packages;
    return packages;
}

/// The name of the localisation file of @p package for a language; empty when that would be no name of a file.
UTF16String TranslationsName(const ExtensionPackage& package, const UTF16String& language) {
    const UTF16String& prefix = package.locFilePrefix;
    const UTF16String name = prefix + (prefix.empty() ? u"" : u"_") + language + u".dict";
    const bool isPart = prefix == u"." || prefix == u"..";
    return isPart || name.find(u'/') != UTF16String::npos ? UTF16String() : name;
}

void LoadTranslations(const ExtensionPackage& package, const PackageFolder& folder) {
    const zephcore::Dir translations(folder.Folder(), u"loc");
    if (!translations.Exists()) {
        if (!package.locFilePrefix.empty()) {
            SendError(ErrorKind::ExtensionManifestParsingError, zephcore::ZString(kMissingLocFolder),
                      translations.FullPath());
        }
        return;
    }
    if (!folder.Subfolder(u"loc")) {
        return;
    }
    constexpr auto kKind = ErrorKind::ExtensionPackageRegistrationError;
    for (const UTF16String& language : ApplicationLanguages()) {
        const UTF16String name = TranslationsName(package, language);
        const File file(translations, name);
        if (name.empty() || !file.Exists() || !folder.MayRead(file, kKind)) {
            continue;
        }
        if (!zephcore::Localizer::Get().LoadFile(file.FullPath(), kOwnMessages)) {
            SendError(kKind, zephcore::ZString(kUnreadableTranslations), file.FullPath());
        }
    }
}

/// Calls @p load with the path of each document of a subfolder; whether there is any document, read or not.
template <typename Load>
bool LoadDocuments(const PackageFolder& folder, std::u16string_view subfolder, ErrorKind kind, const Load& load) {
    bool hasDocuments = false;
    for (const File& document : folder.Files(subfolder)) {
        if (document.GetExtension(true) != u".xml") {
            continue;
        }
        hasDocuments = true;
        if (folder.MayRead(document, kind)) {
            load(document.FullPath());
        }
    }
    return hasDocuments;
}

bool LoadSchemas(ExtensionPackage& package, const PackageFolder& folder) {
    std::set<UTF8String> seen;
    return LoadDocuments(folder, u"schema", ErrorKind::DefinitionParsingError, [&](const UTF16String& path) {
        LoadedDocument loaded = LoadDefinitionsDocument(path, DocumentOrigin::kExtensionPackage);
        package.fields.insert(package.fields.end(), loaded.mFields.begin(), loaded.mFields.end());
        for (UTF8String& schema : loaded.mNamespaces) {
            if (seen.insert(schema).second) {
                package.schemas.push_back(std::move(schema));
            }
        }
    });
}

bool LoadViews(ExtensionPackage& package, const PackageFolder& folder) {
    return LoadDocuments(folder, u"view", ErrorKind::ViewDefinitionParsingError, [&](const UTF16String& path) {
        const RecordLimit limit;
        for (const sp<ViewDefinition>& view : ParseViewDefinitionsFromDocument(path)) {
            if (AddViewDefinition(view, path)) {
                package.views.push_back(view->mName);
            }
        }
    });
}

void LoadPackage(ExtensionPackage& package) {
    if (package.bundled) {
        LoadBundledPackage(package);
        return;
    }
    const PackageFolder folder(package.path);
    // First, as the labels of schemas are translated while their documents are read.
    LoadTranslations(package, folder);
    const bool hasSchemas = LoadSchemas(package, folder);
    const bool hasViews = LoadViews(package, folder);
    if (!hasSchemas && !hasViews) {
        SendError(ErrorKind::ExtensionManifestParsingError, zephcore::ZString(kNothingToLoad), package.path);
    }
}

}  // namespace

void LoadExtensionPackages(std::vector<ExtensionPackage> bundled) {
    PackageDiscovery discovery;
    for (ExtensionPackage& package : bundled) {
        discovery.Add(std::move(package));
    }
    discovery.Search(CustomExtensionsGlobalDirectory());
    discovery.Search(CustomExtensionsUserDirectory());
    Loaded() = discovery.Take();
    const EntryIndexScope indexed;  // many documents may add to one schema
    for (ExtensionPackage& package : Loaded()) {
        LoadPackage(package);
    }
}

void AddBundledPackages(std::vector<ExtensionPackage> bundled) {
    std::set<UTF16String> names;
    for (const ExtensionPackage& package : Loaded()) {
        names.insert(package.name);
    }
    const EntryIndexScope indexed;
    for (ExtensionPackage& package : bundled) {
        if (!names.contains(package.name)) {
            LoadBundledPackage(Loaded().emplace_back(std::move(package)));
        }
    }
}

void LoadPackageTranslations() {
    for (const ExtensionPackage& package : Loaded()) {
        if (package.bundled) {
            LoadBundledTranslations(package);
        } else {
            LoadTranslations(package, PackageFolder(package.path));
        }
    }
}

void ClearExtensionPackages() {
    Loaded().clear();
}

const std::vector<ExtensionPackage>& ExtensionPackages() {
    return Loaded();
}

}  // namespace zephmetadata
