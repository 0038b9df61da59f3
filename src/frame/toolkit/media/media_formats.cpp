#include "frame/toolkit/media/media_formats.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

#include "frame/toolkit/exempi_handles.h"
#include "frame/toolkit/media/jpeg_segments.h"
#include "frame/toolkit/media/png_chunks.h"

namespace zephmetadata::toolkit {

namespace {

using namespace std::string_view_literals;

/// Formats that are not listed are read only: SVG, where the toolkit puts the packet behind the root element; PDF and
/// PostScript, which it refuses; WebP, of which it damages some.
constexpr auto kFormats = std::to_array<MediaFormat>({
    {XMP_FT_JPEG, true, nullptr, &SameJpegImage},
    {XMP_FT_PNG, true, &RemovePngXMP, &SamePngImage},
    {XMP_FT_TIFF, true, nullptr, nullptr},
    {XMP_FT_GIF, true, nullptr, nullptr},
    {XMP_FT_PHOTOSHOP, true, nullptr, nullptr},
    {XMP_FT_INDESIGN, true, nullptr, nullptr},
    {XMP_FT_MOV, true, nullptr, nullptr},
    {XMP_FT_MPEG4, true, nullptr, nullptr},
    {XMP_FT_AVI, true, nullptr, nullptr},
    {XMP_FT_WAV, true, nullptr, nullptr},
    {XMP_FT_AIFF, true, nullptr, nullptr},
    {XMP_FT_MP3, true, nullptr, nullptr},
});

struct Signature {
    std::size_t mOffset;
    std::string_view mBytes;
};

/// HEIF and AVIF: brands of ISO 23008-12 and AV1 Image File Format; JPEG 2000: ISO 15444-1, I.5.1 and a bare codestream;
/// JPEG XL: ISO 18181-2, container and bare codestream.
constexpr auto kReadOnlySignatures = std::to_array<Signature>({
    {4, "ftypheic"sv},
    {4, "ftypheix"sv},
    {4, "ftyphevc"sv},
    {4, "ftypmif1"sv},
    {4, "ftypmsf1"sv},
    {4, "ftypavif"sv},
    {4, "ftypavis"sv},
    {0, "\0\0\0\x0CjP  \r\n\x87\n"sv},
    {0, "\xFF\x4F\xFF\x51"sv},
    {0, "\0\0\0\x0CJXL \r\n\x87\n"sv},
    {0, "\xFF\x0A"sv},
});

}  // namespace

const MediaFormat* FindMediaFormat(std::uint32_t code) {
    const auto* row =
        std::find_if(kFormats.begin(), kFormats.end(), [&](const MediaFormat& format) { return format.mCode == code; });
    return row == kFormats.end() ? nullptr : row;
}

bool IsReadOnlyMedium(const std::string& nativePath) {
    std::array<char, 16> start{};
    std::ifstream in(nativePath, std::ios::binary);
    in.read(start.data(), start.size());
    const std::string_view bytes(start.data(), static_cast<std::size_t>(in.gcount()));
    return std::any_of(kReadOnlySignatures.begin(), kReadOnlySignatures.end(), [&](const Signature& signature) {
        return bytes.size() >= signature.mOffset && bytes.substr(signature.mOffset).starts_with(signature.mBytes);
    });
}

}  // namespace zephmetadata::toolkit
