#include "extensions/package_sources.h"

#include <algorithm>

#include "extensions/package_discovery.h"
#include "frame/errors.h"
#include "frame/translations.h"
#include "zephcore/localizer.h"

namespace zephmetadata {

namespace {

using zephcore::File;

constexpr std::u16string_view kMissingManifest =
    u"$$$/zephmetadata/ErrorInManifestParser/MissingManifest=manifest file is missing from extension package.";
constexpr std::u16string_view kMissingLocFolder =
    u"$$$/zephmetadata/ErrorInManifestParser/MissingLocDir=localization directory is missing from extension package.";
constexpr std::u16string_view kUnreadableTranslations =
    u"$$$/zephmetadata/ExtensionPackages/UnreadableLocFile=localization file can't be read.";

/// What the library itself has to say, of packages among others, is in nobody else's words.
constexpr std::u16string_view kOwnMessages = u"$$$/zephmetadata/";

constexpr auto kManifestKind = ErrorKind::ExtensionManifestParsingError;
constexpr std::u16string_view kManifestName = u"manifest.xml";

void ReportMissingTranslations(const ExtensionPackage& package, const UTF16String& place) {
    if (!package.locFilePrefix.empty()) {
        SendError(kManifestKind, zephcore::ZString(kMissingLocFolder), place);
    }
}

/// The names of the localisation files of @p package, in the order in which they are read; without those that would be
/// no name of a file.
std::vector<UTF16String> TranslationsNames(const ExtensionPackage& package) {
    const UTF16String& prefix = package.locFilePrefix;
    std::vector<UTF16String> names;
    for (const UTF16String& language : ApplicationLanguages()) {
        UTF16String name = prefix;
        name.append(prefix.empty() ? u"" : u"_").append(language).append(u".dict");
        if (prefix != u"." && prefix != u".." && name.find(u'/') == UTF16String::npos) {
            names.push_back(std::move(name));
        }
    }
    return names;
}

const PackageDocument* Find(const std::vector<PackageDocument>& documents, std::u16string_view name) {
    const auto found = std::find_if(documents.begin(), documents.end(),
                                    [&](const PackageDocument& document) { return document.name == name; });
    return found == documents.end() ? nullptr : &*found;
}

ExtensionPackage PackageOf(const ExtensionManifestParser::ManifestInfo& info, const UTF16String& path) {
    return {path, info.name, VersionNumber(info.version), info.locFilePrefix, {}, {}, {}};
}

}  // namespace

PackageSource::Documents PackageFolderSource::XMLDocuments(std::u16string_view subfolder, ErrorKind kind) const {
    Documents documents;
    for (const File& file : mFolder.Files(subfolder)) {
        if (file.GetExtension(true) != u".xml") {
            continue;
        }
        documents.mHasAny = true;
        if (mFolder.MayRead(file, kind)) {
            documents.mReadable.push_back({file.FullPath()});
        }
    }
    return documents;
}

void PackageFolderSource::LoadTranslations(const ExtensionPackage& package) const {
    const zephcore::Dir translations(mFolder.Folder(), u"loc");
    if (!translations.Exists()) {
        ReportMissingTranslations(package, translations.FullPath());
        return;
    }
    if (!mFolder.Subfolder(u"loc")) {
        return;
    }
    constexpr auto kKind = ErrorKind::ExtensionPackageRegistrationError;
    for (const UTF16String& name : TranslationsNames(package)) {
        const File file(translations, name);
        if (file.Exists() && mFolder.MayRead(file, kKind) &&
            !zephcore::Localizer::Get().LoadFile(file.FullPath(), kOwnMessages)) {
            SendError(kKind, zephcore::ZString(kUnreadableTranslations), file.FullPath());
        }
    }
}

PackageSource::Documents PackageMemorySource::XMLDocuments(std::u16string_view subfolder, ErrorKind /*kind*/) const {
    const UTF16String folder = UTF16String(subfolder) + u"/";
    Documents documents;
    for (const PackageDocument& document : mDocuments) {
        if (document.name.starts_with(folder) && document.name.ends_with(u".xml")) {
            documents.mReadable.push_back({document.name, &document.text});
        }
    }
    documents.mHasAny = !documents.mReadable.empty();
    return documents;
}

void PackageMemorySource::LoadTranslations(const ExtensionPackage& package) const {
    const bool hasAny = std::any_of(mDocuments.begin(), mDocuments.end(),
                                    [](const PackageDocument& document) { return document.name.starts_with(u"loc/"); });
    if (!hasAny) {
        ReportMissingTranslations(package, u"loc");
    }
    for (const UTF16String& name : TranslationsNames(package)) {
        if (const PackageDocument* const document = Find(mDocuments, u"loc/" + name)) {
            zephcore::Localizer::Get().LoadBuffer(document->text, kOwnMessages);
        }
    }
}

std::optional<ExtensionPackage> ReadPackageManifest(const UTF16String& folder) {
    const File manifest{zephcore::Dir(folder), UTF16String(kManifestName)};
    if (!manifest.Exists()) {
        SendError(kManifestKind, zephcore::ZString(kMissingManifest), manifest.FullPath());
        return std::nullopt;
    }
    ExtensionManifestParser::ManifestInfo info;
    const bool isRead = PackageFolder(folder).MayRead(manifest, kManifestKind) &&
                        ParseExtensionManifestFromDocument(manifest.FullPath(), info);
    return isRead ? std::optional(PackageOf(info, folder)) : std::nullopt;
}

std::optional<ExtensionPackage> ReadPackageManifest(const std::vector<PackageDocument>& documents) {
    const PackageDocument* const manifest = Find(documents, kManifestName);
    if (manifest == nullptr) {
        SendError(kManifestKind, zephcore::ZString(kMissingManifest), UTF16String(kManifestName));
        return std::nullopt;
    }
    ExtensionManifestParser::ManifestInfo info;
    return ParseExtensionManifestFromBuffer(manifest->text, manifest->name, info) ? std::optional(PackageOf(info, {}))
                                                                                  : std::nullopt;
}

}  // namespace zephmetadata
