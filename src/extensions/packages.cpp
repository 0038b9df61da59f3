#include "extensions/packages.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "definitions/entry_index.h"
#include "definitions/loading.h"
#include "definitions/package_contents.h"
#include "definitions/registry.h"
#include "extensions/bundled_packages.h"
#include "extensions/package_discovery.h"
#include "extensions/package_sources.h"
#include "frame/errors.h"
#include "frame/initialization.h"
#include "views/view_registry.h"
#include "zephcore/localizer.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kNothingToLoad =
    u"$$$/zephmetadata/ErrorInManifestParser/MissingSchemaAndView=neither schema nor view file is present in extension "
    u"package.";

/// What taking a package out needs.
struct Registered {
    PackageContents mDefinitions;
    Views mViews;
    std::size_t mTranslations = 0;  // the layer of the localiser
};

struct Packages {
    std::vector<ExtensionPackage> mInOrder;
    std::map<UTF16String, Registered> mByName;
};

Packages& Loaded() {
    static Packages packages;
    return packages;
}

bool IsLoaded(const ExtensionPackage& package) {
    return Loaded().mByName.contains(package.name);
}

LoadedDocument LoadSchemaDocument(const SourceDocument& document) {
    if (document.mText == nullptr) {
        return LoadDefinitionsDocument(document.mPath, DocumentOrigin::kExtensionPackage);
    }
    return LoadDefinitions(ParseBufferForDefinitions(*document.mText, document.mPath), document.mPath,
                           DocumentOrigin::kPackageInMemory);
}

bool LoadSchemas(ExtensionPackage& package, const PackageSource& source) {
    const PackageSource::Documents documents = source.XMLDocuments(u"schema", ErrorKind::DefinitionParsingError);
    std::set<UTF8String> seen;
    for (const SourceDocument& document : documents.mReadable) {
        LoadedDocument loaded = LoadSchemaDocument(document);
        package.fields.insert(package.fields.end(), loaded.mFields.begin(), loaded.mFields.end());
        for (UTF8String& schema : loaded.mNamespaces) {
            if (seen.insert(schema).second) {
                package.schemas.push_back(std::move(schema));
            }
        }
    }
    return documents.mHasAny;
}

bool LoadViews(ExtensionPackage& package, const PackageSource& source, Views& views) {
    const PackageSource::Documents documents = source.XMLDocuments(u"view", ErrorKind::ViewDefinitionParsingError);
    for (const SourceDocument& document : documents.mReadable) {
        const RecordLimit limit;
        const Views parsed = document.mText == nullptr
                                 ? ParseViewDefinitionsFromDocument(document.mPath)
                                 : ParseViewDefinitionsFromBuffer(*document.mText, document.mPath);
        AddPackageViews(package, parsed, document.mPath, views);
    }
    return documents.mHasAny;
}

void LoadFrom(ExtensionPackage& package, const PackageSource& source, Views& views) {
    // First, as the labels of schemas are translated while their documents are read.
    source.LoadTranslations(package);
    const bool hasSchemas = LoadSchemas(package, source);
    const bool hasViews = LoadViews(package, source, views);
    if (!hasSchemas && !hasViews) {
        SendError(ErrorKind::ExtensionManifestParsingError, zephcore::ZString(kNothingToLoad), package.path);
    }
}

/// Loads a package whose name is not taken, with @p load, and lists it.
template <typename Load>
void Enter(ExtensionPackage package, const Load& load) {
    Registered& registered = Loaded().mByName[package.name];
    registered.mTranslations = zephcore::Localizer::Get().BeginLayer();
    const EntryIndexScope indexed;  // many documents may add to one schema
    const PackageRecording recording(registered.mDefinitions);
    load(package, registered.mViews);
    Loaded().mInOrder.push_back(std::move(package));
}

void EnterFolder(ExtensionPackage package) {
    const PackageFolderSource source(package.path);
    Enter(std::move(package), [&](ExtensionPackage& entered, Views& views) { LoadFrom(entered, source, views); });
}

/// Loads @p package, when there is one and its name is not taken; what then is listed.
template <typename EnterOne>
std::optional<ExtensionPackage> LoadOne(std::optional<ExtensionPackage> package, const EnterOne& enter) {
    if (package && IsLoaded(*package)) {
        ReportNameTaken(*package);
        return std::nullopt;
    }
    if (package) {
        enter(std::move(*package));
        return Loaded().mInOrder.back();
    }
    return std::nullopt;
}

}  // namespace

void AddPackageViews(ExtensionPackage& package, const Views& parsed, const UTF16String& source, Views& views) {
    for (const sp<ViewDefinition>& view : parsed) {
        if (AddViewDefinition(view, source)) {
            package.views.push_back(view->mName);
            views.push_back(view);
        }
    }
}

void LoadExtensionPackages(std::vector<ExtensionPackage> bundled) {
    PackageDiscovery discovery;
    for (ExtensionPackage& package : bundled) {
        discovery.Add(std::move(package));
    }
    discovery.Search(CustomExtensionsGlobalDirectory());
    discovery.Search(CustomExtensionsUserDirectory());
    const EntryIndexScope indexed;
    for (ExtensionPackage& package : discovery.Take()) {
        if (IsLoaded(package)) {
            ReportNameTaken(package);
        } else if (package.bundled) {
            Enter(std::move(package), LoadBundledPackage);
        } else {
            EnterFolder(std::move(package));
        }
    }
}

void AddBundledPackages(std::vector<ExtensionPackage> bundled) {
    const EntryIndexScope indexed;
    for (ExtensionPackage& package : bundled) {
        if (!IsLoaded(package)) {
            Enter(std::move(package), LoadBundledPackage);
        }
    }
}

void LoadPackageTranslations() {
    for (const ExtensionPackage& package : Loaded().mInOrder) {
        if (package.bundled) {
            LoadBundledTranslations(package);
        } else if (!package.path.empty()) {
            PackageFolderSource(package.path).LoadTranslations(package);
        }
    }
}

void ClearExtensionPackages() {
    Loaded() = {};
}

const std::vector<ExtensionPackage>& ExtensionPackages() {
    return Loaded().mInOrder;
}

std::optional<ExtensionPackage> LoadExtensionPackage(const UTF16String& folder) {
    return IsInitialized() ? LoadOne(ReadPackageManifest(zephcore::Dir(folder).FullPath()), EnterFolder) : std::nullopt;
}

std::optional<ExtensionPackage> LoadExtensionPackage(const std::vector<PackageDocument>& documents) {
    if (!IsInitialized()) {
        return std::nullopt;
    }
    return LoadOne(ReadPackageManifest(documents), [&](ExtensionPackage package) {
        const PackageMemorySource source(documents);
        Enter(std::move(package), [&](ExtensionPackage& entered, Views& views) { LoadFrom(entered, source, views); });
    });
}

bool RemoveExtensionPackage(const UTF16String& name) {
    const auto found = Loaded().mByName.find(name);
    if (found == Loaded().mByName.end()) {
        return false;
    }
    RemoveViewDefinitions(found->second.mViews);
    found->second.mDefinitions.TakeOut();
    zephcore::Localizer::Get().RemoveLayer(found->second.mTranslations);
    std::erase_if(Loaded().mInOrder, [&](const ExtensionPackage& package) { return package.name == found->first; });
    Loaded().mByName.erase(found);
    return true;
}

}  // namespace zephmetadata
