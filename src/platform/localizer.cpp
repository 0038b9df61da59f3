#include "zephcore/localizer.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "zephcore/files.h"
#include "zephcore/text.h"

namespace zephcore {

namespace {

constexpr std::uint64_t kMaxLocalisationFileBytes = 16U << 20U;
constexpr std::u16string_view kKeyStart = u"$$$/";
constexpr std::u16string_view kBlanks = u" \t";

/// Whether @p text is a key with its text, and where its "=" is.
std::optional<std::size_t> KeyEnd(std::u16string_view text) {
    const std::size_t end = text.find(u'=');
    return text.starts_with(kKeyStart) && end != std::u16string_view::npos ? std::optional(end) : std::nullopt;
}

UTF16String DecodedUTF16(std::string_view bytes, bool isBigEndian) {
    UTF16String text;
    text.reserve(bytes.size() / 2);
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        text += static_cast<char16_t>(isBigEndian ? first << 8U | second : second << 8U | first);
    }
    return text;
}

UTF16String DecodedFile(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        return DecodedUTF16(bytes.substr(2), false);
    }
    if (bytes.starts_with("\xFE\xFF")) {
        return DecodedUTF16(bytes.substr(2), true);
    }
    constexpr std::string_view kUTF8Mark = "\xEF\xBB\xBF";
    return UTF8to16(bytes.substr(bytes.starts_with(kUTF8Mark) ? kUTF8Mark.size() : 0));
}

/// The text between the quotes of @p line, which begins with one; absent unless the closing quote ends the line.
std::optional<UTF16String> Unquoted(std::u16string_view line) {
    UTF16String text;
    for (std::size_t at = 1; at < line.size(); ++at) {
        const char16_t next = at + 1 < line.size() ? line[at + 1] : u'\0';
        if (line[at] == u'"') {
            const bool isLast = line.find_first_not_of(kBlanks, at + 1) == std::u16string_view::npos;
            return isLast ? std::optional(text) : std::nullopt;
        }
        if (line[at] == u'\\' && (next == u'n' || next == u'"' || next == u'\\')) {
            text += next == u'n' ? u'\n' : next;
            ++at;
            continue;
        }
        text += line[at];
    }
    return std::nullopt;
}

/// The entry of @p line, "key=text"; absent for a line that is none.
std::optional<UTF16String> EntryOf(std::u16string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    std::optional<UTF16String> entry = line.starts_with(u'"') ? Unquoted(line) : UTF16String(line);
    return entry && KeyEnd(*entry) ? entry : std::nullopt;
}

}  // namespace

Localizer& Localizer::Get() {
    static Localizer localizer;
    return localizer;
}

UTF16String Localizer::Translate(std::u16string_view key) const {
    const std::optional<std::size_t> end = KeyEnd(key);
    if (!end) {
        return UTF16String(key);
    }
    const auto found = mTranslations.find(UTF16String(key.substr(0, *end)));
    return found != mTranslations.end() ? found->second.back().mText : UTF16String(key.substr(*end + 1));
}

bool Localizer::LoadFile(const UTF16String& path, std::u16string_view keptGroup) {
    const auto bytes = FileUtils::ReadFileToString(path, kMaxLocalisationFileBytes);
    if (!bytes) {
        return false;
    }
    LoadBuffer(*bytes, keptGroup);
    return true;
}

void Localizer::LoadBuffer(std::string_view bytes, std::u16string_view keptGroup) {
    const UTF16String text = DecodedFile(bytes);
    std::u16string_view rest = text;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(u'\n'), rest.size());
        std::u16string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        line.remove_suffix(line.ends_with(u'\r') ? 1 : 0);
        const std::optional<UTF16String> entry = EntryOf(line);
        if (entry && (keptGroup.empty() || !entry->starts_with(keptGroup))) {
            const std::size_t keyEnd = *KeyEnd(*entry);
            std::vector<LayerText>& texts = mTranslations[entry->substr(0, keyEnd)];
            if (texts.empty() || texts.back().mLayer != mLayer) {
                texts.push_back({mLayer, {}});
            }
            texts.back().mText = entry->substr(keyEnd + 1);
        }
    }
}

std::size_t Localizer::BeginLayer() {
    return ++mLayer;
}

void Localizer::RemoveLayer(std::size_t layer) {
    for (auto entry = mTranslations.begin(); entry != mTranslations.end();) {
        std::erase_if(entry->second, [&](const LayerText& text) { return text.mLayer == layer; });
        entry = entry->second.empty() ? mTranslations.erase(entry) : std::next(entry);
    }
}

void Localizer::Clear() {
    mLayer = 0;
    mTranslations.clear();
}

}  // namespace zephcore
