#pragma once

#include <string>
#include <vector>

#include "arguments.h"

namespace zephmeta {

/// The one of @p known that a mistyped @p word most likely stands for; empty when none is near.
std::string NearestOf(const std::string& word, const std::vector<std::string>& known);

/// Why an expression leads nowhere: no path, an unknown prefix, a property that its schema does not have, with what was
/// probably meant. Empty for a path that files may hold.
std::string WhyUnknown(const std::string& expression, const Target& target);

}  // namespace zephmeta
