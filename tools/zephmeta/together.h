#pragma once

#include <vector>

#include "zephmetadata/providers.h"

namespace zephmeta {

/// Several providers as one, the last of which is the one that people point at. One without a tree counts as one that
/// has no values. Of one provider that itself.
zephmetadata::sp<zephmetadata::MetaDataProvider> Together(
    const std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>>& providers);

}  // namespace zephmeta
