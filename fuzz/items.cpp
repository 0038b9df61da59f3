// Text of people split into items: items that were split off join into text that splits into the same items.
#include "support.h"
#include "xmp/tree/xmp_tree.h"

namespace toolkit = zephmetadata::toolkit;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto items = toolkit::SplitItems(fuzz::Text(data, size));
    fuzz::Require(toolkit::SplitItems(toolkit::JoinItems(items)) == items, "joined items split back");

    // Items of a file may be any text, split at NUL here.
    std::vector<std::string> any(1);
    for (const char c : fuzz::Text(data, size)) {
        if (c == '\0') {
            any.emplace_back();
        } else {
            any.back() += c;
        }
    }
    fuzz::Require(toolkit::SplitItems(toolkit::JoinItems(any)) == any, "any items split back");
    return 0;
}
