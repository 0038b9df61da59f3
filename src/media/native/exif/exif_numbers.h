#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "media/native/tiff/tiff_stream.h"

/// Numbers as XMP writes them.
namespace zephmetadata::media {

/// Wide enough for the products of what fields hold.
__extension__ using WideInteger = __int128;

/// A whole number and nothing else.
std::optional<std::int64_t> ParseInteger(std::string_view text);

/// A number as a fraction; of a decimal the denominator is a power of ten.
struct NumberText {
    TiffRational mRatio;
    bool mIsDecimal = false;
    double Value() const { return static_cast<double>(mRatio.mNumerator) / static_cast<double>(mRatio.mDenominator); }
};
/// "n/d", an integer or a decimal. Digits that 64 bits do not hold are cut off behind the point and refused before it.
std::optional<NumberText> ParseNumber(std::string_view text);

/// Whether two numbers are the same: exactly, or where one is a decimal within its last digit and within what 32 bits a
/// side can tell apart.
bool IsSameNumber(const NumberText& left, const NumberText& right);

/// The number with both sides in 32 bits: as it is written where it fits, else in lowest terms, else with fewer decimals.
std::optional<TiffRational> FittingRational(const NumberText& number, bool isSigned);

/// Eight bytes, big-endian.
std::string RationalBytes(const TiffRational& value);

/// A finite number of a floating type as a fraction.
std::optional<TiffRational> RationalOfReal(double value);

}  // namespace zephmetadata::media
