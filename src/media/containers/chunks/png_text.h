#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Text chunks of PNG files (ISO/IEC 15948, 11.3.4).
namespace zephmetadata::media {

/// No keyword is longer, its closing zero byte counted.
inline constexpr std::size_t kMaxPngKeywordBytes = 80;

/// The keyword at the beginning of a text chunk's data; empty when there is none.
std::string_view PngKeyword(std::string_view data);

/// The text of a chunk of the type tEXt, zTXt or iTXt, unfolded; absent when it is damaged.
std::optional<std::string> PngText(std::string_view type, std::string_view data);

/// The data of an iTXt chunk that says @p text, uncompressed, with the keyword and language of another such chunk.
std::string InternationalTextLike(std::string_view data, std::string_view text);
/// The same without a language.
std::string InternationalText(std::string_view keyword, std::string_view text);

/// The bytes that a text chunk "Raw profile type ..." holds: a line with a name, one with the number of bytes, and
/// hexadecimal digits. Absent when the text is not of that form.
std::optional<std::string> RawProfileBytes(std::string_view text);

}  // namespace zephmetadata::media
