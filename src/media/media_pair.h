#pragma once

#include "media/sidecars.h"
#include "zephmetadata/media.h"

namespace zephmetadata::media {

/// A media file and its sidecar, read and written as one.
class MediaPair {
public:
    MediaPair(const UTF16String& path, SidecarPolicy policy) : mPath(path), mPolicy(policy) {}

    const UTF16String& Path() const { return mPath; }
    /// Where changes go when it is not into the file; empty when they go into the file.
    const UTF16String& SidecarPath() const { return mSidecar.mPath; }
    bool CanWrite() const { return mCanWrite; }

    /// Reads both: status and tree are those of the two together.
    MediaReading Read();
    /// Writes what was read last and is now @p tree. Throws nothing.
    WriteOutcome Write(XMPMetaHandle tree);

private:
    bool WantsSidecar(const MediaReading& file) const;
    void LaySidecar(MediaReading& reading);

    UTF16String mPath;
    SidecarPolicy mPolicy;
    bool mCanWrite = false;
    FileStamp mStamp;                         // of the media file as it was read or written last
    std::shared_ptr<const ReadState> mState;  // of the same reading
    Sidecar mSidecar;                         // its path is empty when changes go into the file
};

}  // namespace zephmetadata::media
