#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "media/native/mirror_change.h"
#include "media/native/native_value.h"
#include "media/native/tiff/tiff_stream.h"

/// What TIFF, Exif and GPS fields say as XMP properties, and back: XMP Specification Part 3 (Storage in Files), CIPA DC-010
/// (Exif metadata for XMP), CIPA DC-008 (Exif), and the guidelines of the Metadata Working Group, version 2.0.
namespace zephmetadata::media {

/// All that the fields say, in the order of the table. What cannot be understood says nothing.
std::vector<NativeValue> ExifValues(const TiffFields& fields);

/// Whether some field mirrors the property.
bool MirrorsExif(std::string_view nameSpace, std::string_view property);
/// Whether the fields behind the property describe the stored picture or the block itself (its size, its coding): they are
/// read and never written.
bool IsStructural(std::string_view nameSpace, std::string_view property);
/// Whether the property is reason enough to give a file its first Exif block: what other programs look for nowhere else.
bool MakesNewExif(std::string_view nameSpace, std::string_view property);

/// Whether @p packet says what the fields say, as far as fields can carry it: a packet may know a zone, a fraction of a
/// second, more digits or letters beyond ASCII. True where the fields say nothing.
bool ExifAgrees(const TiffFields& fields, const NativeValue& packet);

/// A property that Exif cannot carry with the value that was asked for.
struct RefusedProperty {
    std::string_view mNamespace, mProperty;
    friend bool operator==(const RefusedProperty&, const RefusedProperty&) = default;
};

/// The edits that bring the fields in step with changed properties; fields that mirror none of these stay as they are.
/// Where several properties share a field (exif:DateTimeOriginal and photoshop:DateCreated) the one that comes first in
/// the table decides. Fields that are not there yet are added to a block that is; where there is none (@p current is no
/// TIFF stream) only what MakesNewExif comes out. What is refused goes to @p refused and leaves its fields alone.
std::vector<TiffEdit> ExifEdits(const TiffFields& current, std::span<const MirrorChange> changes,
                                std::vector<RefusedProperty>* refused = nullptr);

}  // namespace zephmetadata::media
