#pragma once

#include <cstdint>

namespace zephmetadata {

/// How reading or writing the metadata of a file went.
enum FileStatus : std::int32_t {
    kFileStatus_Success = 0,
    kFileStatus_NoFile = 1,         ///< no path given, or nothing at the path
    kFileStatus_NotAFile = 2,       ///< a folder, a device or a pipe
    kFileStatus_Unreadable = 3,     ///< no permission, or an input error
    kFileStatus_UnknownFormat = 4,  ///< none of the media formats that can carry XMP
    kFileStatus_DamagedFile = 5,    ///< the container is damaged or truncated
    kFileStatus_DamagedXMP = 6,  ///< the file has an XMP packet that is not well-formed XMP; it is never written over
    kFileStatus_NoXMP = 7,       ///< a readable media file without XMP
    kFileStatus_ReadOnly = 8,    ///< writing: the file or its folder may not be written
    kFileStatus_CannotCarryXMP = 9,    ///< writing: XMP of this format can be read, not written
    kFileStatus_WritingDisabled = 10,  ///< writing: switched off with DisableXMPWriting
    kFileStatus_NotWritten = 11,       ///< writing failed (full disk, verification); the file is as it was
    kFileStatus_Changed = 12,          ///< writing: the file changed on disk since it was read; left as it is
};

}  // namespace zephmetadata
