#include "media/media_pair.h"

#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::media {

bool MediaPair::WantsSidecar(const MediaReading& file) const {
    return mSidecar.mFile != nullptr || mPolicy == SidecarPolicy::kSidecarPolicy_Always ||
           file.mWriteStatus == FileStatus::kFileStatus_CannotCarryXMP;
}

void MediaPair::LaySidecar(MediaReading& reading) {
    const XMPMetaPtr sidecar = toolkit::NewTree();
    if (mSidecar.mFile->Status() != FileStatus::kFileStatus_Success ||
        !toolkit::ParsePacket(sidecar.get(), mSidecar.mFile->Packet())) {
        reading.mStatus = FileStatus::kFileStatus_DamagedXMP;
        reading.mDetail = "in its sidecar";
        reading.mTree = nullptr;
        mCanWrite = false;
        return;
    }
    if (!reading.mTree) {
        reading.mTree = toolkit::NewTree();
    }
    LaySidecarOver(reading.mTree.get(), sidecar.get());
    if (reading.mStatus == FileStatus::kFileStatus_NoXMP) {
        reading.mStatus = FileStatus::kFileStatus_Success;
        reading.mDetail.clear();
    }
}

MediaReading MediaPair::Read() {
    MediaReading reading = ReadMedia(mPath);
    mStamp = reading.mStamp;
    mState = reading.mState;
    mCanWrite = reading.mWriteStatus == FileStatus::kFileStatus_Success;
    mSidecar = {};
    const bool wasRead =
        reading.mStatus == FileStatus::kFileStatus_Success || reading.mStatus == FileStatus::kFileStatus_NoXMP;
    if (mPolicy == SidecarPolicy::kSidecarPolicy_Never || !wasRead) {
        return reading;
    }
    mSidecar = FindSidecar(mPath, reading);
    if (!WantsSidecar(reading)) {
        mSidecar = {};
        return reading;
    }
    mCanWrite = true;
    if (mSidecar.mFile) {
        LaySidecar(reading);
    }
    return reading;
}

WriteOutcome MediaPair::Write(XMPMetaHandle tree) {
    try {
        WriteOutcome outcome = mSidecar.mPath.empty() ? WriteMedia(mPath, tree, mStamp, mState.get())
                                                      : WriteSidecar(mSidecar, mPath, mStamp, tree);
        if (outcome.IsSuccess()) {
            mStamp = outcome.mStamp;
        }
        return outcome;
    } catch (const XMPError& error) {
        return {FileStatus::kFileStatus_NotWritten, error.what(), {}};
    }
}

}  // namespace zephmetadata::media
