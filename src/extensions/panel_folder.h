#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "zephcore/files.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// The folder of one panel. What a link leads to outside of it counts as missing: a panel comes from anywhere. The folder
/// itself may be a link.
class PanelFolder {
public:
    explicit PanelFolder(zephcore::Dir folder);

    UTF16String FullPath() const { return mFolder.FullPath(); }
    UTF16String GetName() const { return mFolder.GetName(); }

    /// The file @p name, which names no other folder; absent when it is missing or too large to be read.
    std::optional<zephcore::File> Find(const UTF16String& name) const;
    /// The files of a subfolder.
    std::vector<zephcore::File> Files(std::u16string_view subfolder) const;

private:
    bool Holds(const UTF16String& path) const;

    zephcore::Dir mFolder;
    UTF16String mBeginning;  // of the canonical paths of what lies in the folder; empty for a folder that is gone
};

/// A panel that can be made an extension package.
struct GenericPanel {
    PanelFolder mFolder;
    GenericPanelManifestParser::ManifestInfo mManifest;
    zephcore::File mProperties;  ///< the definitions document that its manifest names
};

/// The panel in @p folder; absent when there is none, or none that is generic for hosts of @p generation.
std::optional<GenericPanel> FindGenericPanel(const zephcore::Dir& folder, OrbVersion generation);

}  // namespace zephmetadata
