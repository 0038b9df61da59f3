#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "media/containers/container.h"

namespace zephmetadata::media {

/// Kinds of metadata, to be joined with |.
enum MetadataKind : unsigned {
    kMetadata_None = 0,
    kMetadata_XMP = 1,
    kMetadata_Exif = 2,
    kMetadata_IIM = 4,
    kMetadata_Fields = 8,  ///< the format's own text fields
};

/// One media format.
struct FormatRow {
    std::string_view mName;
    std::string_view mExtensions;  ///< lower case, with blanks between
    /// Whether a file is of the format, by its first kSniffedBytes and, where those do not tell, by more of it.
    bool (*mMatches)(std::string_view head, const ByteSource& file);
    const Container& (*mContainer)();
    unsigned mReads = kMetadata_None;
    unsigned mWrites = kMetadata_None;
    std::string_view mNote;  ///< in English, for people
    /// Raw pictures share their sidecar's name with nothing else: photo.xmp belongs to photo.cr2.
    bool mIsRaw = false;
};

inline constexpr std::size_t kSniffedBytes = 4096;

/// In the order in which they are tried.
std::span<const FormatRow> FormatRows();
/// The format of a file; null for an unknown one.
const FormatRow* FormatOf(const ByteSource& file);

}  // namespace zephmetadata::media
