#pragma once

#include <vector>

#include "zephcore/xml.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/library.h"

/// Extension packages: folders that bring schemas, views and translations, and the panels of older hosts that can be made
/// such packages. docs/extending.md describes the folders and documents. Threads: as Initialize.
namespace zephmetadata {

/// The XML handler that reads the manifest of an extension package.
class ExtensionManifestParser : public zephcore::AbstractParseHandler {
public:
    /// What a manifest says; empty where it says nothing.
    struct ManifestInfo {
        UTF16String name;
        UTF16String version;
        UTF16String locFilePrefix;  ///< of "loc/PREFIX_LANGUAGE.dict"; without one the files are "loc/LANGUAGE.dict"
    };

    ~ExtensionManifestParser() override;
    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const zephcore::AttributeList& attributes) override;
    const ManifestInfo& Info() const { return mInfo; }

private:
    ManifestInfo mInfo;
};

/// The XML handler that reads the manifest of a generic panel, the way older hosts described their panels.
class GenericPanelManifestParser : public zephcore::AbstractParseHandler {
public:
    /// What a manifest says, uninterpreted; empty where it says nothing.
    struct ManifestInfo {
        UTF16String name;
        UTF16String label;
        UTF16String description;
        UTF16String type;
        UTF16String version;
        UTF16String panelLibrary;
        UTF16String panelClass;
        UTF16String propertyDescriptionFile;
        UTF16String localizationFile;
        UTF16String modifyDate;
        UTF16String visible;
    };

    ~GenericPanelManifestParser() override;
    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const zephcore::AttributeList& attributes) override;
    const ManifestInfo& Info() const { return mInfo; }

private:
    ManifestInfo mInfo;
};

/// Read a manifest. True when the document is well-formed XML; otherwise an error record is kept
/// (ExtensionManifestParsingError or GenericPanelManifestError, with @p path as context). @p info gets what was read
/// either way.
ZEPHMETADATA_EXPORT bool ParseExtensionManifestFromDocument(const UTF16String& path,
                                                            ExtensionManifestParser::ManifestInfo& info);
ZEPHMETADATA_EXPORT bool ParseManifestFromDocument(const UTF16String& path,
                                                   GenericPanelManifestParser::ManifestInfo& info);

/// Writes the manifest of an extension package with the name, the version and the localisation file of @p info, replacing
/// an earlier file. True when the folder of @p path exists or was made; whether the file could be written is not said.
ZEPHMETADATA_EXPORT bool WriteExtensionManifest(const GenericPanelManifestParser::ManifestInfo& info,
                                                const UTF16String& path);

/// One extension package that was found.
struct ExtensionPackage {
    UTF16String path;  ///< of its folder
    UTF16String name;
    float version = 0;
    UTF16String locFilePrefix;
    std::vector<UTF8String> schemas;  ///< namespaces of the schemas that it brought or added to, in order
    std::vector<UTF8String> views;    ///< names of the views that it brought, in order
    StructureFields fields;           ///< that it added to structures of others, in order
};

/// The packages of the machine-wide and the per-user folder, one of each name, in the order in which they were loaded.
/// LoadAllViewDefinitions loads them; empty before it and after the last Terminate. Valid until then.
ZEPHMETADATA_EXPORT const std::vector<ExtensionPackage>& ExtensionPackages();

namespace utility {

/// Makes an extension package of each generic panel that is installed for hosts of @p generation: of the user's panels in
/// CustomExtensionsUserDirectory, of the machine-wide ones in CustomExtensionsGlobalDirectory. Packages that exist are
/// left as they are; nothing is registered. @p log gets a line, in English, for each thing done and each failure.
ZEPHMETADATA_EXPORT void LoadAndConvertGenericPanels(OrbVersion generation, UTF16String& log);

}  // namespace utility

}  // namespace zephmetadata
