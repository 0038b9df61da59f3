#pragma once

#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// SVG by its root element, which may stand behind a byte order mark, an XML declaration, comments, other processing
/// instructions and a document type: as far as @p head shows it (64 KiB are enough for real files). In any UTF.
bool IsSVG(std::string_view head);
/// Reads the XMP in the first metadata element of the root. Writing replaces it alone, or adds a metadata element.
const Container& SVGContainer();

}  // namespace zephmetadata::media
