#pragma once

#include <string>
#include <vector>

#include "zephmetadata/types.h"

namespace zephmeta {

/// A value that differs between two trees; empty where it is not there.
struct Change {
    std::string mExpression;
    std::string mBefore;
    std::string mAfter;
};

/// The values in which two trees differ, in the order of their paths; null stands for an empty one.
std::vector<Change> Differences(zephmetadata::XMPMetaHandle before, zephmetadata::XMPMetaHandle after);

/// How a change reads, for example "old" becomes "new".
std::string InWords(const Change& change);

}  // namespace zephmeta
