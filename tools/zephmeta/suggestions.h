#pragma once

#include <string>

#include "arguments.h"

namespace zephmeta {

/// Why an expression leads nowhere: no path, an unknown prefix, a property that its schema does not have, with what was
/// probably meant. Empty for a path that files may hold.
std::string WhyUnknown(const std::string& expression, const Target& target);

}  // namespace zephmeta
