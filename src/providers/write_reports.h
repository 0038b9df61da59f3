#pragma once

#include "zephmetadata/providers.h"

namespace zephmetadata {

/// The file of a provider; empty of one that is over no file.
UTF16String FilePathOf(const MetaDataProvider& provider);

/// Why a provider without a tree cannot be written.
FileReport WhyWithoutTree(const MetaDataProvider& provider);

}  // namespace zephmetadata
