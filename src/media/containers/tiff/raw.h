#pragma once

#include <string_view>

#include "media/containers/container.h"

/// Raw formats of cameras, which are read and never written. DNG is none of them: it is a TIFF file.
namespace zephmetadata::media {

/// Formats that have signatures of their own (CR2, ORF, RW2 and RWL, RAF, MRW, X3F, IIQ).
bool IsRaw(std::string_view head);
/// Whether a file with the signature of TIFF is raw by what it holds (NEF, ARW, PEF, SRW, 3FR, ERF, KDC, ...), whatever its
/// name is.
bool IsRawTiff(const ByteSource& file);
const Container& RawContainer();

}  // namespace zephmetadata::media
