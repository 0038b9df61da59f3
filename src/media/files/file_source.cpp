#include "media/files/file_source.h"

namespace zephmetadata::media {

FileSource::FileSource(std::shared_ptr<const OpenFile> file)
    : mFile(std::move(file)), mStamp(StampOf(mFile->Number())) {}

bool FileSource::ReadAt(std::uint64_t offset, void* into, std::size_t size) const {
    return IsWithin({offset, size}, mStamp.mSize) && ReadFileAt(mFile->Number(), offset, into, size);
}

}  // namespace zephmetadata::media
