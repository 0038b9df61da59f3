#pragma once

#include <vector>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// The language of texts from general to exact, "de" before "de_AT": what the general one says holds unless the exact one
/// says something else.
std::vector<UTF16String> ApplicationLanguages();

/// Loads the built-in texts of the user-interface language: those of its base language ("de"), then those of the
/// language itself ("de_AT") where there are such. What neither has stays English.
void LoadBuiltInTranslations();

}  // namespace zephmetadata
