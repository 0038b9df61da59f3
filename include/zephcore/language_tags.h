#pragma once

#include <string_view>

#include "zephcore/base.h"

namespace zephcore {

/// Whether the language of a tag (RFC 5646) is one that readers may look for: "de", "en-US" and "x-default", but not
/// "german", which has the form of a tag alone. Of three letters any is one: ISO 639-3 has thousands of them.
ZEPHCORE_EXPORT bool IsKnownLanguage(std::string_view tag);

}  // namespace zephcore
