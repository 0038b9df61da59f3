#include "media/media_store.h"
#include "providers/tree_supply.h"
#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

struct FileProvider::FileState {
    UTF16String mPath;
    bool mCanWrite = false;
    media::FileStamp mStamp;  // of the file as it was read or written last
    std::shared_ptr<const media::ReadState> mState;
    FileReport mLastRead;
    FileReport mLastWrite{FileStatus::kFileStatus_Success, {}};
};

FileProvider::FileProvider(const UTF16String& path)
    : TypicalProviderImpl(nullptr), mFile(std::make_unique<FileState>()) {
    ResetFilePath(path);
}

FileProvider::~FileProvider() = default;

const UTF16String& FileProvider::FilePath() const {
    return mFile->mPath;
}

void FileProvider::ResetFilePath(const UTF16String& path) {
    if (path != mFile->mPath) {
        mFile->mPath = path;
        ReloadFile();
    }
}

void FileProvider::ReloadFile() {
    if (!CanHaveTrees(mFile->mPath)) {
        mFile->mLastRead = {FileStatus::kFileStatus_Unreadable, kNotInitialized};
        ResetMetaData(nullptr, true);
        return;
    }
    const media::MediaReading file = media::ReadMedia(mFile->mPath);
    mFile->mLastRead = {file.mStatus, file.mDetail};
    mFile->mCanWrite = file.mWriteStatus == FileStatus::kFileStatus_Success;
    mFile->mStamp = file.mStamp;
    mFile->mState = file.mState;
    ResetMetaData(file.mTree.get(), true);
}

bool FileProvider::StartMetaData() {
    if (mFile->mLastRead.mStatus != FileStatus::kFileStatus_NoXMP || !mFile->mCanWrite || MetaDataAccess() != nullptr) {
        return false;
    }
    ResetToEmptyMetaData(true);
    return true;
}

const FileReport& FileProvider::LastRead() const {
    return mFile->mLastRead;
}

const FileReport& FileProvider::LastWrite() const {
    return mFile->mLastWrite;
}

void FileProvider::WriteChanges(const std::vector<Path>& /*changes*/) {
    const XMPMetaPtr tree = MetaDataAccess();
    if (!tree) {
        return;
    }
    mFile->mLastWrite = {FileStatus::kFileStatus_NotWritten, {}};  // unless it comes to something better
    if (IsXMPWritingDisabled()) {
        mFile->mLastWrite = {FileStatus::kFileStatus_WritingDisabled, {}};
    } else {
        const media::WriteOutcome outcome =
            media::WriteMedia(mFile->mPath, tree.get(), mFile->mStamp, mFile->mState.get());
        mFile->mLastWrite = {outcome.mStatus, outcome.mDetail};
        mFile->mStamp = outcome.mStatus == FileStatus::kFileStatus_Success ? outcome.mStamp : mFile->mStamp;
    }
    ReportWriting(mFile->mPath, mFile->mLastWrite);
}

}  // namespace zephmetadata
