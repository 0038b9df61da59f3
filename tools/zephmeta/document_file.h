#pragma once

#include <optional>
#include <string>

namespace zephmeta {

/// The bytes of a document; absent when it cannot be read, or is larger than any document is.
std::optional<std::string> ReadDocument(const std::string& name);

}  // namespace zephmeta
