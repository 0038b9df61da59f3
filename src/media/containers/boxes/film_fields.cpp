#include "media/containers/boxes/film_fields.h"

#include <algorithm>
#include <array>
#include <chrono>

#include "media/bytes.h"
#include "media/containers/boxes/film_keys.h"
#include "media/native/exif/exif_texts.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

/// The contents of a box that is small by its nature.
std::string SmallContents(const ByteSource& file, const Box& box) {
    constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 10U;
    const Range contents = box.Contents();
    return ReadUpTo(file, contents.mOffset, static_cast<std::size_t>(std::min(contents.mSize, kMostBytes)));
}

std::string Digits(std::uint64_t number, std::size_t digits) {
    std::string text = std::to_string(number);
    return text.size() < digits ? text.insert(0, digits - text.size(), '0') : text;
}

/// A date of the header, in seconds since 1904 in UTC, as XMP has it; empty for 0, by which writers say nothing.
std::string DateText(std::uint64_t seconds) {
    using namespace std::chrono;
    constexpr std::uint64_t kSecondsOfDay = 86400;
    constexpr std::uint64_t kMostDays = 1000000;  // a date of the far future is none
    if (seconds == 0 || seconds / kSecondsOfDay > kMostDays) {
        return {};
    }
    const sys_days epoch = year{1904} / January / 1;
    const year_month_day day(epoch + days(seconds / kSecondsOfDay));
    const std::uint64_t time = seconds % kSecondsOfDay;
    return Digits(static_cast<std::uint64_t>(static_cast<int>(day.year())), 4) + "-" +
           Digits(static_cast<unsigned>(day.month()), 2) + "-" + Digits(static_cast<unsigned>(day.day()), 2) + "T" +
           Digits(time / 3600, 2) + ":" + Digits(time / 60 % 60, 2) + ":" + Digits(time % 60, 2) + "Z";
}

void AddDate(std::string_view property, std::uint64_t seconds, std::vector<NativeValue>& values) {
    if (std::string text = DateText(seconds); !text.empty()) {
        values.push_back({kXMP, property, ValueForm::kSimple, {{{}, std::move(text)}}});
    }
}

/// The movie header, ISO/IEC 14496-12, 8.2.2: dates and duration, of 32 bits in version 0 and of 64 in version 1.
void AddHeader(const std::string& header, std::vector<NativeValue>& values) {
    const std::size_t size = !header.empty() && Get8(header, 0) == 1 ? 8 : 4;
    const std::size_t scaleAt = 4 + 2 * size;
    if (header.size() < scaleAt + 4 + size) {
        return;
    }
    AddDate("CreateDate", GetNumber(header, 4, size, ByteOrder::kBig), values);
    AddDate("ModifyDate", GetNumber(header, 4 + size, size, ByteOrder::kBig), values);
    const std::uint32_t scale = Get32(header, scaleAt);
    const std::uint64_t duration = GetNumber(header, scaleAt + 4, size, ByteOrder::kBig);
    const std::uint64_t unknown = size == 4 ? 0xFFFFFFFFU : ~std::uint64_t{0};
    if (scale != 0 && duration != 0 && duration != unknown) {
        values.push_back({kXMPDM,
                          "duration",
                          ValueForm::kStruct,
                          {{"xmpDM:value", std::to_string(duration)}, {"xmpDM:scale", "1/" + std::to_string(scale)}}});
    }
}

/// The language of a copyright notice, three letters of five bits each (ISO 639-2/T); x-default when it says none.
std::string LanguageOf(std::uint16_t packed) {
    std::string language;
    for (const unsigned shift : {10U, 5U, 0U}) {
        const unsigned letter = (packed >> shift) & 0x1FU;
        if (letter == 0 || letter > 26) {
            return "x-default";
        }
        language += static_cast<char>('a' + letter - 1);
    }
    // XMP's tags (RFC 3066) have two letters where there are such.
    constexpr auto kShortTags = std::to_array<std::pair<std::string_view, std::string_view>>({{"und", "x-default"},
                                                                                              {"deu", "de"},
                                                                                              {"eng", "en"},
                                                                                              {"fra", "fr"},
                                                                                              {"ita", "it"},
                                                                                              {"jpn", "ja"},
                                                                                              {"kor", "ko"},
                                                                                              {"nld", "nl"},
                                                                                              {"por", "pt"},
                                                                                              {"rus", "ru"},
                                                                                              {"spa", "es"},
                                                                                              {"zho", "zh"}});
    for (const auto& [tag, shortTag] : kShortTags) {
        if (language == tag) {
            return std::string(shortTag);
        }
    }
    return language;
}

/// Copyright boxes, 8.10.2: a language and a text in UTF-8, or in UTF-16 behind a byte order mark, which is passed over.
void AddCopyrights(const ByteSource& file, const BoxList& movie, std::vector<NativeValue>& values) {
    constexpr std::size_t kTextAt = 6;
    NativeValue rights{kDC, "rights", ValueForm::kLangAlt, {}};
    const Box* const userData = movie.FindPath({"moov", "udta"});
    for (const Box& box : movie.mBoxes) {
        if (box.mType != "cprt" || userData == nullptr || box.mParent != movie.IndexOf(*userData)) {
            continue;
        }
        const std::string contents = SmallContents(file, box);
        std::string text = contents.size() > kTextAt ? contents.substr(kTextAt) : std::string();
        text.resize(std::min(text.find('\0'), text.size()));
        const bool isWide = text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE");
        text = isWide ? std::string() : CleanText(text);
        if (!text.empty()) {
            if (rights.mItems.empty()) {
                rights.mItems.push_back({"x-default", text});
            }
            const std::string language = LanguageOf(Get16(contents, 4));
            if (language != "x-default") {
                rights.mItems.push_back({language, std::move(text)});
            }
        }
    }
    if (!rights.mItems.empty()) {
        values.push_back(std::move(rights));
    }
}

}  // namespace

std::vector<NativeValue> FilmFields(const ByteSource& file, const BoxList& movie) {
    std::vector<NativeValue> values;
    if (const Box* const header = movie.FindPath({"moov", "mvhd"})) {
        AddHeader(SmallContents(file, *header), values);
    }
    AddCopyrights(file, movie, values);
    const auto contents = [&](const Box* box) { return box == nullptr ? std::string() : SmallContents(file, *box); };
    for (NativeValue& value :
         FilmKeys(contents(movie.FindPath({"moov", "meta"})), contents(movie.FindPath({"moov", "udta", "\xA9xyz"})))) {
        values.push_back(std::move(value));
    }
    return values;
}

std::vector<Range> ChunkReferences(const ByteSource& file, const BoxList& movie) {
    constexpr std::size_t kTableAt = 8;  // version and flags, number of entries
    std::vector<Range> references;
    for (const Box& box : movie.mBoxes) {
        const std::size_t width = box.mType == "stco" ? 4 : 8;
        if ((box.mType != "stco" && box.mType != "co64") || box.Contents().mSize > kMaxBlockBytes) {
            continue;
        }
        const std::string table = ReadRange(file, box.Contents()).value_or(std::string());
        for (std::size_t at = kTableAt; at + width <= table.size(); at += width) {
            const std::uint64_t offset = GetNumber(table, at, width, ByteOrder::kBig);
            references.push_back({offset, offset < file.Size() ? std::uint64_t{1} : 0});
        }
    }
    return references;
}

}  // namespace zephmetadata::media
