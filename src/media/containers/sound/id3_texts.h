#pragma once

#include <string_view>
#include <vector>

#include "media/native/native_value.h"

namespace zephmetadata::media {

/// Four upper-case letters and digits.
bool IsFrameId(std::string_view id);

/// The text frames of an ID3v2 tag as XMP properties.
class ID3Texts {
public:
    /// The data of a frame, without its header; what is no known text frame is passed over. Of several frames for one
    /// property the first one goes.
    void Add(std::string_view id, std::string_view data);
    const std::vector<NativeValue>& Values() const { return mValues; }

private:
    std::vector<NativeValue> mValues;
};

}  // namespace zephmetadata::media
