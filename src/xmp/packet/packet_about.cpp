#include "xmp/packet/packet_about.h"

#include <algorithm>
#include <array>
#include <string>

namespace zephmetadata::toolkit {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

struct EscapeRow {
    char mCharacter;
    std::string_view mWritten;
};

// White space other than spaces would be read back as spaces.
constexpr auto kEscapes = std::to_array<EscapeRow>(
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\t', "&#9;"}, {'\n', "&#10;"}, {'\r', "&#13;"}});

UTF8String Escaped(const UTF8String& text) {
    UTF8String escaped;
    for (const char c : text) {
        const auto* const row = std::find_if(kEscapes.begin(), kEscapes.end(),
                                             [&](const EscapeRow& known) { return known.mCharacter == c; });
        row == kEscapes.end() ? escaped.push_back(c) : void(escaped.append(row->mWritten));
    }
    return escaped;
}

}  // namespace

TextRange AboutValue(std::string_view tag) {
    const std::string_view element = tag.substr(1, tag.find_first_of(" \t\r\n/>") - 1);
    const std::size_t colon = element.find(':');
    const UTF8String likely =
        UTF8String(element.substr(0, colon == std::string_view::npos ? 0 : colon + 1)).append("about");
    for (const std::string_view written : {std::string_view(likely), std::string_view("about")}) {
        const TextRange found = AttributeValue(tag, [&](std::string_view name) { return name == written; });
        if (found.mEnd > 0) {
            return found;
        }
    }
    return AttributeValue(tag, [](std::string_view name) { return name.ends_with(":about"); });
}

bool MayHaveAbout(std::string_view packet) {
    constexpr std::string_view kName = "about";
    for (std::size_t at = packet.find(kName); at != std::string_view::npos; at = packet.find(kName, at + 1)) {
        const std::size_t equals = packet.find_first_not_of(kBlanks, at + kName.size());
        if (equals == std::string_view::npos || packet[equals] != '=') {
            continue;
        }
        const std::size_t quote = packet.find_first_not_of(kBlanks, equals + 1);
        if (quote == std::string_view::npos || packet.substr(quote, 1) != packet.substr(quote + 1, 1)) {
            return true;
        }
    }
    return false;
}

void PutAbout(UTF8String& packet, const UTF8String& about) {
    // Nothing else looks like it: in texts "<" is escaped, and nested elements have no such attribute.
    constexpr std::string_view kEmpty = "<rdf:Description rdf:about=\"";
    if (about.empty()) {
        return;
    }
    const UTF8String escaped = Escaped(about);
    for (std::size_t at = packet.find(kEmpty); at != UTF8String::npos; at = packet.find(kEmpty, at)) {
        at += kEmpty.size();
        packet.insert(at, escaped);
    }
}

}  // namespace zephmetadata::toolkit
