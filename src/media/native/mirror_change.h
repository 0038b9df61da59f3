#pragma once

#include <optional>
#include <string_view>

#include "media/native/native_value.h"

namespace zephmetadata::media {

/// A change of an XMP property that native metadata is to follow.
struct MirrorChange {
    std::string_view mNamespace, mProperty;
    std::optional<NativeValue> mValue;  ///< absent: the property was removed
};

}  // namespace zephmetadata::media
