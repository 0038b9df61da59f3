#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Metadata blocks that a file keeps compressed.
namespace zephmetadata::media {

/// No metadata comes near this: what a compressed block may become.
inline constexpr std::size_t kMaxDecompressedBytes = std::size_t{64} << 20U;

enum class Compression {
    kNone,
    kZlib,     ///< RFC 1950
    kGzip,     ///< RFC 1952
    kDeflate,  ///< RFC 1951: without a frame
    kBrotli,   ///< RFC 7932
};

/// Absent when the bytes are damaged, cut off, or become more than @p most.
std::optional<std::string> Decompressed(std::string_view bytes, Compression how, std::size_t most);
/// Absent only when memory is short.
std::optional<std::string> Compressed(std::string_view bytes, Compression how);

}  // namespace zephmetadata::media
