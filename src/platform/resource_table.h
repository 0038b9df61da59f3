#pragma once

#include <span>
#include <string_view>

namespace zephcore {

/// One document built into the library; the build writes the table.
struct EmbeddedResource {
    std::string_view mName;
    std::string_view mType;
    std::span<const unsigned char> mBytes;
    bool mIsDeflated = false;  ///< the bytes are those that compile_documents writes for --deflate
};

/// In byte order of the names, each name and type once.
std::span<const EmbeddedResource> EmbeddedResources();

}  // namespace zephcore
