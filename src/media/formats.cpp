#include "media/formats.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "media/containers/boxes/film.h"
#include "media/containers/boxes/heif.h"
#include "media/containers/boxes/jpeg_2000.h"
#include "media/containers/boxes/jpeg_xl.h"
#include "media/containers/chunks/aiff.h"
#include "media/containers/chunks/gif.h"
#include "media/containers/chunks/png.h"
#include "media/containers/chunks/riff.h"
#include "media/containers/chunks/webp.h"
#include "media/containers/documents/pdf.h"
#include "media/containers/documents/psd.h"
#include "media/containers/documents/svg.h"
#include "media/containers/jpeg/jpeg.h"
#include "media/containers/packet_scan.h"
#include "media/containers/scanned.h"
#include "media/containers/sound/mp3.h"
#include "media/containers/tiff/raw.h"
#include "media/containers/tiff/tiff.h"
#include "zephmetadata/media.h"

namespace zephmetadata::media {

namespace {

constexpr unsigned kXMPAndExif = kMetadata_XMP | kMetadata_Exif;
constexpr unsigned kPicture = kXMPAndExif | kMetadata_IIM;
constexpr unsigned kXMPAndFields = kMetadata_XMP | kMetadata_Fields;

template <bool (*Is)(std::string_view)>
bool ByHead(std::string_view head, const ByteSource& /*file*/) {
    return Is(head);
}

bool MatchesRaw(std::string_view head, const ByteSource& file) {
    return IsRaw(head) || (IsTIFF(head) && IsRawTiff(file));
}

bool HoldsPacket(std::string_view /*head*/, const ByteSource& file) {
    return FindPacket(file, {0, std::min(file.Size(), kMaxScannedBytes)}).has_value();
}

/// Formats that begin like others come before them; those that are told by the least come last.
constexpr auto kRows = std::to_array<FormatRow>({
    {"JPEG", "jpg jpeg jpe", &ByHead<IsJPEG>, &JPEGContainer, kPicture, kPicture,
     "extended XMP, multi-picture files and what trails the picture are kept"},
    {"PNG", "png apng", &ByHead<IsPng>, &PngContainer, kPicture, kXMPAndExif, "older \"Raw profile\" texts are read"},
    {"WebP", "webp", &ByHead<IsWebP>, &WebPContainer, kXMPAndExif, kXMPAndExif, ""},
    {"GIF", "gif", &ByHead<IsGif>, &GifContainer, kMetadata_XMP, kMetadata_XMP, ""},
    {"HEIF", "heic heif hif avif", &ByHead<IsHeif>, &HeifContainer, kXMPAndExif, kXMPAndExif, "HEIC and AVIF"},
    {"JPEG XL", "jxl", &ByHead<IsJpegXL>, &JpegXLContainer, kXMPAndExif, kXMPAndExif,
     "a bare codestream is put into a container"},
    {"JPEG 2000", "jp2 jpx jpf jpm", &ByHead<IsJpeg2000>, &Jpeg2000Container, kXMPAndExif, kXMPAndExif, ""},
    {"Photoshop", "psd psb", &ByHead<IsPSD>, &PSDContainer, kPicture, kPicture, ""},
    {"CR3", "cr3", &ByHead<IsCR3>, &CR3Container, kXMPAndExif, kMetadata_None, "", true},
    {"Raw", "nef nrw arw sr2 cr2 raf rw2 orf pef srw 3fr iiq erf mef mos kdc dcr rwl", &MatchesRaw, &RawContainer,
     kXMPAndExif, kMetadata_None, "raw pictures of cameras", true},
    {"TIFF", "tif tiff dng", &ByHead<IsTIFF>, &TIFFContainer, kPicture, kPicture,
     "BigTIFF and DNG too; image data stays where it is"},
    {"Film", "mp4 mov m4v m4a 3gp 3g2 qt", &ByHead<IsFilm>, &FilmContainer, kXMPAndFields, kMetadata_XMP, ""},
    {"RIFF", "avi wav", &ByHead<IsRiff>, &RiffContainer, kXMPAndFields, kMetadata_XMP, "AVI and WAVE"},
    {"AIFF", "aif aiff aifc", &ByHead<IsAiff>, &AiffContainer, kXMPAndFields, kMetadata_XMP, ""},
    {"PDF", "pdf ai", &ByHead<IsPDF>, &PDFContainer, kXMPAndFields, kMetadata_XMP,
     "what is signed or encrypted is left alone"},
    {"SVG", "svg", &ByHead<IsSVG>, &SVGContainer, kMetadata_XMP, kMetadata_XMP, ""},
    {"InDesign", "indd indt", &ByHead<IsInDesign>, &InDesignContainer, kMetadata_XMP, kMetadata_XMP,
     "as long as the packet has room"},
    {"PostScript", "eps ps", &ByHead<IsPostScript>, &PostScriptContainer, kMetadata_XMP, kMetadata_None, ""},
    {"MP3", "mp3", &ByHead<IsMP3>, &MP3Container, kXMPAndFields, kMetadata_XMP, ""},
    {"Other", "", &HoldsPacket, &ScannedContainer, kMetadata_XMP, kMetadata_None, "any file with an XMP packet in it"},
});

MediaFormat::Kinds KindsOf(unsigned kinds) {
    return {(kinds & kMetadata_XMP) != 0, (kinds & kMetadata_Exif) != 0, (kinds & kMetadata_IIM) != 0,
            (kinds & kMetadata_Fields) != 0};
}

MediaFormat Described(const FormatRow& row) {
    MediaFormat format{UTF8String(row.mName), {}, KindsOf(row.mReads), KindsOf(row.mWrites), UTF8String(row.mNote)};
    std::istringstream words{std::string(row.mExtensions)};
    for (std::string extension; words >> extension;) {
        format.mExtensions.push_back(extension);
    }
    return format;
}

}  // namespace

std::span<const FormatRow> FormatRows() {
    return kRows;
}

const FormatRow* FormatOf(const ByteSource& file) {
    const std::string head = ReadUpTo(file, 0, kSniffedBytes);
    const auto* const row =
        std::find_if(kRows.begin(), kRows.end(), [&](const FormatRow& format) { return format.mMatches(head, file); });
    return row == kRows.end() ? nullptr : row;
}

}  // namespace zephmetadata::media

namespace zephmetadata {

std::vector<MediaFormat> MediaFormats() {
    std::vector<MediaFormat> formats;
    for (const media::FormatRow& row : media::FormatRows()) {
        formats.push_back(media::Described(row));
    }
    return formats;
}

}  // namespace zephmetadata
