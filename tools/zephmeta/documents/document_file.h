#pragma once

#include <optional>
#include <string>

namespace zephmeta {

/// The bytes of a document; absent when it cannot be read, or is larger than any document is.
std::optional<std::string> ReadDocument(const std::string& name);

/// Makes a file that is not there yet. Why it could not be made; empty when it was.
std::string WriteNewFile(const std::string& name, const std::string& bytes);

}  // namespace zephmeta
