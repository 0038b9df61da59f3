#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "zephmetadata/types.h"

/// Media formats, and where the bytes of a media file come from.
namespace zephmetadata {

/// What can be read and written of one format. Metadata of a kind that is not listed stays as it is in every file.
struct MediaFormat {
    /// The kinds of metadata of which a format can have some.
    struct Kinds {
        bool mXMP = false;
        bool mExif = false;    ///< with GPS and TIFF fields
        bool mIIM = false;     ///< IPTC-IIM records
        bool mFields = false;  ///< text fields of the format's own, as ID3 or RIFF INFO
    };

    UTF8String mName;
    std::vector<UTF8String>
        mExtensions;  ///< in lower case, the usual one first; formats are told by content, not by these
    Kinds mReads;
    Kinds mWrites;
    UTF8String mNote;  ///< in English: what a user should know; may be empty
};

/// The formats that the library knows. Needs no Initialize.
ZEPHMETADATA_EXPORT std::vector<MediaFormat> MediaFormats();

/// Where changes of a media file go (MediaProvider).
enum SidecarPolicy : std::int32_t {
    kSidecarPolicy_Never = 0,  ///< into the file; sidecars are not looked at
    /// Into the sidecar where there is one, and where the file's format cannot be written; else into the file.
    kSidecarPolicy_Automatic = 1,
    kSidecarPolicy_Always = 2,  ///< into the sidecar; the file is only read
};

/// Bytes that can be read at any place: a file, a buffer, an object in a host's own storage.
///
/// The library asks for the ranges that it needs, often for the same ones several times. A source whose calls are dear
/// should keep what it fetched. Threads: one at a time for each source, unless the source itself says more.
class ZEPHMETADATA_EXPORT ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource();

    /// In bytes; the same as long as the source lives.
    virtual std::uint64_t Size() const = 0;
    /// Copies @p size bytes from @p offset on to @p into. False when not all of them are there or can be read; what
    /// @p into holds then is undefined. Must not throw.
    virtual bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const = 0;
};

}  // namespace zephmetadata
