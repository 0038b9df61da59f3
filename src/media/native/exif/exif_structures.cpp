#include <algorithm>
#include <array>

#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_structure_items.h"

/// Fields that hold several values of different kinds, which XMP has as structures.
namespace zephmetadata::media {

namespace {

// ---- flash

struct FlashPart {
    std::string_view mName;
    unsigned mShift;
    unsigned mMask;
    bool mIsTruth;
};
constexpr std::array<FlashPart, 5> kFlashParts = {{{"exif:Fired", 0, 1, true},
                                                   {"exif:Return", 1, 3, false},
                                                   {"exif:Mode", 3, 3, false},
                                                   {"exif:Function", 5, 1, true},
                                                   {"exif:RedEyeMode", 6, 1, true}}};

NativeItems ReadFlash(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    const auto bits = field == nullptr ? std::nullopt : field->Integer();
    NativeItems items;
    if (!bits) {
        return items;
    }
    for (const FlashPart& part : kFlashParts) {
        const auto value = static_cast<std::uint64_t>(*bits) >> part.mShift & part.mMask;
        const char* const truth = value != 0 ? "True" : "False";
        items.push_back({std::string(part.mName), part.mIsTruth ? std::string(truth) : std::to_string(value)});
    }
    return items;
}

std::optional<unsigned> FlashBits(const FlashPart& part, std::string_view text) {
    if (part.mIsTruth) {
        return IsSameText("True", text)    ? std::optional(1U)
               : IsSameText("False", text) ? std::optional(0U)
                                           : std::nullopt;
    }
    const auto value = ParseInteger(text);
    return value && *value >= 0 && *value <= part.mMask ? std::optional(static_cast<unsigned>(*value)) : std::nullopt;
}

std::optional<TiffEdits> WriteFlash(const TiffFields& /*fields*/, const ExifRow& row, const NativeItems& items) {
    unsigned bits = 0;
    bool isAny = false;
    for (const FlashPart& part : kFlashParts) {
        const NativeItem* const item = ItemOf(items, part.mName);
        const auto value = item == nullptr ? std::optional(0U) : FlashBits(part, item->mText);
        if (!value) {
            return std::nullopt;
        }
        isAny = isAny || item != nullptr;
        bits |= *value << part.mShift;
    }
    return isAny ? std::optional(OneEdit(row, NumberBytes(bits, 2))) : std::nullopt;
}

// ---- the exposure times of a composite image

constexpr std::array<std::string_view, 7> kTimes = {"exifEX:TotalExposurePeriod",      "exifEX:SumOfExposureTimesOfAll",
                                                    "exifEX:SumOfExposureTimesOfUsed", "exifEX:MaxExposureTimesOfAll",
                                                    "exifEX:MaxExposureTimesOfUsed",   "exifEX:MinExposureTimesOfAll",
                                                    "exifEX:MinExposureTimesOfUsed"};
constexpr std::string_view kSequences = "exifEX:NumberOfSequences";
constexpr std::string_view kImages = "exifEX:NumberOfImagesInSequences";
constexpr std::string_view kTimeValues = "exifEX:Values";
constexpr std::size_t kTimesHead = kTimes.size() * 8 + 4;

NativeItems ReadCompositeTimes(const TiffFields& fields, const ExifRow& row) {
    const std::string_view bytes = FieldBytes(fields, row);
    const ByteOrder order = InnerOrder(fields);
    NativeItems items;
    for (std::size_t i = 0; i < kTimes.size() && bytes.size() >= (i + 1) * 8; ++i) {
        items.push_back({std::string(kTimes[i]), RationalText(bytes, i * 8, order, false)});
    }
    if (bytes.size() < kTimesHead) {
        return items;
    }
    items.push_back({std::string(kSequences), std::to_string(Get16(bytes, kTimesHead - 4, order))});
    items.push_back({std::string(kImages), std::to_string(Get16(bytes, kTimesHead - 2, order))});
    const std::size_t count = std::min((bytes.size() - kTimesHead) / 8, kMaxExifItems);
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back({Numbered(kTimeValues, i), RationalText(bytes, kTimesHead + i * 8, order, false)});
    }
    return items;
}

std::optional<TiffEdits> WriteCompositeTimes(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const ByteOrder order = InnerOrder(fields);
    std::string bytes;
    for (const std::string_view name : kTimes) {
        const NativeItem* const item = ItemOf(items, name);
        const auto cell = item == nullptr ? std::nullopt : RationalCell(item->mText, order, false);
        if (!cell) {
            return std::nullopt;
        }
        bytes += *cell;
    }
    const auto sequences = ShortOf(items, kSequences);
    const auto images = ShortOf(items, kImages);
    if (!sequences || !images) {
        return std::nullopt;
    }
    bytes += NumberBytes(*sequences, 2, order) + NumberBytes(*images, 2, order);
    for (const std::string_view text : ArrayOf(items, kTimeValues)) {
        const auto cell = RationalCell(text, order, false);
        if (!cell) {
            return std::nullopt;
        }
        bytes += *cell;
    }
    return OneEdit(row, std::move(bytes));
}

}  // namespace

const ExifCodec kFlashCodec = {"flash bits", &ReadFlash, &StructuresAgree, &WriteFlash};
const ExifCodec kCompositeTimesCodec = {"exposure times", &ReadCompositeTimes, &StructuresAgree, &WriteCompositeTimes};

}  // namespace zephmetadata::media
