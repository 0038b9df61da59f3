#include "media/native/exif/exif_structure_items.h"

#include <algorithm>

#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

std::string Numbered(std::string_view name, std::size_t at) {
    return std::string(name) + "[" + std::to_string(at + 1) + "]";
}

const NativeItem* ItemOf(const NativeItems& items, std::string_view name) {
    const auto found =
        std::find_if(items.begin(), items.end(), [&](const NativeItem& item) { return item.mName == name; });
    return found == items.end() ? nullptr : &*found;
}

std::vector<std::string_view> ArrayOf(const NativeItems& items, std::string_view name) {
    std::vector<std::string_view> texts;
    for (const NativeItem& item : items) {
        if (item.mName == Numbered(name, texts.size())) {
            texts.push_back(item.mText);
        }
    }
    return texts;
}

std::optional<std::uint16_t> ShortOf(const NativeItems& items, std::string_view name) {
    const NativeItem* const item = ItemOf(items, name);
    const auto value = item == nullptr ? std::nullopt : ParseInteger(item->mText);
    return value && *value >= 0 && *value <= 0xFFFF ? std::optional(static_cast<std::uint16_t>(*value)) : std::nullopt;
}

TiffEdits OneEdit(const ExifRow& row, std::string bytes) {
    return {{row.mDirectory, row.mTag, row.mType, std::move(bytes)}};
}

bool IsSameText(std::string_view left, std::string_view right) {
    const auto a = ParseNumber(left);
    const auto b = ParseNumber(right);
    const auto equalsLetter = [](char x, char y) { return (x | 0x20) == (y | 0x20); };
    return a && b ? IsSameNumber(*a, *b)
                  : IsTextOf(left, right) ||
                        ((left == "True" || left == "False") &&
                         std::equal(left.begin(), left.end(), right.begin(), right.end(), equalsLetter));
}

bool StructuresAgree(const TiffFields& /*fields*/, const ExifRow& /*row*/, const NativeItems& native,
                     const NativeItems& packet) {
    return std::all_of(native.begin(), native.end(), [&](const NativeItem& item) {
        const NativeItem* const other = ItemOf(packet, item.mName);
        return other != nullptr && IsSameText(item.mText, other->mText);
    });
}

std::string RationalText(std::string_view bytes, std::size_t at, ByteOrder order, bool isSigned) {
    const auto side = [&](std::size_t place) {
        const std::uint32_t value = Get32(bytes, place, order);
        return isSigned ? std::to_string(static_cast<std::int32_t>(value)) : std::to_string(value);
    };
    return side(at) + "/" + side(at + 4);
}

std::optional<std::string> RationalCell(std::string_view text, ByteOrder order, bool isSigned) {
    const auto number = ParseNumber(text);
    const auto value = number ? FittingRational(*number, isSigned) : std::nullopt;
    if (!value) {
        return std::nullopt;
    }
    return NumberBytes(static_cast<std::uint64_t>(value->mNumerator), 4, order) +
           NumberBytes(static_cast<std::uint64_t>(value->mDenominator), 4, order);
}

}  // namespace zephmetadata::media
