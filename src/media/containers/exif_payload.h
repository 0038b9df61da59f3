#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "media/containers/container.h"

/// Exif blocks with something before the TIFF stream: in HEIF (ISO/IEC 23008-12, A.2.1) and JPEG XL the offset of the
/// stream from the fourth byte on, which not all writers get right; in others the signature of JPEG files.
namespace zephmetadata::media {

/// Where the TIFF stream begins in a block, of which @p head is the beginning; absent when there is none near it.
std::optional<std::size_t> TiffStart(std::string_view head);

/// The TIFF stream in a block.
std::optional<ExifStream> ExifInPayload(const std::shared_ptr<const ByteSource>& block);

/// The block with the edits carried out; absent when it holds no sound TIFF stream. @p newPrefix is what comes before a
/// stream that is made because the block is empty.
std::optional<std::string> EditedExifPayload(const std::string& block, std::span<const TiffEdit> edits,
                                             std::string_view newPrefix);

/// Whether the edits make nothing of a block that is not there.
bool OnlyRemove(std::span<const TiffEdit> edits);

/// What comes before a new stream in HEIF and JPEG XL.
inline constexpr std::string_view kNoTiffOffset{"\0\0\0\0", 4};

}  // namespace zephmetadata::media
