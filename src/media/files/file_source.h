#pragma once

#include <memory>

#include "media/files/byte_sources.h"
#include "media/files/open_file.h"

namespace zephmetadata::media {

/// The bytes of an open file, as many as there were when the source was made. Bytes that the file lost since then cannot
/// be read. Any thread may read at any time.
///
/// The file is never mapped into memory: one that another program cuts short would kill the process.
class FileSource : public ByteSource {
public:
    explicit FileSource(OpenFile file) : FileSource(std::make_shared<const OpenFile>(std::move(file))) {}
    /// Shares the open file.
    explicit FileSource(std::shared_ptr<const OpenFile> file);

    std::uint64_t Size() const override { return mStamp.mSize; }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override;

    int Number() const { return mFile->Number(); }
    /// Of the file when the source was made.
    const FileStamp& Stamp() const { return mStamp; }

private:
    std::shared_ptr<const OpenFile> mFile;
    FileStamp mStamp;
};

}  // namespace zephmetadata::media
