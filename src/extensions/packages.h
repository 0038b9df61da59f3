#pragma once

#include "zephmetadata/extensions.h"
#include "zephmetadata/views.h"

namespace zephmetadata {

using Views = std::vector<sp<ViewDefinition>>;

/// Finds the packages of the machine-wide and then of the per-user folder, behind @p bundled ones, and registers what
/// they bring.
void LoadExtensionPackages(std::vector<ExtensionPackage> bundled);
/// Registers what those of @p bundled bring whose names no loaded package has.
void AddBundledPackages(std::vector<ExtensionPackage> bundled);
void ClearExtensionPackages();

/// Registers the views of a document of @p package, and enters them there and into @p views.
void AddPackageViews(ExtensionPackage& package, const Views& parsed, const UTF16String& source, Views& views);

}  // namespace zephmetadata
