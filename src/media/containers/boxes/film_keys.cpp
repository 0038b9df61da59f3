#include "media/containers/boxes/film_keys.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "media/bytes.h"
#include "media/native/exif/exif_texts.h"
#include "media/native/namespaces.h"

namespace zephmetadata::media {

namespace {

struct TextRow {
    std::string_view mKey;
    std::string_view mNamespace;
    std::string_view mProperty;
};

constexpr auto kTexts = std::to_array<TextRow>({
    {"com.apple.quicktime.make", kTIFF, "Make"},
    {"com.apple.quicktime.model", kTIFF, "Model"},
    {"com.apple.quicktime.software", kXMP, "CreatorTool"},
});
constexpr std::string_view kDate = "com.apple.quicktime.creationdate";
constexpr std::string_view kPosition = "com.apple.quicktime.location.ISO6709";

using Boxes = std::vector<std::pair<std::string_view, std::string_view>>;

/// Types and contents of the boxes that follow each other, as far as they are whole.
Boxes BoxesIn(std::string_view bytes) {
    constexpr std::size_t kHead = 8;
    Boxes boxes;
    while (bytes.size() >= kHead) {
        const std::size_t size = Get32(bytes, 0);
        if (size < kHead || size > bytes.size()) {
            break;
        }
        boxes.emplace_back(bytes.substr(4, 4), bytes.substr(kHead, size - kHead));
        bytes.remove_prefix(size);
    }
    return boxes;
}

/// Texts by their keys (QuickTime File Format, "Metadata"): a list of names, and values that tell the place of theirs.
std::map<std::string_view, std::string> TextsOf(std::string_view meta) {
    constexpr std::size_t kListAt = 8;   // version and flags, number of entries
    constexpr std::size_t kValueAt = 8;  // kind and language
    constexpr std::uint32_t kUTF8 = 1;
    // ISO base media files have a version and flags before the first box, QuickTime files have none.
    const bool hasVersion = meta.size() >= 12 && meta.substr(4, 4) != "hdlr" && meta.substr(8, 4) == "hdlr";
    Boxes names;
    std::map<std::string_view, std::string> texts;
    for (const auto& [type, contents] : BoxesIn(meta.substr(hasVersion ? 4 : 0))) {
        if (type == "keys" && contents.size() >= kListAt) {
            names = BoxesIn(contents.substr(kListAt));
        }
        for (const auto& [index, item] : type == "ilst" ? BoxesIn(contents) : Boxes()) {
            const Boxes parts = BoxesIn(item);
            const std::size_t place = Get32(index, 0);
            if (place == 0 || place > names.size() || parts.empty() || parts.front().first != "data") {
                continue;
            }
            const std::string_view value = parts.front().second;
            if (value.size() > kValueAt && Get32(value, 0) == kUTF8) {
                texts.emplace(names[place - 1].second, CleanText(std::string(value.substr(kValueAt))));
            }
        }
    }
    return texts;
}

/// "2019-07-24T11:25:40+0300" as XMP has it; empty for what is no date with a time.
std::string DateOf(std::string text) {
    constexpr std::string_view kForm = "0000-00-00T00:00:00";
    if (text.size() < kForm.size()) {
        return {};
    }
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const bool isDigit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == '0' ? !isDigit : text[i] != kForm[i]) {
            return {};
        }
    }
    const std::size_t zone = text.find_first_of("+-", kForm.size());
    if (zone != std::string::npos && text.size() == zone + 5) {
        text.insert(zone + 3, ":");
    }
    return text;
}

/// The number with a sign at the start of @p text, which it is taken from, with @p digits before the point; any number of
/// them for 0.
std::optional<double> TakeNumber(std::string_view& text, std::size_t digits) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789.", 1), text.size());
    const std::string_view number = text.substr(0, end);
    if (number.size() < 2 || (number.front() != '+' && number.front() != '-') ||
        (digits != 0 && std::min(number.find('.'), number.size()) != digits + 1)) {
        return std::nullopt;
    }
    double value = 0;
    const auto [stop, error] = std::from_chars(number.data() + 1, number.data() + number.size(), value);
    if (error != std::errc() || stop != number.data() + number.size()) {
        return std::nullopt;
    }
    text.remove_prefix(end);
    return number.front() == '-' ? -value : value;
}

template <typename... Arguments>
std::string Printed(const char* form, Arguments... arguments) {
    std::array<char, 64> buffer{};
    std::snprintf(buffer.data(), buffer.size(), form, arguments...);
    return buffer.data();
}

/// "32,5.574000N"
std::string CoordinateOf(double degrees, char positive, char negative) {
    constexpr long long kMinute = 1000000;
    const long long parts = std::llround(std::abs(degrees) * 60 * kMinute);
    return Printed("%lld,%lld.%06lld%c", parts / (60 * kMinute), parts / kMinute % 60, parts % kMinute,
                   degrees < 0 ? negative : positive);
}

void Add(std::string_view schema, std::string_view property, std::string text, std::vector<NativeValue>& values) {
    if (!text.empty()) {
        values.push_back({schema, property, ValueForm::kSimple, {{{}, std::move(text)}}});
    }
}

/// ISO 6709 in decimal degrees, "+32.0929+034.8620+028.516/"; anything else says nothing.
void AddPosition(std::string_view text, std::vector<NativeValue>& values) {
    constexpr double kHighest = 1e6;  // metres
    const auto latitude = TakeNumber(text, 2);
    const auto longitude = latitude ? TakeNumber(text, 3) : std::nullopt;
    if (!longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > 180) {
        return;
    }
    Add(kEXIF, "GPSLatitude", CoordinateOf(*latitude, 'N', 'S'), values);
    Add(kEXIF, "GPSLongitude", CoordinateOf(*longitude, 'E', 'W'), values);
    if (const auto altitude = TakeNumber(text, 0); altitude && std::abs(*altitude) < kHighest) {
        Add(kEXIF, "GPSAltitude", Printed("%lld/1000", std::llround(std::abs(*altitude) * 1000)), values);
        Add(kEXIF, "GPSAltitudeRef", *altitude < 0 ? "1" : "0", values);
    }
}

}  // namespace

std::vector<NativeValue> FilmKeys(std::string_view meta, std::string_view location) {
    std::map<std::string_view, std::string> texts = TextsOf(meta);
    std::vector<NativeValue> values;
    for (const TextRow& row : kTexts) {
        Add(row.mNamespace, row.mProperty, texts[row.mKey], values);
    }
    Add(kXMPDM, "shotDate", DateOf(texts[kDate]), values);
    constexpr std::size_t kTextAt = 4;  // size and language
    const std::string& position = texts[kPosition];
    const std::string_view older = location.size() > kTextAt ? location.substr(kTextAt) : std::string_view();
    AddPosition(position.empty() ? older : std::string_view(position), values);
    return values;
}

}  // namespace zephmetadata::media
