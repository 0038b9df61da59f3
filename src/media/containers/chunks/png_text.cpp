#include "media/containers/chunks/png_text.h"

#include <algorithm>
#include <charconv>

#include "media/containers/block_compression.h"

namespace zephmetadata::media {

namespace {

constexpr std::string_view kSpaces = " \t\r\n";

/// Of the two bytes behind the keyword of an iTXt chunk.
constexpr char kCompressed = 1;

struct InternationalParts {
    std::string_view mLanguages;  // the language tag and the translated keyword, each with its zero byte
    std::string_view mText;
    bool mIsCompressed = false;
};

std::optional<InternationalParts> PartsOf(std::string_view data) {
    const std::size_t flags = PngKeyword(data).size() + 1;
    const std::size_t language = flags + 2;
    const std::size_t translated = data.find('\0', language);
    const std::size_t text = translated == std::string_view::npos ? translated : data.find('\0', translated + 1);
    if (text == std::string_view::npos) {
        return std::nullopt;
    }
    return InternationalParts{data.substr(language, text + 1 - language), data.substr(text + 1),
                              data[flags] == kCompressed};
}

std::optional<std::string> InternationalTextOf(std::string_view data) {
    const auto parts = PartsOf(data);
    if (!parts) {
        return std::nullopt;
    }
    return parts->mIsCompressed ? Decompressed(parts->mText, Compression::kZlib, kMaxDecompressedBytes)
                                : std::string(parts->mText);
}

std::string WithLanguages(std::string_view keyword, std::string_view languages, std::string_view text) {
    std::string data(keyword);
    return data.append(3, '\0').append(languages).append(text);
}

/// The next word of a text, which is cut off from its front.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(kSpaces), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(kSpaces));
    text.remove_prefix(word.size());
    return word;
}

int DigitOf(char c) {
    const char lower = static_cast<char>(c | 0x20);
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string_view PngKeyword(std::string_view data) {
    const std::size_t end = data.substr(0, kMaxPngKeywordBytes).find('\0');
    return end == std::string_view::npos ? std::string_view() : data.substr(0, end);
}

std::optional<std::string> PngText(std::string_view type, std::string_view data) {
    const std::size_t text = PngKeyword(data).size() + 1;
    if (type == "iTXt") {
        return InternationalTextOf(data);
    }
    if (type == "zTXt") {
        // A byte names the way of compression, of which there is one.
        return text < data.size() ? Decompressed(data.substr(text + 1), Compression::kZlib, kMaxDecompressedBytes)
                                  : std::nullopt;
    }
    return std::string(data.substr(std::min(text, data.size())));
}

std::string InternationalTextLike(std::string_view data, std::string_view text) {
    const auto parts = PartsOf(data);
    return parts ? WithLanguages(PngKeyword(data), parts->mLanguages, text) : InternationalText(PngKeyword(data), text);
}

std::string InternationalText(std::string_view keyword, std::string_view text) {
    return WithLanguages(keyword, std::string_view("\0\0", 2), text);
}

std::optional<std::string> RawProfileBytes(std::string_view text) {
    TakeWord(text);
    const std::string_view count = TakeWord(text);
    std::size_t size = 0;
    const auto [end, error] = std::from_chars(count.data(), count.data() + count.size(), size);
    if (error != std::errc() || end != count.data() + count.size() || size > text.size() / 2) {
        return std::nullopt;
    }
    std::string bytes;
    bytes.reserve(size);
    int high = -1;
    for (const char c : text) {
        const int digit = DigitOf(c);
        if (digit < 0) {
            if (kSpaces.find(c) == std::string_view::npos) {
                return std::nullopt;
            }
        } else if (high < 0) {
            high = digit;
        } else {
            bytes += static_cast<char>(high << 4 | digit);
            high = -1;
        }
    }
    // The number counts; some writers let zero bytes follow.
    if (bytes.size() < size) {
        return std::nullopt;
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace zephmetadata::media
