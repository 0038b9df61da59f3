#pragma once

#include "media/containers/boxes/heif_file.h"
#include "media/containers/container.h"

namespace zephmetadata::media {

/// Changes the metadata of a sound file. A block is written over where it fits; otherwise it goes to the end of the file,
/// into the last "mdat" box. What a later edit finds there it writes anew, so that edits do not pile up.
PlannedEdit PlanHeifEdit(const ByteSource& file, const HeifFile& heif, const BlockChanges& changes);

}  // namespace zephmetadata::media
