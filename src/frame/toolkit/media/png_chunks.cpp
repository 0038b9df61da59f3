#include "frame/toolkit/media/png_chunks.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace zephmetadata::toolkit {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kSignature = "\x89PNG\r\n\x1a\n"sv;
constexpr std::string_view kXMPKeyword = "XML:com.adobe.xmp\0"sv;
constexpr std::size_t kFrame = 12;  // length, type and checksum around the data of a chunk (ISO 15948, 5.3)

struct Chunk {
    std::string_view mWhole;
    std::string_view mType;
    std::string_view mData;
};

std::string ReadFile(const std::string& nativePath) {
    std::ifstream in(nativePath, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Takes the next chunk off the front of @p rest; absent at the end and where the chunks end early.
std::optional<Chunk> TakeChunk(std::string_view& rest) {
    if (rest.size() < kFrame) {
        return std::nullopt;
    }
    std::uint32_t length = 0;
    for (const char c : rest.substr(0, 4)) {
        length = length << 8U | static_cast<unsigned char>(c);
    }
    if (length > rest.size() - kFrame) {
        return std::nullopt;
    }
    const Chunk chunk{rest.substr(0, length + kFrame), rest.substr(4, 4), rest.substr(8, length)};
    rest.remove_prefix(chunk.mWhole.size());
    return chunk;
}

/// The chunks of a file's bytes; empty when it is no PNG file.
std::string_view Chunks(std::string_view bytes) {
    return bytes.starts_with(kSignature) ? bytes.substr(kSignature.size()) : std::string_view();
}

std::string ImageData(const std::string& nativePath) {
    const std::string bytes = ReadFile(nativePath);
    std::string_view rest = Chunks(bytes);
    std::string data;
    while (const auto chunk = TakeChunk(rest)) {
        if (chunk->mType == "IDAT" || chunk->mType == "IHDR" || chunk->mType == "PLTE") {
            data += chunk->mData;
        }
    }
    return data;
}

}  // namespace

bool RemovePngXMP(const std::string& nativePath) {
    const std::string bytes = ReadFile(nativePath);
    std::string_view rest = Chunks(bytes);
    std::string kept(kSignature);
    bool found = false;
    while (const auto chunk = TakeChunk(rest)) {
        if (chunk->mType == "iTXt" && chunk->mData.starts_with(kXMPKeyword)) {
            found = true;
        } else {
            kept += chunk->mWhole;
        }
    }
    if (!found) {
        return true;
    }
    kept += rest;  // what follows the last whole chunk
    std::ofstream out(nativePath, std::ios::binary | std::ios::trunc);
    out << kept;
    out.close();
    return out.good();
}

bool SamePngImage(const std::string& left, const std::string& right) {
    return ImageData(left) == ImageData(right);
}

}  // namespace zephmetadata::toolkit
