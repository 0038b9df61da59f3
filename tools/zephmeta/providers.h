#pragma once

#include <string_view>
#include <vector>

#include "zephmetadata/providers.h"

namespace zephmeta {

/// Several providers as one, the last of which is the one that people point at. One without a tree counts as one that
/// has no values. Of one provider that itself.
zephmetadata::sp<zephmetadata::MetaDataProvider> Together(
    const std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>>& providers);

/// A provider over a tree alone: what is edited in it is written nowhere.
zephmetadata::sp<zephmetadata::MetaDataProvider> InMemory(const zephmetadata::XMPMetaPtr& tree);

/// Whether a file of that name is a sidecar, and no media.
bool IsSidecarName(std::string_view name);

}  // namespace zephmeta
