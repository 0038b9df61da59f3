#include "media/native/exif/exif_values.h"

#include <algorithm>

#include "media/native/exif/exif_codecs.h"

namespace zephmetadata::media {

namespace {

bool HasFlag(std::string_view nameSpace, std::string_view property, ExifRowFlags flag) {
    const ExifRow* const row = FindExifRow(nameSpace, property);
    return row != nullptr && (row->mFlags & flag) != 0;
}

}  // namespace

std::vector<NativeValue> ExifValues(const TiffFields& fields) {
    std::vector<NativeValue> values;
    for (const ExifRow& row : ExifRows()) {
        NativeItems items = row.mCodec->mRead(fields, row);
        if (!items.empty()) {
            values.push_back({row.mNamespace, row.mProperty, row.mForm, std::move(items)});
        }
    }
    return values;
}

bool MirrorsExif(std::string_view nameSpace, std::string_view property) {
    return FindExifRow(nameSpace, property) != nullptr;
}

bool IsStructural(std::string_view nameSpace, std::string_view property) {
    return HasFlag(nameSpace, property, kExifRow_Structural);
}

bool MakesNewExif(std::string_view nameSpace, std::string_view property) {
    return HasFlag(nameSpace, property, kExifRow_MakesBlock);
}

bool ExifAgrees(const TiffFields& fields, const NativeValue& packet) {
    const ExifRow* const row = FindExifRow(packet.mNamespace, packet.mProperty);
    if (row == nullptr) {
        return true;
    }
    const NativeItems native = row->mCodec->mRead(fields, *row);
    return native.empty() || native == packet.mItems || row->mCodec->mAgree(fields, *row, native, packet.mItems);
}

}  // namespace zephmetadata::media
