#include "extensions/conversion_log.h"
#include "extensions/panel_folder.h"
#include "extensions/panel_package.h"
#include "zephcore/files.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {

namespace {

using zephcore::Dir;

void ConvertPanel(const GenericPanel& panel, const Definitions& definitions, const Dir& extensions,
                  ConversionLog& log) {
    const PanelPackage package(panel, extensions, log);
    if (package.Make(definitions)) {
        log.Add(Conversion::kConverted, panel.mFolder.FullPath(), package.FullPath());
    }
}

/// @p extensionsFolder is asked for when it is needed: it makes the folder.
void ConvertFolder(const Dir& panels, UTF16String (*extensionsFolder)(), OrbVersion generation, ConversionLog& log) {
    bool hasPanels = false;
    for (const Dir& folder : panels.Subfolders()) {
        const auto panel = FindGenericPanel(folder, generation);
        if (!panel) {
            continue;
        }
        hasPanels = true;
        Definitions definitions;
        if (!ParseDocumentForDefinitions(panel->mProperties.FullPath(), definitions)) {
            log.Add(Conversion::kInvalidXML, folder.FullPath(), panel->mProperties.FullPath());
            continue;
        }
        const Dir extensions(extensionsFolder());
        if (!extensions.Exists()) {
            log.Add(Conversion::kNoExtensionsFolder, extensions.GetName());
            return;
        }
        ConvertPanel(*panel, definitions, extensions, log);
    }
    if (!hasPanels) {
        log.Add(Conversion::kNoPanels, panels.FullPath());
    }
}

}  // namespace

void utility::LoadAndConvertGenericPanels(OrbVersion generation, UTF16String& log) {
    ConversionLog entries(log);
    ConvertFolder(Dir(PanelsDefinitionsUserDirectory(generation)), CustomExtensionsUserDirectory, generation, entries);
    ConvertFolder(Dir(PanelsDefinitionsGlobalDirectory(generation)), CustomExtensionsGlobalDirectory, generation,
                  entries);
}

}  // namespace zephmetadata
