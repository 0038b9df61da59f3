#pragma once

#include <string>

#include "arguments.h"

namespace zephmeta {

/// Why an expression leads nowhere: no path, an unknown prefix, a property that its schema does not have, with what was
/// probably meant. Empty for a property that is defined, and where nothing is near.
std::string WhyUnknown(const std::string& expression, const Target& target);

/// The same where values are only read: also empty for a property of a known schema whose name stands for itself, as files
/// may hold it without a definition.
std::string WhyUnreadable(const std::string& expression, const Target& target);

}  // namespace zephmeta
