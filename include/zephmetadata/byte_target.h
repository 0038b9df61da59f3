#pragma once

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "zephmetadata/file_status.h"
#include "zephmetadata/media.h"

namespace zephmetadata {

/// Where the edited bytes of a source go (SourceProvider::SetTarget): a buffer, an object in a host's own storage. The
/// counterpart of ByteSource.
///
/// One write-back calls Start, Append as often as it takes, Written and Commit, in this order and from one thread, that of
/// the write-back. It ends without Commit when something fails: what was appended is then to be thrown away, at the latest
/// by the next Start. Commit is called only when all of it was written and found right. None of these may throw.
class ZEPHMETADATA_EXPORT ByteTarget {
public:
    ByteTarget() = default;
    ByteTarget(const ByteTarget&) = delete;
    ByteTarget& operator=(const ByteTarget&) = delete;
    virtual ~ByteTarget();

    /// New content of @p size bytes begins. False ends the write-back with kFileStatus_NotWritten, as it does in Append.
    virtual bool Start(std::uint64_t size) = 0;
    /// The next @p size bytes, valid during the call.
    virtual bool Append(const void* bytes, std::size_t size) = 0;
    /// All that was appended, to be compared byte by byte with what it has to be, and to be read from by later
    /// write-backs. Null, when it cannot be read, leaves out that comparison; the provider is then only read.
    virtual sp<const ByteSource> Written() { return nullptr; }
    /// Makes what was appended the content for good. kFileStatus_Changed when what the source has read is no longer what
    /// is stored, another failure, mostly kFileStatus_NotWritten, when it cannot be done; the content is then as it was.
    virtual FileStatus Commit() = 0;
};

/// Bytes in memory, which it owns.
class BufferSource final : public ByteSource {
public:
    explicit BufferSource(std::string bytes) : mBytes(std::move(bytes)) {}

    std::uint64_t Size() const override { return mBytes.size(); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        if (offset > mBytes.size() || size > mBytes.size() - offset) {
            return false;
        }
        mBytes.copy(static_cast<char*>(into), size, static_cast<std::size_t>(offset));
        return true;
    }
    const std::string& Bytes() const { return mBytes; }

private:
    std::string mBytes;
};

/// A target in memory. One thread at a time.
class BufferTarget final : public ByteTarget {
public:
    bool Start(std::uint64_t size) override {
        try {
            mAppended.clear();
            mAppended.reserve(static_cast<std::size_t>(size));
            return true;
        } catch (const std::exception&) {  // there is not as much memory
            return false;
        }
    }
    bool Append(const void* bytes, std::size_t size) override {
        mAppended.append(static_cast<const char*>(bytes), size);
        return true;
    }
    sp<const ByteSource> Written() override {
        mWritten = std::make_shared<const BufferSource>(std::move(mAppended));
        return mWritten;
    }
    FileStatus Commit() override {
        mCommitted = std::move(mWritten);
        return FileStatus::kFileStatus_Success;
    }

    /// What was committed last, shared; null before.
    const sp<const BufferSource>& Committed() const { return mCommitted; }

private:
    std::string mAppended;
    sp<const BufferSource> mWritten;
    sp<const BufferSource> mCommitted;
};

}  // namespace zephmetadata
