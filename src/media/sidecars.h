#pragma once

#include <memory>

#include "media/files/packet_file.h"
#include "media/media_store.h"

/// Sidecars: the XMP of a media file in a file of its own beside it.
namespace zephmetadata::media {

/// The sidecar that belongs to the media file at @p path, or the one that would be made.
struct Sidecar {
    UTF16String mPath;
    std::unique_ptr<toolkit::PacketFile> mFile;  ///< null when there is none yet
};

Sidecar FindSidecar(const UTF16String& path, const MediaReading& media);

/// Takes what a sidecar says into the tree of its media file.
void LaySidecarOver(XMPMetaHandle tree, XMPMetaHandle sidecar);

/// Has the sidecar say what makes the file, as it was read as @p stamp, read as @p wanted. A sidecar that is made begins
/// with what the file's own packet holds, since other programs read the sidecar alone.
WriteOutcome WriteSidecar(Sidecar& sidecar, const UTF16String& path, const FileStamp& stamp, XMPMetaHandle wanted);

}  // namespace zephmetadata::media
