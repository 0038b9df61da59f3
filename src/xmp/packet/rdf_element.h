#pragma once

#include <optional>
#include <string_view>

#include "xmp/packet/packet_about.h"

namespace zephmetadata::toolkit {

/// The rdf:RDF of an XML document that holds XMP: the one in x:xmpmeta, or the document's outermost element.
struct RDFElement {
    TextRange mRange;
    UTF8String mAsides;  ///< the comments and processing instructions in it, as written, each in a line of its own
};

/// Absent when there is none, when there are several, and for a document that is not well-formed UTF-8, declares a
/// document type or is nested deeper than kMaxPacketDepth.
std::optional<RDFElement> FindRDF(std::string_view document);

}  // namespace zephmetadata::toolkit
