#include "zephcore/language_tags.h"

#include <unicode/uloc.h>

#include <string>

namespace zephcore {

bool IsKnownLanguage(std::string_view tag) {
    const std::string language(tag.substr(0, tag.find('-')));
    switch (language.size()) {
        case 1:
            return language.find_first_of("iIxX") == 0;  // registered as a whole, and private
        case 2:
            return *uloc_getISO3Language(language.c_str()) != '\0';
        default:
            return language.size() == 3;  // of four letters and more none is registered
    }
}

}  // namespace zephcore
