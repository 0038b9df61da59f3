#pragma once

#include <cstdint>
#include <functional>

#include "zephmetadata/paths.h"

/// Display text for stored XMP text. Text reads (GetValue of values.h) of internal properties go through FormatValue.
///
/// Formatting reports no errors: what cannot be formatted gives an empty text, for a date the text itself. What the
/// host's formatter throws leaves FormatValue, but not GetValue, which reports it and shows the stored text.
namespace zephmetadata {

/// A formatter of the host's own: it gets the tree, the path and the stored text, and answers the display text or an
/// empty text, which leaves the value to the library.
using ValueFormatter = std::function<UTF8String(XMPMetaHandle, const Path&, UTF8String)>;

/// The display text of @p value at @p path: the host formatter's, else that of camera values (exposure times such as
/// "1/250 sec", f-numbers, distances in metres), else by the type: dates, rationals with two digits, coordinates. Empty
/// when none of these applies.
ZEPHMETADATA_EXPORT UTF8String FormatValue(XMPMetaHandle tree, const Path& path, const UTF8String& value);

/// A date (ISO 8601 as XMP uses it) in the user's locale and the local time zone. Unchanged when it is no date, has a
/// year but no day, or lies before 1601.
ZEPHMETADATA_EXPORT UTF8String FormatDate(const UTF8String& value);
/// A rational such as "28/10" as a decimal number with at most @p digits digits after the point; empty when it is none.
ZEPHMETADATA_EXPORT UTF8String FormatRational(const UTF8String& value, std::uint64_t digits);
/// A coordinate in the form of XMP's Exif schema ("45,30,15N", "45,30.25N") in degrees, minutes and seconds.
ZEPHMETADATA_EXPORT UTF8String FormatGPSCoordinate(const UTF8String& value);

/// Sets the host formatter, which is asked before the library's own; an empty one removes it. It outlives Terminate, and
/// may replace itself while it runs. Not to be called while values are read on another thread.
ZEPHMETADATA_EXPORT void RegisterValueFormatter(ValueFormatter formatter);
/// The host formatter; empty when there is none.
ZEPHMETADATA_EXPORT ValueFormatter RegisteredValueFormatter();

}  // namespace zephmetadata
