#include <algorithm>
#include <array>

#include "media/native/exif/exif_codecs.h"
#include "media/native/exif/exif_dates.h"
#include "media/native/exif/exif_numbers.h"
#include "media/native/exif/exif_texts.h"

namespace zephmetadata::media {

namespace {

constexpr std::uint16_t kDateTimeOriginal = 0x9003;
constexpr std::uint16_t kDateTimeDigitized = 0x9004;
constexpr WideInteger kNanoseconds = 1'000'000'000;
constexpr std::size_t kNanosecondDigits = 9;

std::string TextAt(const TiffFields& fields, TiffDirectory directory, std::uint16_t tag) {
    const TiffField* const field = tag == 0 ? nullptr : fields.Find(directory, tag);
    return field == nullptr ? std::string{} : FieldText(*field);
}

/// A fraction of nothing is how cameras say that they have none.
bool IsZero(std::string_view digits) {
    return digits.find_first_not_of('0') == std::string_view::npos;
}

std::optional<DateParts> DateOf(const TiffFields& fields, const ExifRow& row) {
    auto date = ParseDate(TextAt(fields, row.mDirectory, row.mTag));
    if (!date || !date->mHour) {
        return date;
    }
    const std::string zone = TextAt(fields, row.CompanionDirectory(), row.mCompanions[0]);
    const std::string fraction = TextAt(fields, row.CompanionDirectory(), row.mCompanions[1]);
    if (!date->mZone) {
        date->mZone = ParseZone(Stripped(zone));
    }
    if (date->mFraction.empty()) {
        const std::string_view digits = Stripped(fraction);
        date->mFraction = digits.substr(0, digits.find_first_not_of("0123456789"));
    }
    if (IsZero(date->mFraction)) {
        date->mFraction.clear();
    }
    return date;
}

NativeItems ReadDate(const TiffFields& fields, const ExifRow& row) {
    const auto date = DateOf(fields, row);
    return date ? NativeItems{{{}, XMPDate(*date)}} : NativeItems{};
}

/// The only item as a date; what has words in it, or a time that is none, is not one.
std::optional<DateParts> PacketDate(const NativeItems& items) {
    if (items.size() != 1 || items[0].mText.find_first_not_of("0123456789-+:.TZtz ") != std::string::npos) {
        return std::nullopt;
    }
    constexpr std::size_t kDayCharacters = 10;
    const std::string_view text = Stripped(items[0].mText);
    auto date = ParseDate(text);
    const bool isWhole = date && (date->mHour || text.size() <= kDayCharacters);
    return isWhole ? date : std::nullopt;
}

bool DatesAgree(const TiffFields& fields, const ExifRow& row, const NativeItems& /*native*/,
                const NativeItems& packet) {
    const auto inFields = DateOf(fields, row);
    const auto inPacket = PacketDate(packet);
    return inFields && inPacket && SaysDate(*inPacket, *inFields);
}

void SetText(const TiffFields& fields, TiffDirectory directory, std::uint16_t tag, std::string_view text,
             TiffEdits& edits) {
    if (text.empty()) {
        RemoveField(fields, directory, tag, edits);
    } else {
        edits.push_back({directory, tag, TiffType::kAscii, std::string(text) + '\0'});
    }
}

/// Whether the text of a date field already says the date, in whatever form.
bool SaysAlready(const std::string& text, const DateParts& date) {
    const auto present = ParseDate(text);
    return present && !present->mZone && present->mFraction.empty() && ExifDate(*present) == ExifDate(date);
}

std::optional<TiffEdits> WriteDate(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    const auto date = PacketDate(items);
    if (!date) {
        return std::nullopt;
    }
    TiffEdits edits;
    if (!SaysAlready(TextAt(fields, row.mDirectory, row.mTag), *date)) {
        SetText(fields, row.mDirectory, row.mTag, ExifDate(*date), edits);
    }
    const TiffDirectory beside = row.CompanionDirectory();
    const auto zone = ParseZone(Stripped(TextAt(fields, beside, row.mCompanions[0])));
    if (!zone || zone != date->mZone) {
        SetText(fields, beside, row.mCompanions[0], date->mZone ? ExifZone(*date->mZone) : std::string{}, edits);
    }
    SetText(fields, beside, row.mCompanions[1], date->mFraction, edits);
    return edits;
}

// ---- the time of the position

/// Since midnight.
std::optional<WideInteger> TimeOf(const TiffFields& fields, const ExifRow& row) {
    constexpr std::array<int, 3> kUnits = {3600, 60, 1};
    const TiffField* const field = fields.Find(row.mDirectory, row.mTag);
    WideInteger time = 0;
    for (std::size_t i = 0; i < kUnits.size(); ++i) {
        const auto part = field == nullptr ? std::nullopt : field->Rational(i);
        if (!part || part->mDenominator <= 0 || part->mNumerator < 0) {
            return std::nullopt;
        }
        time += part->mNumerator * kNanoseconds * kUnits[i] / part->mDenominator;
    }
    return time < kNanoseconds * 3600 * 24 ? std::optional(time) : std::nullopt;
}

void SetTime(DateParts& date, WideInteger time) {
    const auto seconds = static_cast<int>(time / kNanoseconds);
    date.mHour = seconds / 3600;
    date.mMinute = seconds / 60 % 60;
    date.mSecond = seconds % 60;
    std::string fraction = std::to_string(static_cast<long>(time % kNanoseconds));
    fraction.insert(0, kNanosecondDigits - fraction.size(), '0');
    date.mFraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
    date.mZone = 0;
}

/// Streams older than GPSDateStamp have the day in the date of the picture.
std::optional<DateParts> DayOf(const TiffFields& fields, const ExifRow& row) {
    auto day = ParseDate(TextAt(fields, TiffDirectory::kGPS, row.mCompanions[0]));
    for (const std::uint16_t tag : {kDateTimeOriginal, kDateTimeDigitized}) {
        day = day && day->mDay ? day : ParseDate(TextAt(fields, TiffDirectory::kExif, tag));
    }
    return day && day->mDay ? day : std::nullopt;
}

NativeItems ReadGPSTime(const TiffFields& fields, const ExifRow& row) {
    const auto time = TimeOf(fields, row);
    auto date = DayOf(fields, row);
    if (!time || !date) {
        return {};
    }
    SetTime(*date, *time);
    return {{{}, XMPDate(*date)}};
}

bool GPSTimesAgree(const TiffFields& fields, const ExifRow& row, const NativeItems& native, const NativeItems& packet) {
    auto inFields = ParseDate(native[0].mText);
    auto inPacket = PacketDate(packet);
    if (!inFields || !inPacket || !inPacket->mHour) {
        return false;
    }
    inPacket = InUTC(*inPacket);
    const auto stamp = ParseDate(TextAt(fields, TiffDirectory::kGPS, row.mCompanions[0]));
    if (!stamp || !stamp->mDay) {
        // The day is a guess, and that of the packet may be better.
        inFields->mYear = inPacket->mYear;
        inFields->mMonth = inPacket->mMonth;
        inFields->mDay = inPacket->mDay;
    }
    return SaysDate(*inPacket, *inFields);
}

/// Hours, minutes, and seconds with as many digits as 32 bits hold.
std::string TimeBytes(const DateParts& date) {
    constexpr std::size_t kDigits = 7;
    TiffRational seconds{date.mSecond.value_or(0), 1};
    for (const char digit : date.mFraction.substr(0, kDigits)) {
        seconds.mNumerator = seconds.mNumerator * 10 + (digit - '0');
        seconds.mDenominator *= 10;
    }
    return RationalBytes({date.mHour.value_or(0), 1}) + RationalBytes({date.mMinute.value_or(0), 1}) +
           RationalBytes(seconds);
}

std::optional<TiffEdits> WriteGPSTime(const TiffFields& fields, const ExifRow& row, const NativeItems& items) {
    auto date = PacketDate(items);
    if (!date || !date->mHour) {
        return std::nullopt;
    }
    date = InUTC(*date);
    if (date->mYear < 1 || date->mYear > 9999) {
        return std::nullopt;
    }
    TiffEdits edits;
    auto present = date;
    const auto time = TimeOf(fields, row);
    if (time) {
        SetTime(*present, *time);
    }
    if (!time || XMPDate(*present) != XMPDate(*date)) {
        edits.push_back({row.mDirectory, row.mTag, row.mType, TimeBytes(*date)});
    }
    constexpr std::size_t kDayCharacters = 10;
    SetText(fields, row.mDirectory, row.mCompanions[0], ExifDate(*date).substr(0, kDayCharacters), edits);
    return edits;
}

}  // namespace

const ExifCodec kDateCodec = {"date", &ReadDate, &DatesAgree, &WriteDate};
const ExifCodec kGPSTimeCodec = {"time of the position", &ReadGPSTime, &GPSTimesAgree, &WriteGPSTime};

}  // namespace zephmetadata::media
