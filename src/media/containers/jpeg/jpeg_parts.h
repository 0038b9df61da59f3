#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/containers/jpeg/jpeg_segments.h"

/// What the segments of a JPEG stream are to metadata, and blocks that several of them make together.
namespace zephmetadata::media {

enum class JPEGRole {
    kOther,
    kExif,         ///< APP1 (CIPA DC-008, 4.7.2)
    kXMP,          ///< APP1 (ISO 16684-3, JPEG)
    kExtendedXMP,  ///< APP1, a part of what did not fit into the packet (the same)
    kPhotoshop,    ///< APP13 with image resources
    kPictures,     ///< APP2, the directory of a file with several pictures (CIPA DC-007, 5.2)
};

struct JPEGPart {
    JPEGRole mRole = JPEGRole::kOther;
    JPEGSegment mSegment;
    Range mBody;  ///< behind the signature
};

/// The parts of a stream, one for each segment.
std::vector<JPEGPart> PartsOf(const ByteSource& stream, const JPEGHeaders& headers);

/// Parts of one block in the order in which they make it.
using JPEGParts = std::vector<const JPEGPart*>;

/// The bytes of all of them, one after the other; absent when they cannot be read or are too many to be.
std::optional<std::string> JoinedBodies(const ByteSource& stream, const JPEGParts& parts);

const JPEGPart* FirstOf(const std::vector<JPEGPart>& parts, JPEGRole role);
/// The first Exif block, with the segments behind it that continue one of over 64 KB.
JPEGParts ExifParts(const ByteSource& stream, const std::vector<JPEGPart>& parts);

/// Segments with image resources, the first with a resource that goes on in the others.
struct ResourceParts {
    JPEGParts mParts;
    std::string mBytes;
    std::size_t mLast = 0;  ///< where the last whole resource begins
};
std::vector<ResourceParts> ResourcePartsOf(const ByteSource& stream, const std::vector<JPEGPart>& parts);

// Signatures.
inline constexpr std::string_view kExifSignature{"Exif\0\0", 6};
inline constexpr std::string_view kXMPSignature{"http://ns.adobe.com/xap/1.0/\0", 29};
inline constexpr std::string_view kExtensionSignature{"http://ns.adobe.com/xmp/extension/\0", 35};
inline constexpr std::string_view kPhotoshopSignature{"Photoshop 3.0\0", 14};
inline constexpr std::string_view kPicturesSignature{"MPF\0", 4};

}  // namespace zephmetadata::media
