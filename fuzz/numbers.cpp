// Numbers and flags as they stand in packets and definitions, and the conversion of any text between UTF-8 and UTF-16.
#include <cmath>

#include "support.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/text.h"

namespace toolkit = zephmetadata::toolkit;

namespace {

/// @p convert of the text, when it converts at all.
template <typename Convert>
auto Try(const Convert& convert, std::string_view text) -> std::optional<decltype(convert(text))> {
    try {
        return convert(text);
    } catch (const zephmetadata::XMPError&) {
        return std::nullopt;
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::Text(data, size);
    if (const auto integer = Try(toolkit::ConvertToInt64, text)) {
        fuzz::Require(toolkit::ConvertToInt64(toolkit::ConvertFromInt64(*integer)) == *integer,
                      "an integer reads back");
    }
    if (const auto number = Try(toolkit::ConvertToFloat, text)) {
        fuzz::Require(std::isfinite(*number), "a number of a packet is finite");
        fuzz::Require(toolkit::ConvertToFloat(toolkit::ConvertFromFloat(*number)) == *number, "a number reads back");
    }
    if (const auto flag = Try(toolkit::ConvertToBool, text)) {
        fuzz::Require(toolkit::ConvertToBool(toolkit::ConvertFromBool(*flag)) == *flag, "a flag reads back");
    }

    zephcore::TextError error = zephcore::TextError::kNone;
    const std::u16string wide = zephcore::UTF8to16(text, &error);
    fuzz::Require((zephcore::UTF16to8(wide) == text) == (error == zephcore::TextError::kNone),
                  "text comes back unless it was reported");
    zephcore::UTF16to8(fuzz::Text16(data, size));
    const double number = zephcore::StringToNumber(wide);
    fuzz::Require(zephcore::NumberToString(number, 1, 6).size() <= 400, "the text of a number is bounded");
    return 0;
}
