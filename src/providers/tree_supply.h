#pragma once

#include "zephmetadata/types.h"

namespace zephmetadata {

/// How a provider without the toolkit says why it has no tree.
inline constexpr const char* kNotInitialized = "the library is not initialised";

/// Whether there can be trees: not before Initialize, after the last Terminate, or when the toolkit did not start. An
/// error record is made then, @p context being the file that was to be read.
bool CanHaveTrees(const UTF16String& context = {});

}  // namespace zephmetadata
