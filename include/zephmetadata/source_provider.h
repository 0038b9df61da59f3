#pragma once

#include <memory>

#include "zephmetadata/byte_target.h"
#include "zephmetadata/media.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

/// A provider over the metadata of a media file that is not a file here: bytes in memory, or ranges of an object in a
/// host's own storage. Read as FileProvider reads. Without a target it is only read: edits stay in the tree, and a
/// write-back leaves LastWrite with kFileStatus_ReadOnly.
///
/// With a target a write-back gives it the whole new content, of which the metadata blocks that change are new and every
/// other byte is the source's. What a write of FileProvider checks is checked before the target gets a byte: that the new
/// content reads back as wanted, that what refers to other places leads there still, that other blocks stay. Nothing is
/// given to it when nothing changes.
///
/// Reading asks for the ranges with metadata alone, writing for everything. Threads: the source is asked by the thread that
/// makes the provider, and may be asked at any later time by the one that uses it.
class ZEPHMETADATA_EXPORT SourceProvider : public TypicalProviderImpl {
public:
    /// Reads the source, which it shares; a null one reads nothing.
    explicit SourceProvider(sp<const ByteSource> source);
    ~SourceProvider() override;

    /// Gives a source without metadata (kFileStatus_NoXMP) an empty tree. False, and nothing happens, for any other.
    bool StartMetaData();

    /// Where write-backs go from now on, shared; null for nowhere.
    void SetTarget(sp<ByteTarget> target);

    /// False for writing without a target, and of what cannot be written.
    bool QueryPathStatus(const Path& path, PathStatus status) const override;
    /// How the last reading went.
    const FileReport& LastRead() const;
    /// kFileStatus_Success before the first write-back.
    const FileReport& LastWrite() const;

private:
    void WriteChanges(const std::vector<Path>& changes) override;

    struct SourceState;
    std::unique_ptr<SourceState> mState;
};

}  // namespace zephmetadata
