#include "extensions/package_folder.h"

#include <cstdint>
#include <utility>

#include "frame/errors.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kLeadsOutside =
    u"$$$/zephmetadata/ExtensionPackages/LeadsOutside=file or folder leads out of its extension package.";
constexpr std::u16string_view kUnreadableFolder =
    u"$$$/zephmetadata/ExtensionPackages/UnreadableFolder=folder can't be read.";
constexpr std::u16string_view kTooLarge =
    u"$$$/zephmetadata/ExtensionPackages/TooLarge=file is larger than @0 MB, the most that is read.";

constexpr std::uint64_t kMostMegabytes = 64;

}  // namespace

void ReportUnlisted(const zephcore::Dir& folder) {
    if (!folder.IsReadable()) {
        SendError(ErrorKind::ExtensionPackageRegistrationError, zephcore::ZString(kUnreadableFolder),
                  folder.FullPath());
    }
}

std::optional<zephcore::Dir> PackageFolder::Subfolder(std::u16string_view name) const {
    zephcore::Dir folder(mFolder, UTF16String(name));
    return folder.Exists() && Holds(folder.FullPath()) ? std::optional(std::move(folder)) : std::nullopt;
}

std::vector<zephcore::File> PackageFolder::Files(std::u16string_view subfolder) const {
    const std::optional<zephcore::Dir> folder = Subfolder(subfolder);
    if (!folder) {
        return {};
    }
    std::vector<zephcore::File> files = folder->Files();
    if (files.empty()) {
        ReportUnlisted(*folder);
    }
    return files;
}

bool PackageFolder::MayRead(const zephcore::File& file, ErrorKind kind) const {
    if (!Holds(file.FullPath())) {
        return false;
    }
    if (zephcore::FileUtils::FileLength(file.FullPath()).value_or(0) > (kMostMegabytes << 20U)) {
        SendError(kind, zephcore::ZString(kTooLarge, {zephcore::NumberToString(kMostMegabytes, 1, 0)}),
                  file.FullPath());
        return false;
    }
    return true;
}

bool PackageFolder::Holds(const UTF16String& path) const {
    using zephcore::FileUtils::CanonicalPath;
    if (!zephcore::FileUtils::IsLink(path)) {
        return true;
    }
    const auto folder = CanonicalPath(mFolder.FullPath());
    const auto target = CanonicalPath(path);
    // With slashes, so that "tides2" does not lie in "tides"; a link to the package folder itself stays in it.
    if (folder && target && (*target + u"/").starts_with(*folder + u"/")) {
        return true;
    }
    SendError(ErrorKind::ExtensionPackageRegistrationError, zephcore::ZString(kLeadsOutside), path);
    return false;
}

}  // namespace zephmetadata
