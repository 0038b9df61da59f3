#pragma once

#include "media/containers/container.h"

/// Where raw formats keep their blocks.
namespace zephmetadata::media {

/// A stream of TIFF directories, the packet in any of them.
void ReadTiffRaw(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks);
/// The same with a whole JPEG stream as the value of a field (Panasonic, Leica).
void ReadRW2(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks);
/// A header that says where a JPEG stream is (Fujifilm).
void ReadRAF(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks);
/// Blocks, one of them a TIFF stream (Minolta).
void ReadMRW(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks);
/// Sections that a directory at the end lists, one of them a JPEG stream (Sigma).
void ReadX3F(const std::shared_ptr<const ByteSource>& file, FileBlocks& blocks);

}  // namespace zephmetadata::media
