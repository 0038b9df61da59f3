#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "media/files/byte_sources.h"

/// Where metadata lies in the text of an SVG document (SVG 2, 5.8).
namespace zephmetadata::media {

struct SVGDocument {
    std::string mDamage;        ///< what is not well-formed; empty for nothing
    bool mIsSVG = false;        ///< the root element is one
    bool mHasEntities = false;  ///< the document type has declarations of its own
    std::string mPrefix;        ///< of the root element's name, with its colon

    Range mRootTag;                       ///< the opening tag of the root
    bool mIsRootEmpty = false;            ///< "<svg/>"
    std::optional<Range> mMetadata;       ///< what is within the first metadata element of the root
    std::optional<Range> mEmptyMetadata;  ///< "<metadata/>" or such, when that is all of it
    std::optional<Range> mXMP;            ///< the x:xmpmeta or rdf:RDF element in a metadata element
    std::string mInherited;               ///< declarations of prefixes that it has from elements around it
};

/// @p text is in UTF-8 or in what its declaration says.
SVGDocument ReadSVG(std::string_view text);

}  // namespace zephmetadata::media
