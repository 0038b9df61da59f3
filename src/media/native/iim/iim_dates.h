#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Dates of IIM 4.2: CCYYMMDD with 00 for what is not known, and HHMMSS+HHMM.
namespace zephmetadata::media {

struct IIMDate {
    std::string mDate;  ///< 8 digits
    std::string mTime;  ///< 6 digits; empty when not known
    std::string mZone;  ///< sign and 4 digits; empty when not known: many writers leave it out where XMP has none
};

/// From the datasets; separators between the digits, which some writers leave in, are passed over. A time that is none
/// counts as missing.
std::optional<IIMDate> DateFromIIM(std::string_view date, std::string_view time);
/// From the form that XMP gives dates (ISO 8601); a fraction of a second is lost.
std::optional<IIMDate> DateFromXMP(std::string_view text);
std::string XMPDate(const IIMDate& date);
/// Whether both say the same, a zone being ignored that only one of them has.
bool AreSameDates(const IIMDate& left, const IIMDate& right);

}  // namespace zephmetadata::media
