#include <algorithm>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

namespace {

/// How many values of the field count: one where the property is no array.
std::size_t ShownCount(const TiffField& field, const ExifRow& row) {
    const std::uint64_t most = row.mForm == ValueForm::kSeq ? row.mCount.mMost : 1;
    return static_cast<std::size_t>(std::min(field.mCount, most));
}

bool IsGoodCount(const ExifRow& row, std::size_t count) {
    return count >= row.mCount.mLeast && count <= row.mCount.mMost;
}

std::optional<std::int64_t> IntegerAt(const TiffField& field, const ExifRow& row, std::size_t at) {
    const bool isBytes = row.mType == TiffType::kUndefined || field.mCount == 1;
    if (field.mType == TiffType::kUndefined && isBytes && at < field.mBytes.size()) {
        return static_cast<unsigned char>(field.mBytes[at]);
    }
    if (field.mType == TiffType::kAscii && at == 0) {
        return ParseInteger(FieldText(field));
    }
    return field.Integer(at);
}

NativeItems ReadIntegers(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    NativeItems items;
    const std::uint64_t count = field == nullptr ? 0 : field->mType == TiffType::kAscii ? 1 : ShownCount(*field, row);
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = IntegerAt(*field, row, i);
        if (!value) {
            return {};
        }
        items.push_back({{}, std::to_string(*value)});
    }
    return items;
}

/// Before Exif 2.3 the tag was another property alone, exif:ISOSpeedRatings.
NativeItems ReadSensitivity(const TiffFields& fields, const ExifRow& row) {
    constexpr std::uint16_t kExifVersion = 0x9000;
    const TiffField* const version = fields.Find(TiffDirectory::kExif, kExifVersion);
    const bool isNamed = version != nullptr && version->mBytes.size() == 4 && version->mBytes >= "0230";
    return isNamed ? ReadIntegers(fields, row) : NativeItems{};
}

bool AgreeInItems(const NativeItems& native, const NativeItems& packet) {
    return std::equal(native.begin(), native.end(), packet.begin(), packet.end(),
                      [](const NativeItem& left, const NativeItem& right) {
                          const auto a = ParseNumber(left.mText);
                          const auto b = ParseNumber(right.mText);
                          return a && b && IsSameNumber(*a, *b);
                      });
}

bool NumbersAgree(const TiffFields& /*fields*/, const ExifRow& /*row*/, const NativeItems& native,
                  const NativeItems& packet) {
    return AgreeInItems(native, packet);
}

std::optional<TiffEdits> WriteIntegers(const TiffFields& /*fields*/, const ExifRow& row, const NativeItems& items) {
    if (!IsGoodCount(row, items.size())) {
        return std::nullopt;
    }
    const std::size_t size = TiffTypeBytes(row.mType);
    TiffEdit edit{row.mDirectory, row.mTag, row.mType, {}};
    for (const NativeItem& item : items) {
        const auto value = ParseInteger(item.mText);
        if (!value || *value < 0 || (static_cast<std::uint64_t>(*value) >> (8 * size)) != 0) {
            return std::nullopt;  // no row is of a signed integer type
        }
        edit.mBytes += NumberBytes(static_cast<std::uint64_t>(*value), size);
    }
    return TiffEdits{std::move(edit)};
}

std::optional<TiffRational> RationalAt(const TiffField& field, std::size_t at) {
    if (const auto value = field.Rational(at)) {
        return value;
    }
    const auto real = field.Real(at);
    return real ? RationalOfReal(*real) : std::nullopt;
}

std::string RatioText(const TiffRational& value) {
    return std::to_string(value.mNumerator) + "/" + std::to_string(value.mDenominator);
}

NativeItems ReadRationals(const TiffFields& fields, const ExifRow& row) {
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    NativeItems items;
    const std::size_t count = field == nullptr ? 0 : ShownCount(*field, row);
    for (std::size_t i = 0; i < count; ++i) {
        const auto value = RationalAt(*field, i);
        if (!value) {
            return {};
        }
        items.push_back({{}, RatioText(*value)});
    }
    return items;
}

std::optional<TiffEdits> WriteRationals(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    if (!IsGoodCount(row, items.size())) {
        return std::nullopt;
    }
    if (AgreeInItems(ReadRationals(fields, row), items)) {
        return TiffEdits{};  // the same numbers written in another way
    }
    TiffEdit edit{row.mDirectory, row.mTag, row.mType, {}};
    for (const NativeItem& item : items) {
        const auto number = ParseNumber(item.mText);
        const auto value = number ? FittingRational(*number, row.mType == TiffType::kSRational) : std::nullopt;
        if (!value) {
            return std::nullopt;
        }
        edit.mBytes += RationalBytes(*value);
    }
    return TiffEdits{std::move(edit)};
}

/// "24/1 70/1" as two items.
NativeItems SplitRationals(std::string_view text) {
    NativeItems items;
    while (!text.empty() && items.size() < kMaxExifItems) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end > 0) {
            items.push_back({{}, std::string(text.substr(0, end))});
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return items;
}

/// The row as if its property were an array.
ExifRow ArrayRow(ExifRow row) {
    row.mForm = ValueForm::kSeq;
    return row;
}

NativeItems ReadJoinedRationals(const TiffFields& fields, const ExifRow& row) {
    std::string text;
    for (const NativeItem& item : ReadRationals(fields, ArrayRow(row))) {
        text += (text.empty() ? "" : " ") + item.mText;
    }
    return text.empty() ? NativeItems{} : NativeItems{{{}, text}};
}

bool JoinedRationalsAgree(const TiffFields& /*fields*/, const ExifRow& /*row*/, const NativeItems& native,
                          const NativeItems& packet) {
    return packet.size() == 1 && AgreeInItems(SplitRationals(native[0].mText), SplitRationals(packet[0].mText));
}

std::optional<TiffEdits> WriteJoinedRationals(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    return items.size() == 1 ? WriteRationals(fields, ArrayRow(row), SplitRationals(items[0].mText)) : std::nullopt;
}

}  // namespace

const ExifCodec kIntegerCodec = {"integer", &ReadIntegers, &NumbersAgree, &WriteIntegers};
const ExifCodec kSensitivityCodec = {"integer since Exif 2.3", &ReadSensitivity, &NumbersAgree, &WriteIntegers};
const ExifCodec kRationalCodec = {"rational", &ReadRationals, &NumbersAgree, &WriteRationals};
const ExifCodec kJoinedRationalCodec = {"rationals in one text", &ReadJoinedRationals, &JoinedRationalsAgree,
                                        &WriteJoinedRationals};

}  // namespace zephmetadata::media
