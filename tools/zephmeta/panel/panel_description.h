#pragma once

#include "panel/panel_model.h"

namespace zephmeta {

/// What a view says of one item, and of those below it.
PanelItem DescribeItem(const zephmetadata::ViewItem& item, Detail detail);

/// "stEvt:action" of "xmpMM:History[1]/stEvt:action", "2" of "dc:creator[2]".
std::string LastStep(const std::string& expression);

/// The choices of an item: the view's own, else those of the definition, which may be null.
const std::vector<zephmetadata::sp<zephmetadata::ChoiceDefinition>>& ChoicesOf(
    const zephmetadata::ViewItem& item, const zephmetadata::EntryDefinition* entry);

}  // namespace zephmeta
