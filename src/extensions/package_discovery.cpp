#include "extensions/package_discovery.h"

#include <iterator>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

#include "extensions/package_sources.h"
#include "frame/errors.h"
#include "zephcore/files.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kSameVersions =
    u"$$$/zephmetadata/ExtensionPackages/DuplicateExtensionPackage/SameVersions=extension package with name "
    u"#{quot}@0#{quot} already exists.";
constexpr std::u16string_view kDifferentVersions =
    u"$$$/zephmetadata/ExtensionPackages/DuplicateExtensionPackage/DifferentVersions=extension package with name "
    u"#{quot}@0#{quot} already exists. Package with lower version number #{quot}@1#{quot} will be ignored.";

void Report(std::u16string_view key, std::initializer_list<UTF16String> arguments, const UTF16String& path) {
    SendError(ErrorKind::ExtensionPackageRegistrationError, zephcore::ZString(key, arguments), path);
}

}  // namespace

void ReportNameTaken(const ExtensionPackage& package) {
    Report(kSameVersions, {package.name}, package.path);
}

float VersionNumber(const UTF16String& text) {
    std::istringstream stream(zephcore::UTF16to8(text));
    stream.imbue(std::locale::classic());
    float number = 0;
    return stream >> number ? number : 0;
}

void PackageDiscovery::Search(const UTF16String& path) {
    const zephcore::Dir folder(path);
    const std::vector<zephcore::Dir> subfolders = folder.Subfolders();
    if (subfolders.empty() && folder.Exists()) {
        ReportUnlisted(folder);
    }
    for (const zephcore::Dir& subfolder : subfolders) {
        AddFolder(subfolder.FullPath());
    }
}

void PackageDiscovery::AddFolder(const UTF16String& path) {
    if (std::optional<ExtensionPackage> package = ReadPackageManifest(path)) {
        Add(std::move(*package));
    }
}

bool PackageDiscovery::Add(ExtensionPackage package) {
    const auto [entry, isNew] = mByName.try_emplace(package.name);
    if (isNew) {
        entry->second = mPackages.insert(mPackages.end(), std::move(package));
        return true;
    }
    const ExtensionPackage& listed = *entry->second;
    if (package.version == listed.version) {
        Report(kSameVersions, {listed.name}, listed.path);
        return false;
    }
    const bool isNewer = package.version > listed.version;
    const ExtensionPackage& leftOut = isNewer ? listed : package;
    Report(kDifferentVersions, {leftOut.name, zephcore::NumberToString(leftOut.version, 1, 1)}, leftOut.path);
    if (isNewer) {
        mPackages.erase(entry->second);
        entry->second = mPackages.insert(mPackages.end(), std::move(package));
    }
    return false;
}

std::vector<ExtensionPackage> PackageDiscovery::Take() {
    mByName.clear();
    return {std::make_move_iterator(mPackages.begin()), std::make_move_iterator(mPackages.end())};
}

}  // namespace zephmetadata
