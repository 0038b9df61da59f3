#pragma once

#include <string>

namespace zephcore {

/// The path of Dir::PrefDir as the system takes it.
std::string NativePrefDir();

}  // namespace zephcore
