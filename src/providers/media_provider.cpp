#include "media/media_pair.h"
#include "providers/tree_supply.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

struct MediaProvider::MediaState {
    MediaState(const UTF16String& path, SidecarPolicy policy) : mPair(path, policy) {}

    media::MediaPair mPair;
    FileReport mLastRead;
    FileReport mLastWrite{FileStatus::kFileStatus_Success, {}};
};

MediaProvider::MediaProvider(const UTF16String& path, SidecarPolicy policy)
    : TypicalProviderImpl(nullptr), mMedia(std::make_unique<MediaState>(path, policy)) {
    ReloadFile();
}

MediaProvider::~MediaProvider() = default;

const UTF16String& MediaProvider::FilePath() const {
    return mMedia->mPair.Path();
}

const UTF16String& MediaProvider::SidecarPath() const {
    return mMedia->mPair.SidecarPath();
}

void MediaProvider::ReloadFile() {
    if (!CanHaveTrees(FilePath())) {
        mMedia->mLastRead = {FileStatus::kFileStatus_Unreadable, kNotInitialized};
        ResetMetaData(nullptr, true);
        return;
    }
    const media::MediaReading reading = mMedia->mPair.Read();
    mMedia->mLastRead = {reading.mStatus, reading.mDetail};
    ResetMetaData(reading.mTree.get(), true);
}

bool MediaProvider::StartMetaData() {
    if (mMedia->mLastRead.mStatus != FileStatus::kFileStatus_NoXMP || !mMedia->mPair.CanWrite() ||
        MetaDataAccess() != nullptr) {
        return false;
    }
    ResetToEmptyMetaData(true);
    return true;
}

const FileReport& MediaProvider::LastRead() const {
    return mMedia->mLastRead;
}

const FileReport& MediaProvider::LastWrite() const {
    return mMedia->mLastWrite;
}

void MediaProvider::WriteChanges(const std::vector<Path>& /*changes*/) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree) {
        return;
    }
    mMedia->mLastWrite = {FileStatus::kFileStatus_NotWritten, {}};  // unless it comes to something better
    if (IsXMPWritingDisabled()) {
        mMedia->mLastWrite = {FileStatus::kFileStatus_WritingDisabled, {}};
    } else {
        const media::WriteOutcome outcome = mMedia->mPair.Write(tree.get());
        mMedia->mLastWrite = {outcome.mStatus, outcome.mDetail};
    }
    ReportWriting(FilePath(), mMedia->mLastWrite);
}

sp<MediaProvider> OpenMedia(const UTF16String& path, SidecarPolicy policy) {
    return std::make_shared<MediaProvider>(path, policy);
}

}  // namespace zephmetadata
