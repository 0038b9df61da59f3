#pragma once

#include "extensions/conversion_log.h"
#include "extensions/panel_folder.h"
#include "zephcore/files.h"

namespace zephmetadata {

/// Makes the localisation files of a panel ones of the package in @p package. False, with entries in the log, when not
/// all could be made; the others are there.
bool ConvertTranslations(const PanelFolder& panel, const zephcore::Dir& package, ConversionLog& log);

}  // namespace zephmetadata
