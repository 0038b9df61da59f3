#pragma once

#include <list>
#include <map>
#include <vector>

#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// The number at the start of @p text; 0 when there is none, or none that a float can hold.
float VersionNumber(const UTF16String& text);

/// Keeps a record that a package of its name is loaded.
void ReportNameTaken(const ExtensionPackage& package);

/// Finds packages, keeping one of each name: the highest version, and of equal ones the first.
class PackageDiscovery {
public:
    /// Adds the packages among the subfolders of @p path.
    void Search(const UTF16String& path);

    /// True when the name is new; otherwise a record says which of the two packages is left out.
    bool Add(ExtensionPackage package);

    /// The packages in the order in which they were added.
    std::vector<ExtensionPackage> Take();

private:
    using Packages = std::list<ExtensionPackage>;

    void AddFolder(const UTF16String& path);

    Packages mPackages;  // a list, as one that is replaced goes from the middle
    std::map<UTF16String, Packages::iterator> mByName;
};

}  // namespace zephmetadata
