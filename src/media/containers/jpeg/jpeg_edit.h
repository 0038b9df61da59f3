#pragma once

#include "media/containers/container.h"

namespace zephmetadata::media {

/// ISO 16684-3 leaves a packet two bytes less than a segment holds behind the signature.
inline constexpr std::size_t kMaxJPEGPacketBytes = 65502;

/// The plan for a JPEG stream, which begins where @p stream does and need not end there.
PlannedEdit PlanJPEGEdit(const ByteSource& stream, const BlockChanges& changes);

}  // namespace zephmetadata::media
