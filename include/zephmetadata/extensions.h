#pragma once

#include <optional>
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
/// The same for a manifest in memory; @p source is only the context of error records.
ZEPHMETADATA_EXPORT bool ParseExtensionManifestFromBuffer(const UTF8String& buffer, const UTF16String& source,
                                                          ExtensionManifestParser::ManifestInfo& info);
ZEPHMETADATA_EXPORT bool ParseManifestFromDocument(const UTF16String& path,
                                                   GenericPanelManifestParser::ManifestInfo& info);

/// Writes the manifest of an extension package with the name, the version and the localisation file of @p info, replacing
/// an earlier file. True when the folder of @p path exists or was made; whether the file could be written is not said.
ZEPHMETADATA_EXPORT bool WriteExtensionManifest(const GenericPanelManifestParser::ManifestInfo& info,
                                                const UTF16String& path);

/// One extension package that was found.
struct ExtensionPackage {
    UTF16String
        path;  ///< of its folder; of a bundled package the name of its folder in the library; empty of one in memory
    UTF16String name;
    float version = 0;
    UTF16String locFilePrefix;
    std::vector<UTF8String> schemas;  ///< namespaces of the schemas that it brought or added to, in order
    std::vector<UTF8String> views;    ///< names of the views that it brought, in order
    StructureFields fields;           ///< that it added to structures of others, in order
    bool bundled = false;             ///< comes with the library, from no folder
};

/// The packages that are loaded, one of each name, in the order in which they were: the bundled ones that were asked for
/// and those of the machine-wide and the per-user folder (LoadAllViewDefinitions and RegisterBundledPackages load them),
/// and what LoadExtensionPackage loaded. Empty before Initialize and after the last Terminate. Valid until the next of
/// these calls.
ZEPHMETADATA_EXPORT const std::vector<ExtensionPackage>& ExtensionPackages();

/// Registers the packages that come with the library: the IPTC Photo Metadata Standard and the public schemas that files
/// of cameras, telephones and picture managers hold (docs/extending.md lists them). They need no file of their own.
///
/// Once after Initialize, instead of LoadAllViewDefinitions or before it: it loads the views and the packages of the
/// folders as that does, with the bundled ones before them, so that others can build on these, and one of the same name and
/// a higher version replaces a bundled one. After LoadAllViewDefinitions it adds the bundled packages whose names are not
/// taken. Further calls, and calls while the library is not initialised, do nothing.
///
/// What a custom document or a host has registered before stays as it is. Structures get the fields, and properties with
/// choices the choices, that they lack. Problems become error records. The last Terminate undoes it.
ZEPHMETADATA_EXPORT void RegisterBundledPackages();

/// A document of a package in memory.
struct PackageDocument {
    /// As in a folder: "manifest.xml", "schema/NAME.xml", "view/NAME.xml", "loc/LANGUAGE.dict". The context of error
    /// records.
    UTF16String name;
    UTF8String text;
};

/// Loads one package at any time after Initialize: from a folder anywhere, or from memory, by the same rules. What it
/// brought is returned, as ExtensionPackages lists it. Absent, with an error record, when there is no manifest, when it
/// cannot be read, and when a package of that name is loaded already: take that out first. What is wrong in other
/// documents becomes error records, and what is right in them is loaded; an ErrorScope tells them from others.
///
/// A package loaded before LoadAllViewDefinitions keeps one of its name in the folders from being loaded.
ZEPHMETADATA_EXPORT std::optional<ExtensionPackage> LoadExtensionPackage(const UTF16String& folder);
ZEPHMETADATA_EXPORT std::optional<ExtensionPackage> LoadExtensionPackage(const std::vector<PackageDocument>& documents);

/// Takes a package out, whatever loaded it: its schemas, properties, types, fields, choices, views and translations.
/// False when no package of that name is loaded.
///
/// Objects that a host holds stay alive and whole, but are registered no more. Properties and fields that the package
/// added to schemas and structures of others go from these; what others added to its own stays registered, with the
/// object that it was added to. Definitions of others that name its types find them no longer, and read as if there were
/// no such type. Values in trees stay; paths to them lose their definitions. Prefixes stay bound to their namespaces.
ZEPHMETADATA_EXPORT bool RemoveExtensionPackage(const UTF16String& name);

namespace utility {

/// Makes an extension package of each generic panel that is installed for hosts of @p generation: of the user's panels in
/// CustomExtensionsUserDirectory, of the machine-wide ones in CustomExtensionsGlobalDirectory. Packages that exist are
/// left as they are; nothing is registered. @p log gets a line, in English, for each thing done and each failure.
ZEPHMETADATA_EXPORT void LoadAndConvertGenericPanels(OrbVersion generation, UTF16String& log);

}  // namespace utility

}  // namespace zephmetadata
