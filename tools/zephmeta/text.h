#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "zephmetadata/types.h"

namespace zephmeta {

/// UTF-8 for people: display escapes of the library resolved.
std::string Shown(const zephmetadata::UTF16String& text);

/// @p text on one line and harmless to a terminal: control characters as \n, \t and \xNN. Values come from strangers' files.
std::string OneLine(std::string_view text);

/// The same, but line ends and tabs stay as they are.
std::string Printable(std::string_view text);

/// @p text in double quotes, those in it doubled, as tables have it (RFC 4180).
std::string InDoubleQuotes(std::string_view text);

/// ASCII letters in lower case, all else as it is.
std::string Lower(std::string_view text);

/// How many columns a terminal gives the text: characters, but for combining marks; wide East Asian characters count twice.
std::size_t Columns(std::string_view text);
/// @p text followed by blanks up to @p columns.
std::string Padded(std::string_view text, std::size_t columns);

}  // namespace zephmeta
