#pragma once

#include <string>

namespace fuzz {

/// Has the library started over empty folders of the program's own, and started anew every few hundred inputs: error
/// records and registered namespaces pile up while it runs.
void StartLibrary();
/// The temporary folder of the program; for targets that called StartLibrary.
const std::string& Folder();

}  // namespace fuzz
