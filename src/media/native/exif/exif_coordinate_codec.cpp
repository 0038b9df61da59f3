#include <algorithm>
#include <array>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

namespace {

constexpr int kMostDecimals = 12;
constexpr std::int64_t kMinute = 1'000'000'000'000;  // in the unit of positions
constexpr std::int64_t kDegree = 60 * kMinute;
constexpr std::size_t kParts = 3;

/// In 10^-12 minutes of arc: the finest that is written.
struct Coordinate {
    std::int64_t mPosition = 0;
    std::int64_t mUnit = kMinute;  ///< of the last digit
    char mHemisphere = 'N';
    bool mHasSeconds = false;  ///< a text of the form with seconds
};

/// Of a row: latitudes are GPS tags 2 and 20, longitudes 4 and 22.
bool IsLatitude(const ExifRow& row) {
    return row.mTag == 0x0002 || row.mTag == 0x0014;
}
std::string_view Hemispheres(const ExifRow& row) {
    return IsLatitude(row) ? "NS" : "EW";
}
std::int64_t Farthest(const ExifRow& row) {
    return (IsLatitude(row) ? 90 : 180) * kDegree;
}

std::int64_t PowerOfTen(int exponent) {
    std::int64_t power = 1;
    for (; exponent > 0; --exponent) {
        power *= 10;
    }
    return power;
}

char UpperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

// ---- fields

using Triple = std::array<TiffRational, kParts>;  // degrees, minutes, seconds

std::optional<Triple> TripleOf(const TiffField* field) {
    Triple parts{};
    for (std::size_t i = 0; i < kParts; ++i) {
        const auto part = field == nullptr ? std::nullopt : field->Rational(i);
        parts[i] = part.value_or(TiffRational{0, 1});
        if (parts[i].mDenominator < 0) {
            parts[i] = {-parts[i].mNumerator, -parts[i].mDenominator};
        }
        const bool isNone = parts[i].mDenominator == 0;
        if ((i == 0 && !part) || (isNone && (i == 0 || parts[i].mNumerator != 0))) {
            return std::nullopt;
        }
        if (isNone) {
            parts[i] = {0, 1};  // minutes or seconds of 0/0
        }
    }
    return parts;
}

constexpr std::array<std::int64_t, kParts> kScales = {kDegree, kMinute, kMinute / 60};

/// Sixtieths of minutes do not come out even in decimals: the third part is divided last.
WideInteger Scaled(const TiffRational& part, std::size_t at) {
    const WideInteger scale = at == 2 ? kMinute : kScales[at];
    const WideInteger divisor = static_cast<WideInteger>(part.mDenominator) * (at == 2 ? 60 : 1);
    const WideInteger product = part.mNumerator * scale;
    return (product + (product < 0 ? -divisor : divisor) / 2) / divisor;
}

bool ComesOutEven(const Triple& parts) {
    for (std::size_t i = 0; i < kParts; ++i) {
        const WideInteger sixtieths = i == 2 ? 60 : 1;
        const WideInteger scale = i == 0 ? kDegree : kMinute;
        if (parts[i].mNumerator * scale % (parts[i].mDenominator * sixtieths) != 0) {
            return false;
        }
    }
    return true;
}

bool IsWhole(const Triple& parts) {
    return std::all_of(parts.begin(), parts.end(),
                       [](const TiffRational& part) { return part.mNumerator % part.mDenominator == 0; });
}

std::optional<Coordinate> CoordinateOf(const Triple& parts, char hemisphere, const ExifRow& row) {
    Coordinate coordinate{0, kDegree, hemisphere};
    WideInteger position = 0;
    for (std::size_t i = 0; i < kParts; ++i) {
        position += Scaled(parts[i], i);
        coordinate.mUnit = std::min(coordinate.mUnit, std::max<std::int64_t>(kScales[i] / parts[i].mDenominator, 1));
    }
    if (position < 0) {
        position = -position;
        const std::string_view both = Hemispheres(row);
        coordinate.mHemisphere = both[1];  // a sign says so too
    }
    if (position > Farthest(row)) {
        return std::nullopt;
    }
    coordinate.mPosition = static_cast<std::int64_t>(position);
    return coordinate;
}

// ---- texts

/// "DDD,MM,SSk" for whole seconds.
std::string SecondsText(const Coordinate& coordinate) {
    const std::int64_t seconds = (coordinate.mPosition * 6 + kMinute / 20) / (kMinute / 10);
    return std::to_string(seconds / 3600) + "," + std::to_string(seconds / 60 % 60) + "," +
           std::to_string(seconds % 60) + coordinate.mHemisphere;
}

/// "DDD,MM.mmk", without zeros at the end but for the first.
std::string MinutesText(const Coordinate& coordinate, int decimals) {
    const std::int64_t scale = PowerOfTen(decimals);
    const std::int64_t step = kMinute / scale;
    const std::int64_t rounded = (coordinate.mPosition + step / 2) / step;
    std::string fraction = std::to_string(rounded % scale);
    fraction.insert(0, static_cast<std::size_t>(decimals) - fraction.size(), '0');
    fraction.resize(std::max<std::size_t>(fraction.find_last_not_of('0') + 1, 1));
    return std::to_string(rounded / scale / 60) + "," + std::to_string(rounded / scale % 60) + "." + fraction +
           coordinate.mHemisphere;
}

/// So many decimals of the minute that rounding to the unit of the field gives back what it holds.
int DecimalsFor(std::int64_t unit) {
    constexpr int kLeastDecimals = 4;
    int decimals = kLeastDecimals;
    while (decimals < kMostDecimals && kMinute / PowerOfTen(decimals) * 5 > unit) {
        ++decimals;
    }
    return decimals;
}

std::string CoordinateText(const Triple& parts, const Coordinate& coordinate) {
    if (IsWhole(parts)) {
        return SecondsText(coordinate);
    }
    return MinutesText(coordinate, ComesOutEven(parts) ? kMostDecimals : DecimalsFor(coordinate.mUnit));
}

std::optional<Coordinate> ParseCoordinate(std::string_view text, const ExifRow& row) {
    text = Stripped(text);
    const char hemisphere = text.empty() ? '\0' : UpperCase(text.back());
    if (hemisphere == '\0' || Hemispheres(row).find(hemisphere) == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_suffix(1);
    Coordinate coordinate{0, kDegree, hemisphere};
    WideInteger position = 0;
    for (std::size_t i = 0; i < kParts && !text.empty(); ++i) {
        const std::size_t end = std::min(text.find(','), text.size());
        const auto number = ParseNumber(Stripped(text.substr(0, end)));
        const TiffRational part = number.value_or(NumberText{}).mRatio;
        if (part.mDenominator <= 0 || part.mNumerator < 0 || (i == 0 && part.mDenominator != 1) ||
            (i > 0 && part.mNumerator / part.mDenominator >= 60) || (end == text.size() && i == 0) ||
            (end != text.size() && i + 1 == kParts)) {
            return std::nullopt;
        }
        coordinate.mHasSeconds = i == 2;
        position += Scaled(part, i);
        coordinate.mUnit = std::max<std::int64_t>(kScales[i] / part.mDenominator, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (position > Farthest(row) || coordinate.mUnit == kDegree) {
        return std::nullopt;
    }
    coordinate.mPosition = static_cast<std::int64_t>(position);
    return coordinate;
}

// ---- the codec

struct FieldCoordinate {
    Triple mParts{};
    Coordinate mCoordinate;
};

std::optional<FieldCoordinate> FromFields(const TiffFields& fields, const ExifRow& row) {
    const auto parts = TripleOf(fields.Find(row.mDirectory, row.mTag));
    const TiffField* const reference = fields.Find(row.mDirectory, row.mCompanions[0]);
    const std::string letter = reference == nullptr ? std::string{} : FieldText(*reference);
    const std::string_view stripped = Stripped(letter);
    const char hemisphere = stripped.empty() ? '\0' : UpperCase(stripped[0]);
    if (!parts || hemisphere == '\0' || Hemispheres(row).find(hemisphere) == std::string_view::npos) {
        return std::nullopt;
    }
    const auto coordinate = CoordinateOf(*parts, hemisphere, row);
    return coordinate ? std::optional(FieldCoordinate{*parts, *coordinate}) : std::nullopt;
}

NativeItems ReadCoordinate(const TiffFields& fields, const ExifRow& row) {
    const auto found = FromFields(fields, row);
    return found ? NativeItems{{{}, CoordinateText(found->mParts, found->mCoordinate)}} : NativeItems{};
}

std::int64_t Distance(const Coordinate& left, const Coordinate& right) {
    // Zero degrees lie in both hemispheres.
    const std::int64_t other = left.mHemisphere == right.mHemisphere ? right.mPosition : -right.mPosition;
    return left.mPosition > other ? left.mPosition - other : other - left.mPosition;
}

bool CoordinatesAgree(const TiffFields& fields, const ExifRow& row, const NativeItems& /*native*/,
                      const NativeItems& packet) {
    const auto inFields = FromFields(fields, row);
    const auto inPacket = packet.size() == 1 ? ParseCoordinate(packet[0].mText, row) : std::nullopt;
    if (!inFields || !inPacket) {
        return false;
    }
    const std::int64_t unit = std::max(inFields->mCoordinate.mUnit, inPacket->mUnit);
    return Distance(inFields->mCoordinate, *inPacket) <= unit / 2 + 1;
}

/// Degrees, minutes, and seconds with @p decimals.
Triple InSeconds(const Coordinate& coordinate, int decimals) {
    const std::int64_t scale = PowerOfTen(decimals);
    const auto total = static_cast<std::int64_t>(
        (static_cast<WideInteger>(coordinate.mPosition) * 60 * scale + kMinute / 2) / kMinute);
    return {TiffRational{total / scale / 3600, 1}, {total / scale / 60 % 60, 1}, {total % (60 * scale), scale}};
}

/// The rationals that read back as the very text: seconds where they do, else decimal minutes, else as near as it goes.
Triple TripleFor(const Coordinate& coordinate, const ExifRow& row) {
    constexpr int kDigitsIn32Bits = 7;  // behind the point of a number below 60
    const bool isWholeSecondsText = coordinate.mHasSeconds || coordinate.mPosition % kMinute == 0;
    for (int decimals = 0; decimals <= kDigitsIn32Bits; ++decimals) {
        const Triple parts = InSeconds(coordinate, decimals);
        const auto found = CoordinateOf(parts, coordinate.mHemisphere, row);
        const auto read = found ? ParseCoordinate(CoordinateText(parts, *found), row) : std::nullopt;
        if (read && read->mPosition == coordinate.mPosition && (isWholeSecondsText || !read->mHasSeconds)) {
            return parts;
        }
    }
    for (int decimals = 1; decimals <= kDigitsIn32Bits; ++decimals) {
        const std::int64_t scale = PowerOfTen(decimals);
        if (coordinate.mPosition % (kMinute / scale) == 0) {
            const std::int64_t minutes = coordinate.mPosition % kDegree / (kMinute / scale);
            return {TiffRational{coordinate.mPosition / kDegree, 1}, {minutes, scale}, {0, 1}};
        }
    }
    return InSeconds(coordinate, kDigitsIn32Bits);
}

std::optional<TiffEdits> WriteCoordinate(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto wanted = items.size() == 1 ? ParseCoordinate(items[0].mText, row) : std::nullopt;
    if (!wanted) {
        return std::nullopt;
    }
    const auto present = FromFields(fields, row);
    if (present && wanted->mUnit <= present->mCoordinate.mUnit &&
        Distance(present->mCoordinate, *wanted) <= wanted->mUnit / 2) {
        return TiffEdits{};  // what the field says, with more digits
    }
    TiffEdits edits;
    std::string bytes;
    for (const TiffRational& part : TripleFor(*wanted, row)) {
        bytes += RationalBytes(part);
    }
    edits.push_back({row.mDirectory, row.mCompanions[0], TiffType::kAscii, std::string{wanted->mHemisphere, '\0'}});
    edits.push_back({row.mDirectory, row.mTag, row.mType, std::move(bytes)});
    return edits;
}

}  // namespace

const ExifCodec kCoordinateCodec = {"coordinate", &ReadCoordinate, &CoordinatesAgree, &WriteCoordinate};

}  // namespace zephmetadata::media
