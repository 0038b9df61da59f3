#pragma once

#include <string>
#include <string_view>

namespace zephmetadata::media {

/// The MD5 digest (RFC 1321) of bytes, 16 bytes: metadata formats identify blocks by it. Not for anything secret.
std::string MD5(std::string_view bytes);

}  // namespace zephmetadata::media
