#pragma once

#include <string>
#include <string_view>

#include "media/native/tiff/tiff_stream.h"

/// Texts of fields as UTF-8 that XML can carry.
namespace zephmetadata::media {

/// The text as UTF-8: as it is where it is UTF-8, else as Windows-1252, which most software that writes other bytes means.
/// Control characters become spaces, and spaces at the end are none of the text.
std::string CleanText(std::string_view bytes);
/// UTF-16 of the order up to a NUL; a byte order mark and what the zeros of Latin text tell have more weight.
std::string TextOfUTF16(std::string_view bytes, ByteOrder order);
/// @p text, which is UTF-8, without a byte order mark.
std::string UTF16OfText(std::string_view text, ByteOrder order);

/// The text of a field up to its first NUL; empty for numbers.
std::string FieldText(const TiffField& field);
/// A text without the spaces, tabs and line ends on either side.
std::string_view Stripped(std::string_view text);
/// Whether @p native is what became of @p text: the same but for blanks at the ends, or with question marks for what is
/// not ASCII.
bool IsTextOf(std::string_view native, std::string_view text);
bool IsAscii(std::string_view text);

}  // namespace zephmetadata::media
