#pragma once

#include <memory>

#include "zephmetadata/media.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

/// A provider over the metadata of a media file that is not a file here: bytes in memory, or ranges of an object in a
/// host's own storage. Read as FileProvider reads, and only read: edits stay in the tree, and a write-back leaves
/// LastWrite with kFileStatus_ReadOnly.
///
/// Of a large file only the ranges with metadata are asked for. Threads: the source is asked by the thread that makes the
/// provider, and may be asked at any later time by the one that uses it.
class ZEPHMETADATA_EXPORT SourceProvider : public TypicalProviderImpl {
public:
    /// Reads the source, which it shares; a null one reads nothing.
    explicit SourceProvider(sp<const ByteSource> source);
    ~SourceProvider() override;

    /// Gives a source without metadata (kFileStatus_NoXMP) an empty tree. False, and nothing happens, for any other.
    bool StartMetaData();

    /// False for writing.
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
