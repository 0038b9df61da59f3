#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Character sets of IPTC-IIM texts.
namespace zephmetadata::media {

/// What dataset 1:90 says (escape sequences of ISO 2022).
enum class IIMCharset {
    kUndeclared,  ///< each text is UTF-8 when it is valid as such, and Windows-1252 otherwise
    kUTF8,
    kLatin1,   ///< ISO 8859-1, read as its superset Windows-1252
    kUnknown,  ///< one that is not known here: texts in ASCII can be read
};

IIMCharset DeclaredCharset(std::string_view escapes);

bool IsASCII(std::string_view text);
bool IsUTF8(std::string_view text);
/// UTF-8 but for a last character that is cut off, as writers leave it that count bytes.
bool IsCutUTF8(std::string_view text);

/// The bytes of a dataset as UTF-8, with every byte carried over; a cut last character is dropped. Absent when nobody can
/// know what they mean.
std::optional<std::string> DecodedText(std::string_view bytes, IIMCharset charset);
/// The same as XMP has it: without trailing white space and control characters that XML cannot hold, lines ended by LF.
std::optional<std::string> ReadableText(std::string_view bytes, IIMCharset charset);
/// UTF-8 as XMP has it in the form that ReadableText gives.
std::string CleanedText(std::string_view text);

/// UTF-8 in one byte a character; @p unmappable stands for what has none. Absent when there is such a character and
/// @p unmappable is none either.
std::optional<std::string> Windows1252Text(std::string_view text, std::optional<char> unmappable);
/// As many whole characters as fit.
std::string_view CutText(std::string_view text, std::size_t maxBytes, bool isUTF8);

}  // namespace zephmetadata::media
