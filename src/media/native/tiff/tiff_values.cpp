#include <algorithm>
#include <array>
#include <bit>
#include <limits>

#include "media/native/tiff/tiff_layout.h"

namespace zephmetadata::media {

namespace {

struct TypeRow {
    TiffType mType;
    std::uint8_t mBytes;
    std::uint8_t mUnitBytes;
    bool mIsInteger;
    bool mIsSigned;
};
constexpr auto kTypes = std::to_array<TypeRow>({
    {TiffType::kByte, 1, 1, true, false},
    {TiffType::kAscii, 1, 1, false, false},
    {TiffType::kShort, 2, 2, true, false},
    {TiffType::kLong, 4, 4, true, false},
    {TiffType::kRational, 8, 4, false, false},
    {TiffType::kSByte, 1, 1, true, true},
    {TiffType::kUndefined, 1, 1, false, false},
    {TiffType::kSShort, 2, 2, true, true},
    {TiffType::kSLong, 4, 4, true, true},
    {TiffType::kSRational, 8, 4, false, true},
    {TiffType::kFloat, 4, 4, false, true},
    {TiffType::kDouble, 8, 8, false, true},
    {TiffType::kIFD, 4, 4, true, false},
    {TiffType::kLong8, 8, 8, true, false},
    {TiffType::kSLong8, 8, 8, true, true},
    {TiffType::kIFD8, 8, 8, true, false},
    {TiffType::kUTF8, 1, 1, false, false},
});

const TypeRow* RowOf(TiffType type) {
    const auto* const found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [&](const TypeRow& row) { return row.mType == type; });
    return found == std::end(kTypes) ? nullptr : found;
}

/// Absent for an unsigned number that is too large.
std::optional<std::int64_t> NumberAt(std::string_view bytes, std::size_t at, std::size_t size, bool isSigned) {
    std::uint64_t number = GetNumber(bytes, at, size, ByteOrder::kBig);
    const std::uint64_t sign = std::uint64_t{1} << (size * 8 - 1);
    if (isSigned && size < 8 && (number & sign) != 0) {
        number |= ~(sign - 1);
    }
    const auto value = static_cast<std::int64_t>(number);
    return !isSigned && value < 0 ? std::nullopt : std::optional(value);
}

}  // namespace

std::size_t TiffTypeBytes(TiffType type) {
    const TypeRow* const row = RowOf(type);
    return row == nullptr ? 0 : row->mBytes;
}

std::size_t TiffUnitBytes(TiffType type) {
    const TypeRow* const row = RowOf(type);
    return row == nullptr ? 1 : row->mUnitBytes;
}

std::string WithSwappedUnits(std::string values, TiffType type) {
    const std::size_t unit = TiffUnitBytes(type);
    for (std::size_t at = 0; unit > 1 && values.size() - at >= unit; at += unit) {
        const auto start = values.begin() + static_cast<std::ptrdiff_t>(at);
        std::reverse(start, start + static_cast<std::ptrdiff_t>(unit));
    }
    return values;
}

std::optional<std::int64_t> TiffField::Integer(std::size_t at) const {
    const TypeRow* const row = RowOf(mType);
    if (row == nullptr || !row->mIsInteger || at >= mBytes.size() / row->mBytes) {
        return std::nullopt;
    }
    return NumberAt(mBytes, at * row->mBytes, row->mBytes, row->mIsSigned);
}

std::optional<TiffRational> TiffField::Rational(std::size_t at) const {
    if (const auto integer = Integer(at)) {
        return TiffRational{*integer, 1};
    }
    const bool isSigned = mType == TiffType::kSRational;
    if ((!isSigned && mType != TiffType::kRational) || at >= mBytes.size() / 8) {
        return std::nullopt;
    }
    return TiffRational{*NumberAt(mBytes, at * 8, 4, isSigned), *NumberAt(mBytes, at * 8 + 4, 4, isSigned)};
}

std::optional<double> TiffField::Real(std::size_t at) const {
    if (mType == TiffType::kFloat && at < mBytes.size() / 4) {
        return static_cast<double>(std::bit_cast<float>(Get32(mBytes, at * 4)));
    }
    if (mType == TiffType::kDouble && at < mBytes.size() / 8) {
        return std::bit_cast<double>(Get64(mBytes, at * 8));
    }
    const auto rational = Rational(at);
    if (!rational || rational->mDenominator == 0) {
        return std::nullopt;
    }
    return static_cast<double>(rational->mNumerator) / static_cast<double>(rational->mDenominator);
}

std::vector<std::uint64_t> TiffIntegers(const ByteSource& stream, const TiffHeader& header, const TiffEntry& entry,
                                        std::uint64_t most) {
    const TypeRow* const row = RowOf(static_cast<TiffType>(entry.mType));
    if (row == nullptr || !row->mIsInteger || row->mIsSigned) {
        return {};
    }
    const std::uint64_t count = std::min(entry.mCount, most);
    const auto bytes = ReadRange(stream, {entry.mPlace.mOffset, count * row->mBytes});
    if (!bytes) {
        return {};
    }
    std::vector<std::uint64_t> numbers(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        numbers[i] = GetNumber(*bytes, i * row->mBytes, row->mBytes, header.mOrder);
    }
    return numbers;
}

}  // namespace zephmetadata::media
