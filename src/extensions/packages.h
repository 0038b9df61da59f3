#pragma once

#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// Finds the packages of the machine-wide and then of the per-user folder, behind @p bundled ones, and registers what
/// they bring.
void LoadExtensionPackages(std::vector<ExtensionPackage> bundled);
/// Registers what those of @p bundled bring whose names no loaded package has.
void AddBundledPackages(std::vector<ExtensionPackage> bundled);
/// The translations alone of what is loaded.
void LoadPackageTranslations();
void ClearExtensionPackages();

}  // namespace zephmetadata
