#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/native/exif/exif_table.h"
#include "media/native/native_value.h"
#include "media/native/tiff/tiff_stream.h"

/// How values of fields become texts of XMP and back.
namespace zephmetadata::media {

using NativeItems = std::vector<NativeItem>;
using TiffEdits = std::vector<TiffEdit>;

/// One kind of value. None of the functions is called for a row that names other functions.
struct ExifCodec {
    std::string_view mName;  ///< for tables in documents
    /// What the fields of the row say; nothing when they are absent or make no sense.
    NativeItems (*mRead)(const TiffFields& fields, const ExifRow& row);
    /// Whether items of a packet say what @p native, which is not empty, says.
    bool (*mAgree)(const TiffFields& fields, const ExifRow& row, const NativeItems& native, const NativeItems& packet);
    /// The edits that make the fields say the items; absent when they cannot.
    std::optional<TiffEdits> (*mWrite)(const TiffFields& fields, const ExifRow& row, const NativeItems& items);
};

extern const ExifCodec kIntegerCodec;         ///< decimal; where the type is none a byte each
extern const ExifCodec kSensitivityCodec;     ///< an integer that Exif calls so since 2.3
extern const ExifCodec kRationalCodec;        ///< "n/d", not reduced
extern const ExifCodec kJoinedRationalCodec;  ///< several in one text
extern const ExifCodec kTextCodec;
extern const ExifCodec kCopyrightCodec;       ///< photographer, NUL, editor
extern const ExifCodec kCreatorsCodec;        ///< names separated by semicolons
extern const ExifCodec kCharsetTextCodec;     ///< with the eight bytes that name the character set
extern const ExifCodec kVersionCodec;         ///< four digits of no type
extern const ExifCodec kDottedVersionCodec;   ///< four numbers, "2.3.0.0"
extern const ExifCodec kDateCodec;            ///< with offset and fraction in fields of their own
extern const ExifCodec kGPSTimeCodec;         ///< time in rationals, date in a text, UTC
extern const ExifCodec kCoordinateCodec;      ///< degrees, minutes, seconds and a hemisphere
extern const ExifCodec kFlashCodec;           ///< bits
extern const ExifCodec kColorFilterCodec;     ///< CFAPattern
extern const ExifCodec kResponseCodec;        ///< OECF, SpatialFrequencyResponse: a table of rationals
extern const ExifCodec kDeviceSettingCodec;   ///< a table of texts
extern const ExifCodec kCompositeTimesCodec;  ///< CompositeImageExposureTimes

/// Bounds what one field may say; the longest known (TransferFunction) has 768.
inline constexpr std::size_t kMaxExifItems = 4096;

/// A removal of the field where it is there.
void RemoveField(const TiffFields& fields, TiffDirectory directory, std::uint16_t tag, TiffEdits& edits);
/// The order of numbers within values that have no type; that of new streams where there is none.
ByteOrder InnerOrder(const TiffFields& fields);
/// A table of the field's bytes, for values that have no type; empty when it is not there.
std::string_view FieldBytes(const TiffFields& fields, const ExifRow& row);

}  // namespace zephmetadata::media
