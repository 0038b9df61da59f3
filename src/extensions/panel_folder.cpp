#include "extensions/panel_folder.h"

#include <cstdint>
#include <utility>

namespace zephmetadata {

namespace {

using zephcore::File;

/// As for the documents of extension packages.
constexpr std::uint64_t kMaxDocumentBytes = 64U << 20U;

bool IsFileName(const UTF16String& name) {
    return !name.empty() && name.find(u'/') == UTF16String::npos && name != u"." && name != u"..";
}

/// Whether the panel leaves the showing of its properties to its host; the others bring code of their own.
bool IsGeneric(const GenericPanelManifestParser::ManifestInfo& manifest, OrbVersion generation) {
    switch (generation) {
        case OrbVersion::kOrbVersion_4_0:
            return manifest.type == u"generic";
        case OrbVersion::kOrbVersion_3_0:
        case OrbVersion::kOrbVersion_2_0:
            return manifest.panelLibrary == u"generic" &&
                   manifest.panelClass == u"examples.panels.generic.GenericPanel";
    }
    return false;
}

}  // namespace

PanelFolder::PanelFolder(zephcore::Dir folder) : mFolder(std::move(folder)) {
    if (const auto canonical = zephcore::FileUtils::CanonicalPath(mFolder.FullPath())) {
        mBeginning = *canonical + (canonical->ends_with(u'/') ? u"" : u"/");
    }
}

bool PanelFolder::Holds(const UTF16String& path) const {
    const auto canonical = zephcore::FileUtils::CanonicalPath(path);
    return canonical && !mBeginning.empty() && canonical->starts_with(mBeginning);
}

std::optional<File> PanelFolder::Find(const UTF16String& name) const {
    const File file(mFolder, name);
    if (!IsFileName(name) || !file.Exists() || !Holds(file.FullPath())) {
        return std::nullopt;
    }
    const zephcore::FileStream stream(file, zephcore::FileStream::Mode::kRead);
    return stream.IsOpen() && stream.Length() > kMaxDocumentBytes ? std::nullopt : std::optional(file);
}

std::vector<File> PanelFolder::Files(std::u16string_view subfolder) const {
    std::vector<File> files = zephcore::Dir(mFolder, UTF16String(subfolder)).Files();
    std::erase_if(files, [this](const File& file) { return !Holds(file.FullPath()); });
    return files;
}

std::optional<GenericPanel> FindGenericPanel(const zephcore::Dir& folder, OrbVersion generation) {
    PanelFolder panel(folder);
    GenericPanelManifestParser::ManifestInfo manifest;
    const auto document = panel.Find(u"manifest.xml");
    if (!document || !ParseManifestFromDocument(document->FullPath(), manifest) || !IsGeneric(manifest, generation)) {
        return std::nullopt;
    }
    const auto properties = panel.Find(manifest.propertyDescriptionFile);
    if (!properties) {
        return std::nullopt;
    }
    return GenericPanel{std::move(panel), std::move(manifest), *properties};
}

}  // namespace zephmetadata
