#include "media/native/exif/exif_texts.h"

#include <algorithm>
#include <array>

#include "media/bytes.h"

namespace zephmetadata::media {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Windows-1252 from 0x80 to 0x9F; its five holes are the controls of ISO 8859-1, which are not shown.
constexpr std::array<char16_t, 32> kWindows = {
    0x20AC, 0x0020, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x0020, 0x017D, 0x0020, 0x0020, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x0020, 0x017E, 0x0178,
};

void AppendUTF8(std::string& text, char32_t code) {
    const auto put = [&](char32_t bits) { text += static_cast<char>(bits); };
    if (code < 0x80) {
        put(code);
    } else if (code < 0x800) {
        put(0xC0U | code >> 6U);
        put(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        put(0xE0U | code >> 12U);
        put(0x80U | (code >> 6U & 0x3FU));
        put(0x80U | (code & 0x3FU));
    } else {
        put(0xF0U | code >> 18U);
        put(0x80U | (code >> 12U & 0x3FU));
        put(0x80U | (code >> 6U & 0x3FU));
        put(0x80U | (code & 0x3FU));
    }
}

/// The character at the start of the text, which it removes; kReplacement, and one byte, where there is none.
char32_t TakeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t size = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
    char32_t code = size == 1 ? first : first & (0x7FU >> size);
    bool isGood = size != 0 && size <= text.size();
    for (std::size_t i = 1; isGood && i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        isGood = (next & 0xC0U) == 0x80U;
        code = code << 6U | (next & 0x3FU);
    }
    const bool isOverlong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    isGood = isGood && !isOverlong && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    text.remove_prefix(isGood ? size : 1);
    return isGood ? code : kReplacement;
}

bool IsUTF8(std::string_view text) {
    while (!text.empty()) {
        const std::string_view whole = text;
        const bool isReplacement = whole.starts_with("\xEF\xBF\xBD");
        if (TakeCharacter(text) == kReplacement && !isReplacement) {
            return false;
        }
    }
    return true;
}

/// What XML 1.0 does not carry becomes a space.
char32_t Shown(char32_t code) {
    const bool isControl = code < 0x20 && code != '\t' && code != '\n' && code != '\r';
    return isControl || code == 0x7F || code == 0xFFFE || code == 0xFFFF ? U' ' : code;
}

void RemoveTrailingBlanks(std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    text.erase(last == std::string::npos ? 0 : last + 1);
}

ByteOrder OrderOfUTF16(std::string_view& bytes, ByteOrder order) {
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
        order = bytes[0] == '\xFE' ? ByteOrder::kBig : ByteOrder::kLittle;
        bytes.remove_prefix(2);
        return order;
    }
    std::array<std::size_t, 2> zeros{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        zeros[i % 2] += bytes[i] == '\0' ? 1 : 0;
    }
    if (zeros[0] == zeros[1]) {
        return order;
    }
    return zeros[0] > zeros[1] ? ByteOrder::kBig : ByteOrder::kLittle;
}

/// Whether @p native is @p text with a question mark for some characters beyond ASCII, or for each of their bytes.
bool IsMarkedForm(std::string_view native, std::string_view text, bool isByByte) {
    while (!text.empty()) {
        const std::string_view before = text;
        TakeCharacter(text);
        const std::string_view character = before.substr(0, before.size() - text.size());
        const std::string marks(isByByte ? character.size() : 1, '?');
        const bool isAscii = static_cast<unsigned char>(character[0]) < 0x80;
        if (native.starts_with(character)) {
            native.remove_prefix(character.size());
        } else if (!isAscii && native.starts_with(marks)) {
            native.remove_prefix(marks.size());
        } else {
            return false;
        }
    }
    return native.empty();
}

}  // namespace

std::string CleanText(std::string_view bytes) {
    std::string text;
    if (IsUTF8(bytes)) {
        while (!bytes.empty()) {
            AppendUTF8(text, Shown(TakeCharacter(bytes)));
        }
    } else {
        for (const char byte : bytes) {
            const auto code = static_cast<unsigned char>(byte);
            AppendUTF8(text, Shown(code >= 0x80 && code < 0xA0 ? kWindows[code - 0x80U] : code));
        }
    }
    RemoveTrailingBlanks(text);
    return text;
}

std::string TextOfUTF16(std::string_view bytes, ByteOrder order) {
    order = OrderOfUTF16(bytes, order);
    std::string text;
    for (std::size_t i = 0; bytes.size() - i >= 2; i += 2) {
        char32_t code = Get16(bytes, i, order);
        if (code == 0) {
            break;
        }
        const char32_t next = bytes.size() - i >= 4 ? Get16(bytes, i + 2, order) : 0;
        if (code >= 0xD800 && code < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            code = 0x10000 + ((code - 0xD800) << 10U) + (next - 0xDC00);
            i += 2;
        } else if (code >= 0xD800 && code < 0xE000) {
            code = kReplacement;
        }
        AppendUTF8(text, Shown(code));
    }
    RemoveTrailingBlanks(text);
    return text;
}

std::string UTF16OfText(std::string_view text, ByteOrder order) {
    std::string bytes;
    while (!text.empty()) {
        const char32_t code = TakeCharacter(text);
        if (code < 0x10000) {
            bytes += NumberBytes(code, 2, order);
        } else {
            bytes += NumberBytes(0xD800 + ((code - 0x10000) >> 10U), 2, order);
            bytes += NumberBytes(0xDC00 + ((code - 0x10000) & 0x3FFU), 2, order);
        }
    }
    return bytes;
}

std::string FieldText(const TiffField& field) {
    switch (field.mType) {
        case TiffType::kAscii:
        case TiffType::kUTF8:
        case TiffType::kByte:
        case TiffType::kUndefined:
            return CleanText(std::string_view(field.mBytes).substr(0, field.mBytes.find('\0')));
        default:
            return {};
    }
}

std::string_view Stripped(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool IsTextOf(std::string_view native, std::string_view text) {
    const std::string clean = CleanText(text);
    native = Stripped(native);
    text = Stripped(clean);
    return IsMarkedForm(native, text, false) || IsMarkedForm(native, text, true);
}

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace zephmetadata::media
