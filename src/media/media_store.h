#pragma once

#include "media/files/media_send.h"
#include "media/files/media_write.h"
#include "media/formats.h"
#include "media/mirroring/read_state.h"
#include "zephmetadata/types.h"

/// The metadata of media files as one tree each. Paths are those of zephcore::File. Nothing here throws or prints.
namespace zephmetadata::media {

struct MediaReading {
    FileStatus mStatus = FileStatus::kFileStatus_Unreadable;
    /// In English where more is known, for example the system's text for an errno; beside kFileStatus_Success what is
    /// damaged in a file that was read as far as it goes.
    UTF8String mDetail;
    XMPMetaPtr mTree;  ///< set when the status is kFileStatus_Success
    /// How a write would be refused because of what the file is; kFileStatus_Success when it can be written.
    FileStatus mWriteStatus = FileStatus::kFileStatus_CannotCarryXMP;
    UTF8String mWriteDetail;
    const FormatRow* mFormat = nullptr;  ///< null for an unknown one
    FileStamp mStamp;                    ///< of the file as it was read
    std::shared_ptr<const ReadState> mState;
};

/// Reads a file. The status is kFileStatus_Success only when the file carries XMP or native metadata that stands for it.
MediaReading ReadMedia(const UTF16String& path);
/// The same for bytes from anywhere.
MediaReading ReadMedia(const std::shared_ptr<const ByteSource>& source);

/// Makes the file that was read as @p stamp say what @p tree says, or leaves it exactly as it was: its packet takes the
/// properties that differ, the native fields that mirror them follow, and every other byte stays. Afterwards @p tree has
/// what native fields derive from the changed ones. @p state is that of the reading that made the tree, if it is at hand; it
/// spares work.
WriteOutcome WriteMedia(const UTF16String& path, XMPMetaHandle tree, const FileStamp& stamp,
                        const ReadState* state = nullptr);

/// The same for bytes from anywhere: gives @p target the new content, or nothing when nothing changes.
SentMedia SendMedia(const std::shared_ptr<const ByteSource>& source, XMPMetaHandle tree, ByteTarget& target);

}  // namespace zephmetadata::media
