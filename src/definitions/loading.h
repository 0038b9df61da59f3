#pragma once

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// Registers the built-in documents, then those of the custom definitions folders.
void LoadBuiltInAndCustomDefinitions();

enum class DocumentOrigin { kCustomFolder, kExtensionPackage, kPackageInMemory };

/// What came of a document.
struct LoadedDocument {
    Definitions mRegistered;
    std::vector<UTF8String> mNamespaces;  ///< of the schemas that it registered or added properties to, in order
    StructureFields mFields;              ///< that it added to structures of other documents
};

/// Registers what the document at @p path defines, which then belongs to that file, and enters its schemas into the
/// lists of common and dynamic schemas.
/// An extension package adds to schemas and structures that exist, a custom folder does not.
LoadedDocument LoadDefinitionsDocument(const UTF16String& path, DocumentOrigin origin);
/// The same for what was read of a document; what one in memory defines belongs to no file, and @p path only names it.
LoadedDocument LoadDefinitions(Definitions parsed, const UTF16String& path, DocumentOrigin origin);

/// Empties everything that definitions were registered in.
void ClearDefinitions();

}  // namespace zephmetadata
