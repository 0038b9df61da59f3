#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "media/native/native_value.h"
#include "media/native/tiff/tiff_stream.h"

namespace zephmetadata::media {

struct ExifCodec;

enum ExifRowFlags : std::uint8_t {
    kExifRow_Plain = 0,
    kExifRow_Structural = 1,  ///< of the stored picture or of the block itself: never written
    kExifRow_MakesBlock = 2,  ///< reason enough for a new Exif block
};

/// How many values the field of a row takes.
struct ExifCount {
    std::uint16_t mLeast = 1;
    std::uint16_t mMost = 1;
};

/// One field and the property that it mirrors; its members are in the order in which the table reads best.
struct ExifRow {  // NOLINT(clang-analyzer-optin.performance.Padding)
    TiffDirectory mDirectory = TiffDirectory::kMain;
    std::uint16_t mTag = 0;
    TiffType mType = TiffType::kAscii;  ///< that is written; others are read where they make sense
    ExifCount mCount;                   ///< for numbers
    std::string_view mNamespace;
    std::string_view mProperty;
    ValueForm mForm = ValueForm::kSimple;
    const ExifCodec* mCodec = nullptr;
    std::uint8_t mFlags = kExifRow_Plain;
    /// Fields that hold parts of the same value: of a date offset and fraction, of a coordinate the hemisphere, of the
    /// GPS time the date. 0: none.
    std::array<std::uint16_t, 2> mCompanions{};

    /// Those of dates lie in the Exif directory whatever the date does, those of positions beside them.
    TiffDirectory CompanionDirectory() const {
        return mDirectory == TiffDirectory::kGPS ? TiffDirectory::kGPS : TiffDirectory::kExif;
    }
};

/// All rows: by field, with the property that is preferred first where several share one.
std::span<const ExifRow> ExifRows();
/// Null when nothing mirrors the property.
const ExifRow* FindExifRow(std::string_view nameSpace, std::string_view property);

}  // namespace zephmetadata::media
