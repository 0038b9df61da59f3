#pragma once

#include "extensions/conversion_log.h"
#include "extensions/panel_folder.h"
#include "zephcore/files.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// The extension package that is made of a panel: a folder of the panel's name.
class PanelPackage {
public:
    /// @p panel and @p log have to live as long as this does.
    PanelPackage(const GenericPanel& panel, const zephcore::Dir& extensions, ConversionLog& log);

    /// Makes the package from what the panel defines. False, with entries in the log, when it exists or is not whole.
    bool Make(const Definitions& definitions) const { return CreateFolders() && WriteFiles(definitions); }

    UTF16String FullPath() const { return mFolder.FullPath(); }

private:
    bool CreateFolders() const;
    bool WriteFiles(const Definitions& definitions) const;
    bool WriteSchemas(const Definitions& definitions) const;
    /// Logs @p failure, unless @p done.
    bool Check(bool done, Conversion failure, const UTF16String& path) const;
    /// The same for a file that @p done says was written: writers speak of its folder alone.
    bool CheckFile(bool done, Conversion failure, const zephcore::File& file) const;

    const GenericPanel& mPanel;
    ConversionLog& mLog;
    zephcore::Dir mFolder;
    zephcore::Dir mSchemaFolder;
    zephcore::Dir mViewFolder;
};

}  // namespace zephmetadata
