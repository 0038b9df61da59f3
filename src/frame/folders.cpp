#include <string_view>

#include "zephcore/files.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

using zephcore::Dir;

/// The id under which the platform knows the folder of files that all programs and users share.
constexpr int kCommonFilesId = 44;

constexpr std::u16string_view kCustomDefinitions = u"Corvid/XMP/Custom Quillet Panels/4.0/custom";
constexpr std::u16string_view kExtensions = u"Corvid/XMP/Metadata Extensions";

std::u16string_view PanelsFolder(OrbVersion version) {
    switch (version) {
        case OrbVersion::kOrbVersion_4_0:
            return u"Corvid/XMP/Custom Quillet Panels/4.0/panels";
        case OrbVersion::kOrbVersion_3_0:
            return u"Corvid/XMP/Custom Quillet Panels/3.0/panels";
        default:
            return u"Corvid/XMP/Custom Quillet Panels/2.0/panels";
    }
}

UTF16String Below(const Dir& base, std::u16string_view relative) {
    return Dir(base, UTF16String(relative)).FullPath();
}

UTF16String Created(const UTF16String& path) {
    // Whether it worked shows when the folder is read; an unwritable machine-wide folder is usual.
    static_cast<void>(zephcore::FileUtils::EnsureDirectoryExists(path));
    return path;
}

}  // namespace

UTF16String CustomDefinitionsGlobalDirectory() {
    return Below(Dir::SystemDir(kCommonFilesId), kCustomDefinitions);
}

UTF16String CustomDefinitionsUserDirectory() {
    return Below(Dir::GlobalPrefDir(), kCustomDefinitions);
}

UTF16String CustomExtensionsGlobalDirectory() {
    return Created(Below(Dir::SystemDir(kCommonFilesId), kExtensions));
}

UTF16String CustomExtensionsUserDirectory() {
    return Created(Below(Dir::GlobalPrefDir(), kExtensions));
}

UTF16String PanelsDefinitionsGlobalDirectory(OrbVersion version) {
    return Below(Dir::SystemDir(kCommonFilesId), PanelsFolder(version));
}

UTF16String PanelsDefinitionsUserDirectory(OrbVersion version) {
    return Below(Dir::GlobalPrefDir(), PanelsFolder(version));
}

UTF16String XMPFilesPluginsDirectory() {
    return Below(Dir::PluginsDir(), u"XMPFiles");
}

}  // namespace zephmetadata
