#pragma once

#include "media/files/open_file.h"
#include "media/plan.h"

namespace zephmetadata::media {

/// Writes what @p plan makes of @p source into the empty file @p into. Memory is bounded whatever the sizes; what stays
/// of a file is copied by the system where it can, which may share the bytes instead of writing them.
///
/// Status kFileStatus_Unreadable when the source cannot be read.
WriteOutcome CarryOut(const Plan& plan, const ByteSource& source, int into);

}  // namespace zephmetadata::media
