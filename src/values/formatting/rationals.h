#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "zephmetadata/types.h"

/// Numbers within stored texts.
namespace zephmetadata {

struct Rational {
    double mNumerator = 0;
    double mDenominator = 0;

    double Quotient() const { return mNumerator / mDenominator; }
};

/// The two numbers round the first "/" of @p text; what follows a second "/" is passed over. Absent when one is missing.
std::optional<Rational> ParseRational(std::string_view text);

/// The decimal number that @p text begins with, 0 when there is none.
double LeadingNumber(std::string_view text);

/// @p value with at most @p digits digits after the point.
UTF8String NumberText(double value, std::uint64_t digits);

}  // namespace zephmetadata
