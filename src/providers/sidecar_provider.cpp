#include "media/files/packet_file.h"
#include "providers/tree_supply.h"
#include "xmp/tree/xmp_tree.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

struct SidecarProvider::FileState {
    FileState(const UTF16String& path, bool canRead)
        : mPath(path),
          mPacket(canRead ? path : UTF16String()),
          mLastRead(canRead ? FileReport{mPacket.Status(), mPacket.Detail()}
                            : FileReport{FileStatus::kFileStatus_Unreadable, kNotInitialized}) {}

    UTF16String mPath;
    toolkit::PacketFile mPacket;
    FileReport mLastRead;
    FileReport mLastWrite{FileStatus::kFileStatus_Success, {}};
};

SidecarProvider::SidecarProvider(const UTF16String& path)
    : BufferProviderImpl(nullptr, 0), mFile(std::make_unique<FileState>(path, CanHaveTrees(path))) {
    const std::string_view packet = mFile->mPacket.Packet();
    ResetBuffer(reinterpret_cast<const unsigned char*>(packet.data()), packet.size());
}

SidecarProvider::~SidecarProvider() = default;

const UTF16String& SidecarProvider::FilePath() const {
    return mFile->mPath;
}

const FileReport& SidecarProvider::LastRead() const {
    return mFile->mLastRead;
}

const FileReport& SidecarProvider::LastWrite() const {
    return mFile->mLastWrite;
}

void SidecarProvider::WriteChanges(const std::vector<Path>& changes) {
    // What holds unless the packet is made and handed over.
    mFile->mLastWrite = {FileStatus::kFileStatus_NotWritten, "the metadata cannot be made a packet"};
    BufferProviderImpl::WriteChanges(changes);
    ReportWriting(mFile->mPath, mFile->mLastWrite);
}

void SidecarProvider::WriteBuffer(const std::vector<Path>& /*changes*/, const char* data, std::size_t size) {
    if (IsXMPWritingDisabled()) {
        mFile->mLastWrite = {FileStatus::kFileStatus_WritingDisabled, {}};
        return;
    }
    const XMPMetaPtr readBack = toolkit::NewTree();
    if (!toolkit::ParsePacket(readBack.get(), {data, size}) || !toolkit::TreesEqual(readBack.get(), MetaDataAccess())) {
        mFile->mLastWrite = {FileStatus::kFileStatus_NotWritten, "the written metadata does not read back"};
        return;
    }
    const media::WriteOutcome outcome = mFile->mPacket.Write({data, size});
    mFile->mLastWrite = {outcome.mStatus, outcome.mDetail};
}

}  // namespace zephmetadata
