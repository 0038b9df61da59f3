#include "media/native/exif/exif_codecs.h"

namespace zephmetadata::media {

void RemoveField(const TiffFields& fields, TiffDirectory directory, std::uint16_t tag, TiffEdits& edits) {
    if (fields.Find(directory, tag) != nullptr) {
        edits.push_back({directory, tag, TiffType::kAscii, {}});
    }
}

ByteOrder InnerOrder(const TiffFields& fields) {
    return fields.mIsTiff ? fields.mOrder : ByteOrder::kBig;
}

std::string_view FieldBytes(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    return field != nullptr && TiffTypeBytes(field->mType) == 1 ? std::string_view(field->mBytes) : std::string_view{};
}

}  // namespace zephmetadata::media
