#include "zephmetadata/source_provider.h"

#include "media/media_store.h"
#include "providers/tree_supply.h"
#include "zephmetadata/library.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmetadata {

struct SourceProvider::SourceState {
    sp<const ByteSource> mSource;
    sp<ByteTarget> mTarget;
    bool mCanWrite = false;
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
        mState->mCanWrite = reading.mWriteStatus == FileStatus::kFileStatus_Success;
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

void SourceProvider::SetTarget(sp<ByteTarget> target) {
    mState->mTarget = std::move(target);
}

bool SourceProvider::QueryPathStatus(const Path& /*path*/, PathStatus status) const {
    const bool canWrite = mState->mCanWrite && mState->mTarget != nullptr && mState->mSource != nullptr;
    return canWrite || status == PathStatus::kPathReadable;
}

const FileReport& SourceProvider::LastRead() const {
    return mState->mLastRead;
}

const FileReport& SourceProvider::LastWrite() const {
    return mState->mLastWrite;
}

void SourceProvider::WriteChanges(const std::vector<Path>& /*changes*/) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (mState->mTarget == nullptr || mState->mSource == nullptr || !tree) {
        mState->mLastWrite = {FileStatus::kFileStatus_ReadOnly, "its source is only read"};
    } else if (IsXMPWritingDisabled()) {
        mState->mLastWrite = {FileStatus::kFileStatus_WritingDisabled, {}};
    } else {
        media::SentMedia sent = media::SendMedia(mState->mSource, tree.get(), *mState->mTarget);
        mState->mLastWrite = {sent.mStatus, std::move(sent.mDetail)};
        mState->mSource = sent.mStatus == FileStatus::kFileStatus_Success ? std::move(sent.mSource) : mState->mSource;
    }
    ReportWriting({}, mState->mLastWrite);
}

}  // namespace zephmetadata
