#pragma once

#include <qpdf/QPDFObjectHandle.hh>
#include <vector>

#include "media/native/native_value.h"

namespace zephmetadata::media {

/// What the document information dictionary (ISO 32000-2, 14.3.3) says, by the mapping of the XMP specification (part 3,
/// 2.2). Nothing for anything but a dictionary.
std::vector<NativeValue> PDFInformation(QPDFObjectHandle dictionary);

}  // namespace zephmetadata::media
