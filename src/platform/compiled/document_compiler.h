#pragma once

#include <optional>
#include <string>

#include "zephcore/base.h"

namespace zephcore {

/// The compiled form of an XML document (compiled_document.h); absent when it is not well formed.
std::optional<std::string> CompileDocument(const UTF8String& document);

}  // namespace zephcore
