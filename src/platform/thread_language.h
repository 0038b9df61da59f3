#pragma once

#include <string>

#include "zephcore/localizer.h"

namespace zephcore {

/// A language that a thread has in the place of the user interface's.
struct ThreadLanguage {
    std::string mCode;  ///< "language_TERRITORY"
    Localizer mTexts;
};

/// The calling thread's; null when it has none.
ThreadLanguage*& CurrentThreadLanguage();

}  // namespace zephcore
