#pragma once

#include <optional>
#include <string>

#include "zephmetadata/paths.h"

namespace zephmeta {

/// A value as people type it, in the form that the property at @p path stores: the label of a choice ("Landscape" and, in the
/// language of the labels, "Querformat") becomes its value, "f/8", "0.5" and "12m" a rational, "2026-05-01 10:00" a date,
/// "53.5461" a coordinate. What is nothing of the kind stays as it is.
std::string AsStored(const zephmetadata::Path& path, const std::string& text);

/// Degrees, positive to the north and to the east, as XMP has coordinates: "53,32.766N". Absent when out of range.
std::optional<std::string> Coordinate(double degrees, bool isLatitude);

/// A decimal number as a rational; absent when it is none.
std::optional<std::string> Rational(const std::string& decimal);

}  // namespace zephmeta
