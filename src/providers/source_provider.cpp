#include "zephmetadata/source_provider.h"

#include "media/media_store.h"
#include "providers/tree_supply.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmetadata {

struct SourceProvider::SourceState {
    sp<const ByteSource> mSource;
    FileReport mLastRead;
    FileReport mLastWrite{FileStatus::kFileStatus_Success, {}};
};

SourceProvider::SourceProvider(sp<const ByteSource> source)
    : TypicalProviderImpl(nullptr), mState(std::make_unique<SourceState>()) {
    mState->mSource = std::move(source);
    if (!CanHaveTrees()) {
        mState->mLastRead = {FileStatus::kFileStatus_Unreadable, kNotInitialized};
    } else if (mState->mSource != nullptr) {
        const media::MediaReading reading = media::ReadMedia(mState->mSource);
        mState->mLastRead = {reading.mStatus, reading.mDetail};
        ResetMetaData(reading.mTree.get(), false);
    }
}

SourceProvider::~SourceProvider() = default;

bool SourceProvider::StartMetaData() {
    if (mState->mLastRead.mStatus != FileStatus::kFileStatus_NoXMP || MetaDataAccess() != nullptr) {
        return false;
    }
    ResetToEmptyMetaData(true);
    return true;
}

bool SourceProvider::QueryPathStatus(const Path& /*path*/, PathStatus status) const {
    return status == PathStatus::kPathReadable;
}

const FileReport& SourceProvider::LastRead() const {
    return mState->mLastRead;
}

const FileReport& SourceProvider::LastWrite() const {
    return mState->mLastWrite;
}

void SourceProvider::WriteChanges(const std::vector<Path>& /*changes*/) {
    mState->mLastWrite = {FileStatus::kFileStatus_ReadOnly, "its source is only read"};
    ReportWriting({}, mState->mLastWrite);
}

}  // namespace zephmetadata
