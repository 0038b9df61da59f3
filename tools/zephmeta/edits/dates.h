#pragma once

#include <optional>
#include <string>

namespace zephmeta {

/// A duration as people write it, "1h30m", "-2d", "+00:45", in seconds; absent when it is none.
std::optional<long long> ParseDuration(const std::string& text);

/// An XMP date (ISO 8601) moved by seconds, with the parts and the zone that it has. Absent for what is no date, for a year
/// out of range, and for a date without a time that is not moved by whole days.
std::optional<std::string> ShiftedDate(const std::string& date, long long seconds);

/// The date with a zone, "+02:00" or "Z", in place of its own; absent when it has no time, or the zone is none.
std::optional<std::string> ZonedDate(const std::string& date, const std::string& zone);

/// "2026-05-01 10:00", "2026:05:01 10:00:30" and the like as XMP has dates; the text itself when it is nothing like it.
std::string AsXMPDate(const std::string& text);

/// The date by a pattern with %Y %m %d %H %M %S; a part that it does not have is left out.
std::string FormattedDate(const std::string& date, const std::string& pattern);

}  // namespace zephmeta
