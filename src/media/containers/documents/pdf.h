#pragma once

#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// PDF (ISO 32000-2), with its header among the first 1024 bytes where readers look for it.
bool IsPDF(std::string_view head);
/// Reads the metadata stream of the catalog and the document information; writes XMP by an incremental update.
const Container& PDFContainer();

}  // namespace zephmetadata::media
