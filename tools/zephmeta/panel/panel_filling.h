#pragma once

#include <functional>

#include "panel/panel_model.h"

namespace zephmeta {

/// Fills a described item, and those below it, with the values that there are for them.
using Filler = std::function<void(const zephmetadata::ViewItem& item, PanelItem& filled)>;

/// Fills from one tree, which stays as it is meanwhile. @p provider outlives the filler.
Filler FillerOf(zephmetadata::XMPMetaHandle tree, const zephmetadata::sp<zephmetadata::MetaDataProvider>& provider,
                Detail detail);

}  // namespace zephmeta
