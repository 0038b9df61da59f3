#include "xmp/packet/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <string>

#include "zephcore/text.h"

namespace zephmetadata::toolkit {
namespace {

struct Decoded {
    std::uint32_t mCode = 0;
    std::size_t mSize = 0;  ///< bytes taken; 0 for no UTF-8
};

Decoded DecodeOne(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < size) {
        return {};
    }
    std::uint32_t code = lead & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0U) != 0x80U) {
            return {};
        }
        code = (code << 6U) | (next & 0x3FU);
    }
    constexpr auto kLeast = std::to_array<std::uint32_t>({0, 0, 0x80, 0x800, 0x10000});
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kLeast[size] || surrogate || code > 0x10FFFF ? Decoded{} : Decoded{code, size};
}

constexpr bool IsXMLCharacter(std::uint32_t code) {
    return code >= 0x20 ? code != 0xFFFE && code != 0xFFFF : code == '\t' || code == '\n' || code == '\r';
}

struct Reference {
    std::uint32_t mCode = 0;
    std::size_t mSize = 0;  ///< of the reference as written; 0 for none
    bool mIsHex = false;
};

// The character reference at the start of @p text.
Reference ReadReference(std::string_view text) {
    constexpr std::size_t kMaxDigits = 10;
    if (!text.starts_with("&#")) {
        return {};
    }
    const bool hex = text.starts_with("&#x");
    const std::size_t begin = hex ? 3 : 2;
    const std::size_t end = text.substr(0, begin + kMaxDigits).find(';');
    if (end == std::string_view::npos) {
        return {};
    }
    std::uint32_t code = 0;
    const auto [stop, error] = std::from_chars(text.data() + begin, text.data() + end, code, hex ? 16 : 10);
    const bool isNumber = error == std::errc() && stop == text.data() + end;
    return isNumber ? Reference{code, end + 1, hex} : Reference{};
}

// The toolkit takes every hexadecimal reference of one or two digits ("&#x27;") for a control character and puts a
// space in its place, so they are written in decimal. Its scan does not know CDATA sections either: there the ampersand
// is set apart.
UTF8String MendReference(const Reference& reference, std::string_view written, bool inCDATA) {
    if (inCDATA) {
        return UTF8String("]]>&amp;<![CDATA[").append(written.substr(1));
    }
    if (!IsXMLCharacter(reference.mCode)) {
        return " ";
    }
    return reference.mIsHex ? "&#" + std::to_string(reference.mCode) + ";" : UTF8String(written);
}

void AppendLatin1(UTF8String& to, unsigned char byte) {
    to.push_back(static_cast<char>(0xC0U | (byte >> 6U)));
    to.push_back(static_cast<char>(0x80U | (byte & 0x3FU)));
}

// Characters that are neither mended nor begin anything that is; most of a packet is made of them.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (unsigned c = ' '; c < 0x7F; ++c) {
        plain.at(c) = c != '&' && c != '<' && c != ']';
    }
    plain['\n'] = plain['\t'] = plain['\r'] = true;
    return plain;
}();
/// An object and no function, so that loops over whole packets make no call for each character.
constexpr auto kIsPlain = [](char c) { return kPlain[static_cast<unsigned char>(c)]; };

UTF8String Mend(std::string_view text) {
    constexpr std::string_view kBeginCDATA = "<![CDATA[";
    constexpr std::string_view kEndCDATA = "]]>";
    UTF8String mended;
    mended.reserve(text.size());
    bool inCDATA = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view rest = text.substr(at);
        const auto* const plainEnd = std::find_if_not(rest.begin(), rest.end(), kIsPlain);
        if (plainEnd != rest.begin()) {
            mended.append(rest.begin(), plainEnd);
            at += static_cast<std::size_t>(plainEnd - rest.begin());
            continue;
        }
        const Decoded one = DecodeOne(rest);
        inCDATA = inCDATA ? !rest.starts_with(kEndCDATA) : rest.starts_with(kBeginCDATA);
        const Reference reference = ReadReference(rest);
        if (reference.mSize > 0) {
            mended.append(MendReference(reference, rest.substr(0, reference.mSize), inCDATA));
        } else if (one.mSize == 0) {
            AppendLatin1(mended, static_cast<unsigned char>(rest[0]));
        } else if (!IsXMLCharacter(one.mCode)) {
            mended.push_back(' ');
        } else {
            mended.append(rest.substr(0, one.mSize));
        }
        at += std::max({reference.mSize, one.mSize, std::size_t{1}});
    }
    return mended;
}

UTF8String FromUTF16(std::string_view bytes, bool bigEndian) {
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        units.push_back(static_cast<char16_t>(bigEndian ? first * 256 + second : second * 256 + first));
    }
    return zephcore::UTF16to8(units);
}

}  // namespace

TextEncoding EncodingOf(std::string_view document) {
    using namespace std::string_view_literals;
    if (document.starts_with("\xFE\xFF") || document.starts_with("\0<"sv)) {
        return TextEncoding::kUTF16Big;
    }
    if (document.starts_with("\xFF\xFE") || document.starts_with("<\0"sv)) {
        return TextEncoding::kUTF16Little;
    }
    return TextEncoding::kUTF8;
}

UTF8String DecodedDocument(std::string_view document, TextEncoding encoding) {
    return encoding == TextEncoding::kUTF8 ? UTF8String(document)
                                           : FromUTF16(document, encoding == TextEncoding::kUTF16Big);
}

std::string EncodedDocument(std::string_view text, TextEncoding encoding) {
    std::string bytes;
    if (encoding == TextEncoding::kUTF8) {
        return bytes.assign(text);
    }
    for (const char16_t unit : zephcore::UTF8to16(text)) {
        const auto high = static_cast<char>(unit >> 8U);
        const auto low = static_cast<char>(unit & 0xFFU);
        const bool isBig = encoding == TextEncoding::kUTF16Big;
        bytes.push_back(isBig ? high : low);
        bytes.push_back(isBig ? low : high);
    }
    return bytes;
}

bool IsUTF8(std::string_view text) {
    while (!text.empty()) {
        const Decoded one = DecodeOne(text);
        if (one.mSize == 0) {
            return false;
        }
        text.remove_prefix(one.mSize);
    }
    return true;
}

bool IsXMLText(std::string_view text) {
    while (!text.empty()) {
        const auto* const plainEnd = std::find_if_not(text.begin(), text.end(), kIsPlain);
        text.remove_prefix(static_cast<std::size_t>(plainEnd - text.begin()));
        if (text.empty()) {
            break;
        }
        const Decoded one = DecodeOne(text);
        if (one.mSize == 0 || !IsXMLCharacter(one.mCode)) {
            return false;
        }
        text.remove_prefix(one.mSize);
    }
    return true;
}

UTF8String CleanPacket(std::string_view packet) {
    UTF8String clean = Mend(DecodedDocument(packet, EncodingOf(packet)));
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (clean.starts_with(kByteOrderMark)) {
        clean.erase(0, kByteOrderMark.size());
    }
    // Its encoding is no longer true; without one XML is UTF-8.
    if (clean.starts_with("<?xml ") || clean.starts_with("<?xml\t") || clean.starts_with("<?xml\n")) {
        const std::size_t end = clean.find("?>");
        clean.erase(0, end == UTF8String::npos ? clean.size() : end + 2);
    }
    return clean;
}

}  // namespace zephmetadata::toolkit
