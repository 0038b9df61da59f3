#pragma once

#include <string>

#include "zephmetadata/definitions.h"

/// What single values of a panel mean to people.
namespace zephmeta {

/// Whether a value stands for none: a rational of nothing, a focal length or sensitivity of 0, the year 0, a pair with a
/// half missing. @p shown is what would be shown, @p raw what is stored.
bool SaysNothing(const std::string& expression, const zephmetadata::EntryDefinition& entry, const std::string& raw,
                 const std::string& shown);

/// An XMP date in the form of the reader's locale with a four-digit year, as the clock showed it, and with its zone
/// where that is not the reader's. What has no day is returned as it is.
std::string ShownDate(const std::string& raw);

/// A rational as a number, coordinates in degrees, minutes and seconds; anything else, and what is none, as it is.
std::string ShownMeasure(const zephmetadata::EntryDefinition& entry, const std::string& raw);

/// A length in seconds below a minute, else h:mm:ss. @p scale is the rational of one unit of @p value; empty when either
/// is none.
std::string ShownDuration(const std::string& value, const std::string& scale);

/// The address of a map with a marker at XMP coordinates ("58,58.19N"); empty when they are none.
std::string MapAddress(const std::string& latitude, const std::string& longitude);

}  // namespace zephmeta
