#pragma once

#include <string_view>
#include <vector>

#include "extensions/package_folder.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// A document of a package: a file, or a text in memory.
struct SourceDocument {
    UTF16String mPath;
    const UTF8String* mText = nullptr;  ///< null: to be read from the file
};

/// Where the documents of a package are.
class PackageSource {
public:
    struct Documents {
        std::vector<SourceDocument> mReadable;
        bool mHasAny = false;  ///< there are some, whether they may be read or not
    };

    PackageSource() = default;
    PackageSource(const PackageSource&) = delete;
    PackageSource& operator=(const PackageSource&) = delete;
    virtual ~PackageSource() = default;

    /// The XML documents of a subfolder, with records, of @p kind for the size, for those that may not be read.
    virtual Documents XMLDocuments(std::u16string_view subfolder, ErrorKind kind) const = 0;
    virtual void LoadTranslations(const ExtensionPackage& package) const = 0;
};

class PackageFolderSource : public PackageSource {
public:
    explicit PackageFolderSource(const UTF16String& path) : mFolder(path) {}

    Documents XMLDocuments(std::u16string_view subfolder, ErrorKind kind) const override;
    void LoadTranslations(const ExtensionPackage& package) const override;

private:
    PackageFolder mFolder;
};

class PackageMemorySource : public PackageSource {
public:
    /// Refers to @p documents.
    explicit PackageMemorySource(const std::vector<PackageDocument>& documents) : mDocuments(documents) {}

    Documents XMLDocuments(std::u16string_view subfolder, ErrorKind kind) const override;
    void LoadTranslations(const ExtensionPackage& package) const override;

private:
    const std::vector<PackageDocument>& mDocuments;
};

/// What the manifest in a folder, or among documents, says; absent, with a record, when there is none that can be read.
std::optional<ExtensionPackage> ReadPackageManifest(const UTF16String& folder);
std::optional<ExtensionPackage> ReadPackageManifest(const std::vector<PackageDocument>& documents);

}  // namespace zephmetadata
