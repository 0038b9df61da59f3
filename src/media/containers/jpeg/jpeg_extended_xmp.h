#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/containers/jpeg/jpeg_parts.h"

/// What of the XMP does not fit into the one segment of the packet (ISO 16684-3, JPEG): a second packet in segments of its
/// own, which the first one names by its digest.
namespace zephmetadata::media {

/// The GUID of the extended XMP that a packet refers to (xmpNote:HasExtendedXMP); empty for none.
std::string ExtensionOf(std::string_view packet);

struct ExtendedPacket {
    JPEGParts mParts;                    ///< all segments of the GUID
    std::optional<std::string> mPacket;  ///< absent when it is not there as a whole
};
ExtendedPacket ExtendedXMPOf(const ByteSource& stream, const std::vector<JPEGPart>& parts, std::string_view guid);
/// The segments that hold an extended packet.
std::string ExtensionSegments(std::string_view packet);

/// What the packet has to say of its extended packet: MD5 in hexadecimal, upper case.
std::string ExtendedXMPGuid(std::string_view packet);

}  // namespace zephmetadata::media
