#pragma once

#include <string>

/// Marks what the shared library exports; everything else stays hidden.
#define ZEPHCORE_EXPORT __attribute__((visibility("default")))

namespace zephcore {

using UTF8String = std::string;
using UTF16String = std::u16string;

}  // namespace zephcore
