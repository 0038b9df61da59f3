#pragma once

#include <cstdint>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// What the log of a conversion tells of. Most of it is about a panel folder, and about what could not be made of it.
enum class Conversion : std::uint8_t {
    kNoPanels,            ///< panels folder
    kConverted,           ///< panel folder, package folder
    kInvalidXML,          ///< panel folder, property description file
    kNoExtensionsFolder,  ///< name of the extensions folder
    kPackageExists,       ///< this and all below: panel folder, then the file or folder concerned
    kPackageFolderFailed,
    kSchemaFolderFailed,
    kViewFolderFailed,
    kManifestFailed,
    kSchemaFileFailed,
    kViewFileFailed,
    kTranslationsFolderFailed,
    kTranslationsFailed,
};

/// Appends to the text that the caller of a conversion reads.
class ConversionLog {
public:
    explicit ConversionLog(UTF16String& text) : mText(text) {}

    /// @p place and @p other are paths, but for kNoExtensionsFolder.
    void Add(Conversion event, const UTF16String& place, const UTF16String& other = {});

private:
    UTF16String& mText;
};

}  // namespace zephmetadata
