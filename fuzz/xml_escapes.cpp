// XML escapes: what can be carried comes back, and what was escaped holds no markup.
#include "support.h"
#include "xmp/packet/utf8.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::Text(data, size));
    const std::string escaped = zephcore::EncodeReservedCharacters(text);
    fuzz::Require(escaped.find_first_of("<>\"'\t\n\r") == std::string::npos, "escaped text holds no markup");
    const std::string back = zephcore::UTF16to8(zephcore::DecodeReservedCharacters(zephcore::UTF8to16(escaped)));
    if (zephmetadata::toolkit::IsXMLText(text)) {
        fuzz::Require(back == text, "text that XML can carry comes back");
    }
    fuzz::Require(zephmetadata::toolkit::IsXMLText(back), "nothing else gets through");

    zephcore::DecodeReservedCharacters(zephcore::UTF8to16(text));
    zephcore::DecodeReservedCharacters(fuzz::Text16(data, size));
    return 0;
}
