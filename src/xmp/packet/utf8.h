#pragma once

#include <string>
#include <string_view>

#include "zephcore/base.h"

/// Bytes of texts and packets, judged before the toolkit sees them.
namespace zephmetadata::toolkit {

using zephcore::UTF8String;

/// Well-formed UTF-8: no surrogates, no overlong forms, nothing above U+10FFFF.
bool IsUTF8(std::string_view text);
/// UTF-8 of characters that XML 1.0 can carry.
bool IsXMLText(std::string_view text);

enum class TextEncoding { kUTF8, kUTF16Big, kUTF16Little };

/// By the byte order mark or the first character.
TextEncoding EncodingOf(std::string_view document);
/// As UTF-8, a byte order mark included; UTF-8 as it is.
UTF8String DecodedDocument(std::string_view document, TextEncoding encoding);
/// The way back.
std::string EncodedDocument(std::string_view text, TextEncoding encoding);

/// A packet as UTF-8 that an XML parser takes, without byte order mark and XML declaration.
///
/// UTF-16 is converted. Much of what is found in files is not clean, and the toolkit mends it; so here: bytes that
/// are no UTF-8 count as ISO-8859-1, control characters and references to them (NUL padding is common) become spaces.
/// Unlike the toolkit it keeps characters that are written as hexadecimal references of one or two digits.
UTF8String CleanPacket(std::string_view packet);

}  // namespace zephmetadata::toolkit
