#pragma once

#include "media/files/file_place.h"

namespace zephmetadata::media {

enum class Exchanged {
    kDone,        ///< the new file has the name, the old one the hidden name
    kTakenBack,   ///< another program had got in between: what it left has the name, the new file the hidden name
    kEntangled,   ///< so often that we gave up: what other programs left has the hidden name
    kImpossible,  ///< the system could not; errno says why
};

/// Exchanges the file at the place's name with the one at @p hiddenName at once, so that what was replaced can be looked
/// at: unless it is @p expected, another program's work would be lost, and it is put back, as often as that happens.
Exchanged ExchangeFiles(const FilePlace& place, const std::string& hiddenName, const FileStamp& expected);

}  // namespace zephmetadata::media
