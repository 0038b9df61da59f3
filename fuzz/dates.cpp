// Dates as they stand in packets: what is accepted has one canonical text, and conversions to other zones are dates.
#include "support.h"
#include "xmp/dates/xmp_dates.h"

namespace toolkit = zephmetadata::toolkit;

namespace {

void CheckText(const toolkit::DateTime& date) {
    const std::string text = toolkit::ConvertFromDate(date);
    fuzz::Require(toolkit::ConvertFromDate(toolkit::ConvertToDate(text)) == text, "a canonical date stays as it is");
}

/// Another zone may take the last day of the year 9999 into the next, which has no text.
void CheckConverted(const toolkit::DateTime& date) {
    if (!date.mHasDate || (date.mYear >= -9999 && date.mYear <= 9999)) {
        CheckText(date);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    toolkit::DateTime date;
    try {
        date = toolkit::ConvertToDate(fuzz::Text(data, size));
    } catch (const zephmetadata::XMPError&) {
        return 0;  // no date
    }
    CheckText(date);
    CheckConverted(toolkit::ConvertToUTCTime(date));
    CheckConverted(toolkit::ConvertToLocalTime(date));
    return 0;
}
