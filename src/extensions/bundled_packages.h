#pragma once

#include "extensions/packages.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// The packages that are built into the library, in byte order of their folders; nothing is registered.
std::vector<ExtensionPackage> BundledPackages();

/// Registers what @p package, one of them, brings, and enters it there and into @p views.
void LoadBundledPackage(ExtensionPackage& package, Views& views);

/// Takes out of @p definitions what is registered already, so that registering the rest meets no name twice: what a host
/// or a user defined holds. Fields and choices that a registered structure or property lacks are added to it.
void JoinRegisteredDefinitions(Definitions& definitions, const UTF16String& source, StructureFields& fields);

}  // namespace zephmetadata
