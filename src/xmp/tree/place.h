#pragma once

#include <tuple>

#include "zephmetadata/types.h"

namespace zephmetadata::toolkit {

/// Where a node stands, in the one form that can be compared.
struct Place {
    UTF8String mSchema;  ///< the namespace URI of the top-level property
    UTF8String mPath;    ///< in the toolkit's normal form, as in "dc:title[1]"

    friend bool operator<(const Place& left, const Place& right) {
        return std::tie(left.mSchema, left.mPath) < std::tie(right.mSchema, right.mPath);
    }
};

}  // namespace zephmetadata::toolkit
