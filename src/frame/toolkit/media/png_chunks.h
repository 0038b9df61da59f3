#pragma once

#include <string>

namespace zephmetadata::toolkit {

/// Takes the XMP chunk out of a PNG file, in place. The toolkit writes a packet that became smaller over the old one
/// and leaves the old one's tail behind it, which makes neither readable; without an old packet it makes a new chunk.
/// False when the file could not be read or written; a file that is no PNG file or has no XMP is left as it is.
bool RemovePngXMP(const std::string& nativePath);

/// Whether two PNG files hold the same image: the data of their image chunks, one after another.
bool SamePngImage(const std::string& left, const std::string& right);

}  // namespace zephmetadata::toolkit
