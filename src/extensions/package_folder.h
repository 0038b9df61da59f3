#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "zephcore/files.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

/// Keeps a record when @p folder, which exists and seems to be empty, cannot be listed.
void ReportUnlisted(const zephcore::Dir& folder);

/// The folder of one package, of which only what lies in it is read: a package comes from anywhere, and its links must
/// not lead the library about the machine. The folder itself may be a link.
class PackageFolder {
public:
    explicit PackageFolder(const UTF16String& path) : mFolder(path) {}

    /// A subfolder; absent where there is none, and, with a record, where it leads out of the package.
    std::optional<zephcore::Dir> Subfolder(std::u16string_view name) const;

    /// The files of a subfolder; none, with a record, where they cannot be listed.
    std::vector<zephcore::File> Files(std::u16string_view subfolder) const;

    /// Whether @p file, of the package folder or of a subfolder, lies in the package and is not too large. Otherwise a
    /// record says so, of @p kind for its size.
    bool MayRead(const zephcore::File& file, ErrorKind kind) const;

    zephcore::Dir Folder() const { return mFolder; }

private:
    /// Whether what is at @p path, in a folder that lies in the package, lies in it too; a record is kept when not.
    bool Holds(const UTF16String& path) const;

    zephcore::Dir mFolder;
};

}  // namespace zephmetadata
