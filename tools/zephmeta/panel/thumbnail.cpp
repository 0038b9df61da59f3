#include "panel/thumbnail.h"

#include <libexif/exif-data.h>

#include <memory>
#include <string_view>

#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

struct ExifDeleter {
    void operator()(ExifData* data) const noexcept { exif_data_unref(data); }
};

std::string FromExif(const std::string& file) {
    const std::unique_ptr<ExifData, ExifDeleter> exif(exif_data_new_from_file(file.c_str()));
    return exif && exif->data != nullptr ? std::string(reinterpret_cast<const char*>(exif->data), exif->size)
                                         : std::string();
}

int Base64Digit(char c) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t digit = kDigits.find(c);
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

/// The bytes of a base64 text (RFC 4648); line ends and padding are passed over.
std::string Base64Bytes(std::string_view text) {
    std::string bytes;
    unsigned group = 0;
    unsigned bits = 0;
    for (const char c : text) {
        const int digit = Base64Digit(c);
        if (digit < 0) {
            continue;
        }
        group = (group << 6U | static_cast<unsigned>(digit)) & 0xFFFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFFU);
        }
    }
    return bytes;
}

std::string FromXMP(zephmetadata::XMPMetaHandle tree) {
    std::string text;
    const auto image = zephmetadata::PathForExpression("xmp:Thumbnails[1]/xmpGImg:image");
    return zephmetadata::GetRawStringValue(tree, image, text) ? Base64Bytes(text) : std::string();
}

bool IsJpeg(std::string_view bytes) {
    return bytes.starts_with("\xFF\xD8\xFF");
}

}  // namespace

std::string Thumbnail(const std::string& file, zephmetadata::XMPMetaHandle tree) {
    for (std::string picture : {FromExif(file), FromXMP(tree)}) {
        if (IsJpeg(picture)) {
            return picture;
        }
    }
    return {};
}

}  // namespace zephmeta
