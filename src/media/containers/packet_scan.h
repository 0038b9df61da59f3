#pragma once

#include <optional>

#include "media/files/byte_sources.h"

namespace zephmetadata::media {

/// No packet found by scanning may be larger: what opens one may stand in any file by chance.
inline constexpr std::uint64_t kMaxPacketScan = std::uint64_t{16} << 20U;

/// The first whole packet with RDF in it, in UTF-8 or UTF-16, that lies within @p window; reads no further than needed.
std::optional<Range> FindPacket(const ByteSource& file, Range window);
std::optional<Range> FindLastPacket(const ByteSource& file, Range window);

}  // namespace zephmetadata::media
