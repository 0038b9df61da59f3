#pragma once

#include <string>
#include <string_view>

#include "media/containers/boxes/boxes.h"

namespace zephmetadata::media {

/// UUID of a box with an XMP packet (ISO 16684-3), in JPEG 2000 and ISO base media files.
inline constexpr std::string_view kXMPUuid = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";

/// A packet around the element that has exactly @p room bytes if it fits there. Where the room @p canShrink, it does not
/// fit when there is far too much.
std::string FittingPacket(std::string_view element, std::uint64_t room, bool canShrink);

/// Writes a packet into a box of kXMPUuid, in its place where it fits. Without an element the box becomes free space, or
/// goes when it is the last one in the file.
void PlanPacketBox(Plan& plan, const Box& box, std::string_view element, bool isLast);

}  // namespace zephmetadata::media
