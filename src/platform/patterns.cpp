#include <unicode/regex.h>

#include "zephcore/text.h"

namespace zephcore {

namespace {

icu::UnicodeString Wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

}  // namespace

bool MatchesPattern(std::string_view pattern, std::string_view text) {
    constexpr std::int32_t kSteps = 1000;          // of the matcher's own unit, about a millisecond each
    constexpr std::int32_t kStackBytes = 1 << 20;  // of the matcher's heap
    UErrorCode status = U_ZERO_ERROR;
    icu::RegexMatcher matcher(Wide(pattern), 0, status);
    if (U_FAILURE(status) != 0) {
        return true;
    }
    const icu::UnicodeString input = Wide(text);
    matcher.setTimeLimit(kSteps, status);
    matcher.setStackLimit(kStackBytes, status);
    matcher.reset(input);
    const bool matches = matcher.matches(status) != 0;
    return matches || U_FAILURE(status) != 0;
}

}  // namespace zephcore
