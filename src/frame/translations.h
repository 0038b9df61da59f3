#pragma once

namespace zephmetadata {

/// Loads the built-in texts of the user-interface language: those of its base language ("de"), then those of the
/// language itself ("de_AT") where there are such. What neither has stays English.
void LoadBuiltInTranslations();

}  // namespace zephmetadata
