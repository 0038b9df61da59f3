#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "media/native/exif/exif_table.h"
#include "media/native/exif/exif_values.h"

/// Fields made by hand: bytes as the reader hands them over, big-endian but for what has no type.
namespace zephmetadata::media {

inline TiffField Field(TiffDirectory directory, std::uint16_t tag, TiffType type, std::string bytes) {
    const std::size_t size = TiffTypeBytes(type);
    return {directory, tag, type, bytes.size() / size, std::move(bytes), {}};
}
inline TiffField Main(std::uint16_t tag, TiffType type, std::string bytes) {
    return Field(TiffDirectory::kMain, tag, type, std::move(bytes));
}
inline TiffField Exif(std::uint16_t tag, TiffType type, std::string bytes) {
    return Field(TiffDirectory::kExif, tag, type, std::move(bytes));
}
inline TiffField GPS(std::uint16_t tag, TiffType type, std::string bytes) {
    return Field(TiffDirectory::kGPS, tag, type, std::move(bytes));
}

inline TiffFields Fields(std::vector<TiffField> fields, ByteOrder order = ByteOrder::kBig) {
    return {true, true, false, order, std::move(fields)};
}

/// Numbers of @p size bytes each.
inline std::string Numbers(std::size_t size, const std::vector<std::int64_t>& values) {
    std::string bytes;
    for (const std::int64_t value : values) {
        bytes += NumberBytes(static_cast<std::uint64_t>(value), size);
    }
    return bytes;
}
inline std::string Shorts(const std::vector<std::int64_t>& values) {
    return Numbers(2, values);
}
inline std::string Longs(const std::vector<std::int64_t>& values) {
    return Numbers(4, values);
}

/// What the table has for a local name; names that several rows share come with their own namespace in tests.
inline const ExifRow& Row(std::string_view property) {
    for (const ExifRow& row : ExifRows()) {
        if (row.mProperty == property) {
            return row;
        }
    }
    throw std::invalid_argument(std::string(property));
}

/// Items as "a | b", those with names as "name=a | name=b".
inline std::string ItemsText(const std::vector<NativeItem>& items) {
    std::string text;
    for (const NativeItem& item : items) {
        text += (text.empty() ? "" : " | ") + item.mName + (item.mName.empty() ? "" : "=") + item.mText;
    }
    return text;
}
inline NativeValue Value(std::string_view property, std::string_view text) {
    const ExifRow& row = Row(property);
    NativeValue value{row.mNamespace, row.mProperty, row.mForm, {}};
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(" | "), text.size());
        const std::string_view item = text.substr(0, end);
        const bool isNamed = row.mForm == ValueForm::kStruct || row.mForm == ValueForm::kLangAlt;
        const std::size_t equals = isNamed ? item.find('=') : std::string_view::npos;
        value.mItems.push_back(
            equals == std::string_view::npos
                ? NativeItem{isNamed ? "x-default" : "", std::string(item)}
                : NativeItem{std::string(item.substr(0, equals)), std::string(item.substr(equals + 1))});
        text.remove_prefix(std::min(end + 3, text.size()));
    }
    return value;
}
/// Empty when the fields say nothing of it.
inline std::string Said(const TiffFields& fields, std::string_view property) {
    for (const NativeValue& value : ExifValues(fields)) {
        if (value.mProperty == property) {
            return ItemsText(value.mItems);
        }
    }
    return {};
}

}  // namespace zephmetadata::media
