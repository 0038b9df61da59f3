#pragma once

#include "media/files/media_write.h"
#include "zephmetadata/byte_target.h"

namespace zephmetadata::media {

/// How it went to give edited bytes to a target.
struct SentMedia {
    FileStatus mStatus = FileStatus::kFileStatus_NotWritten;
    UTF8String mDetail;
    /// With success what the target holds now: the old source when nothing changed, null when it cannot be read.
    std::shared_ptr<const ByteSource> mSource;
};

/// As ReplaceMedia, for bytes that are no file here. @p check is asked before the target gets a byte; the bytes that it
/// then holds are compared with the plan where it can read them.
SentMedia SendEdited(const std::shared_ptr<const ByteSource>& source, ByteTarget& target, const PlanMedia& plan,
                     const CheckMedia& check);

}  // namespace zephmetadata::media
