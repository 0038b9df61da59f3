#include "extensions/panel_package.h"

#include "extensions/panel_schemas.h"
#include "extensions/panel_translations.h"
#include "zephmetadata/views.h"

namespace zephmetadata {

namespace {

using zephcore::Dir;
using zephcore::File;

/// Keeps the name of the view apart from those of views that are registered already.
constexpr auto kViewNamePrefix = u"imported_";

}  // namespace

PanelPackage::PanelPackage(const GenericPanel& panel, const Dir& extensions, ConversionLog& log)
    : mPanel(panel),
      mLog(log),
      mFolder(extensions, panel.mFolder.GetName()),
      mSchemaFolder(mFolder, u"schema"),
      mViewFolder(mFolder, u"view") {}

bool PanelPackage::Check(bool done, Conversion failure, const UTF16String& path) const {
    if (!done) {
        mLog.Add(failure, mPanel.mFolder.FullPath(), path);
    }
    return done;
}

bool PanelPackage::CheckFile(bool done, Conversion failure, const File& file) const {
    return Check(done && file.Exists(), failure, file.FullPath());
}

bool PanelPackage::CreateFolders() const {
    if (!Check(!mFolder.Exists(), Conversion::kPackageExists, FullPath()) ||
        !Check(zephcore::FileUtils::EnsureDirectoryExists(FullPath()), Conversion::kPackageFolderFailed, FullPath())) {
        return false;
    }
    const bool hasSchemaFolder =
        Check(mSchemaFolder.Create(), Conversion::kSchemaFolderFailed, mSchemaFolder.FullPath());
    const bool hasViewFolder = Check(mViewFolder.Create(), Conversion::kViewFolderFailed, mViewFolder.FullPath());
    if (hasSchemaFolder && hasViewFolder) {
        return true;
    }
    static_cast<void>(mFolder.Delete());
    return false;
}

bool PanelPackage::WriteSchemas(const Definitions& definitions) const {
    const File file(mSchemaFolder, mPanel.mProperties.GetName());
    return CheckFile(WriteSchemaFile(definitions, file), Conversion::kSchemaFileFailed, file);
}

bool PanelPackage::WriteFiles(const Definitions& definitions) const {
    const File manifest(mFolder, u"manifest.xml");
    if (!CheckFile(WriteExtensionManifest(mPanel.mManifest, manifest.FullPath()), Conversion::kManifestFailed,
                   manifest)) {
        return false;
    }
    const std::vector<sp<SchemaDefinition>> added = NewSchemas(definitions.first);
    if (!added.empty() && !WriteSchemas({added, definitions.second})) {
        return false;
    }
    GenericPanelManifestParser::ManifestInfo view = mPanel.mManifest;
    view.name.insert(0, kViewNamePrefix);
    const File file(mViewFolder, u"view.xml");
    return CheckFile(WriteViewDefinitionsFileFromSchema(definitions.first, added, view, file.FullPath()),
                     Conversion::kViewFileFailed, file) &&
           ConvertTranslations(mPanel.mFolder, mFolder, mLog);
}

}  // namespace zephmetadata
