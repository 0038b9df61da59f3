#pragma once

#include "media/containers/chunks/riff_form.h"
#include "media/native/native_value.h"

namespace zephmetadata::media {

/// What the text fields of an AVI or WAVE file say: LIST INFO (Multimedia Programming Interface and Data Specifications 1.0)
/// and DISP.
std::vector<NativeValue> RiffValues(const ByteSource& file, const Form& form);

}  // namespace zephmetadata::media
