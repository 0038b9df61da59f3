#pragma once

#include <cstdint>
#include <string_view>

#include "zephcore/base.h"

namespace zephcore {

/// Outcome of a text conversion.
enum class TextError : std::int32_t {
    kNone = 0,       ///< the whole text was converted
    kMalformed = 1,  ///< at least one ill-formed sequence became U+FFFD
};

/// The UTF-16 form of @p text. An ill-formed sequence becomes U+FFFD and sets @p error, when one is given.
ZEPHCORE_EXPORT UTF16String UTF8to16(std::string_view text, TextError* error = nullptr);

/// The UTF-8 form of @p text. A lone surrogate becomes U+FFFD and sets @p error, when one is given.
ZEPHCORE_EXPORT UTF8String UTF16to8(std::u16string_view text, TextError* error = nullptr);

/// The UTF-16 form of a text known to be ASCII.
UTF16String AsciiToUTF16(std::string_view text);

/// @p value as plain decimal text (never an exponent), rounded half away from zero on the decimal text to at most
/// @p fractionDigits digits, without trailing zeros and without a trailing point; "-0" reads "0".
///
/// @p integerDigits is the least number of digits before the point (zero-padded), @p flags is reserved and must be 0,
/// @p width is the greatest length of the result: a longer text is cut after that many digits of the fraction, never
/// in the integer part. Infinity and NaN read "inf", "-inf" and "nan". Independent of the C locale.
UTF16String NumberToString(double value, int integerDigits, int fractionDigits, unsigned flags = 0, int width = 31);

/// The number at the start of @p text: leading blanks skipped, the longest decimal prefix taken (sign, digits, point,
/// exponent), 0 when there is none. Independent of the C locale.
double StringToNumber(std::u16string_view text);

/// Whether all of @p text, in UTF-8, has the form of a regular expression (ICU's syntax). A pattern that is none, and one
/// that takes too long to match, fits every text: patterns come from documents of third parties.
bool MatchesPattern(std::string_view pattern, std::string_view text);

}  // namespace zephcore
