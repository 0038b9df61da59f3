#pragma once

#include <string_view>

#include "media/containers/container.h"

/// JPEG (ITU-T T.81, T.871) with the segments of CIPA DC-008 (Exif), ISO 16684-3 (XMP), Photoshop (IPTC-IIM) and CIPA DC-007
/// (several pictures).
namespace zephmetadata::media {

bool IsJPEG(std::string_view head);
const Container& JPEGContainer();

/// The blocks of a JPEG stream that begins where @p stream does and need not end there: raw files hold one as a preview.
FileBlocks ReadJPEGBlocks(const std::shared_ptr<const ByteSource>& stream);

}  // namespace zephmetadata::media
