#pragma once

#include "zephmetadata/extensions.h"

namespace zephmetadata {

/// Finds the packages of the machine-wide and then of the per-user folder, and registers what they bring.
void LoadExtensionPackages();
void ClearExtensionPackages();

}  // namespace zephmetadata
