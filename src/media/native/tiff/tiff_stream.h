#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "media/bytes.h"
#include "media/plan.h"

/// TIFF streams (TIFF 6.0, BigTIFF): a TIFF file, the Exif block of any other file, the directories of a raw file.
namespace zephmetadata::media {

/// Field types of TIFF 6.0 section 2, of BigTIFF, and of CIPA DC-008 (Exif 3.0: UTF-8).
enum class TiffType : std::uint16_t {
    kByte = 1,
    kAscii = 2,
    kShort = 3,
    kLong = 4,
    kRational = 5,
    kSByte = 6,
    kUndefined = 7,
    kSShort = 8,
    kSLong = 9,
    kSRational = 10,
    kFloat = 11,
    kDouble = 12,
    kIFD = 13,
    kLong8 = 16,
    kSLong8 = 17,
    kIFD8 = 18,
    kUTF8 = 129,
};

/// Bytes of one value of the type; 0 for a type that is none.
std::size_t TiffTypeBytes(TiffType type);

/// The directories whose fields say something of the picture as a whole.
enum class TiffDirectory : std::uint8_t { kMain, kExif, kGPS };

struct TiffRational {
    std::int64_t mNumerator = 0;  // wide enough for both signed and unsigned ones
    std::int64_t mDenominator = 0;
};

/// One field.
struct TiffField {
    TiffDirectory mDirectory = TiffDirectory::kMain;
    std::uint16_t mTag = 0;
    TiffType mType = TiffType::kUndefined;
    std::uint64_t mCount = 0;
    std::string mBytes;  ///< the values, each big-endian whatever the stream is; empty when larger than kMaxFieldBytes
    Range mPlace;        ///< of the values in the stream, in the directory itself where they fit

    /// Value @p at as a number, for the integer types; absent for others and beyond the end.
    std::optional<std::int64_t> Integer(std::size_t at = 0) const;
    /// For the rational types and, over 1, the integer ones.
    std::optional<TiffRational> Rational(std::size_t at = 0) const;
    /// For the floating types and all of the above.
    std::optional<double> Real(std::size_t at = 0) const;
};

/// No value that is shown comes near this; maker notes, previews and packets are reached through mPlace.
inline constexpr std::uint64_t kMaxFieldBytes = std::uint64_t{1} << 20U;
inline constexpr std::size_t kMaxDirectoryEntries = 65535;
inline constexpr std::size_t kMaxDirectories = 10000;

/// What a stream holds. A damaged one is read as far as it goes.
struct TiffFields {
    bool mIsTiff = false;  ///< the header is one
    bool mIsWhole = true;  ///< false when a directory or a value lies outside, or directories go round
    bool mIsBig = false;   ///< BigTIFF
    ByteOrder mOrder = ByteOrder::kLittle;
    std::vector<TiffField> mFields;  ///< of the three directories, each in its order; the first of repeated tags

    const TiffField* Find(TiffDirectory directory, std::uint16_t tag) const;
};

/// What the first directory of a stream is: raw formats (CR3) keep each directory in a stream of its own.
TiffFields ReadTiff(const ByteSource& stream, TiffDirectory first = TiffDirectory::kMain);

/// A field to be set, or removed when it has no values.
struct TiffEdit {
    TiffDirectory mDirectory = TiffDirectory::kMain;
    std::uint16_t mTag = 0;
    TiffType mType = TiffType::kAscii;
    std::string
        mBytes;  ///< the values, whole ones, each big-endian whatever the stream is; empty: the field is removed
    friend bool operator==(const TiffEdit&, const TiffEdit&) = default;
};

/// A plan that carries the edits out. Nothing that is there moves: values are written over where they fit, other values
/// and directories that grow go to the end of the stream, so that offsets in maker notes and image data stay right. A
/// missing Exif or GPS directory is made. Absent when the stream is damaged or would outgrow its offsets.
std::optional<Plan> PlanTiffEdits(const ByteSource& stream, std::span<const TiffEdit> edits);
/// A stream that holds the given fields and nothing else (with ExifVersion where there is an Exif directory).
std::string NewTiff(std::span<const TiffEdit> edits, ByteOrder order = ByteOrder::kBig);

/// Where the stream refers to image data and other blobs by offset, through all directories (strips, tiles, embedded
/// JPEG streams, sub-directories, maker notes): for the check that an edit left them in place.
std::vector<Range> TiffReferences(const ByteSource& stream);

}  // namespace zephmetadata::media
