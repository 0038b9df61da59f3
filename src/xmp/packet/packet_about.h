#pragma once

#include <cstddef>
#include <string_view>

#include "zephmetadata/types.h"

/// What a packet says that it is about: the rdf:about of its rdf:Description elements.
///
/// The toolkit takes a text that begins with "uuid:" for the instance identifier, in place of the one that the packet
/// has, and does not copy any other with a tree. So it never sees the text: it is kept beside the tree.
namespace zephmetadata::toolkit {

/// Of a text.
struct TextRange {
    std::size_t mBegin = 0;
    std::size_t mEnd = 0;
};

/// The value of the first attribute, with or without a prefix, that @p isMeant finds by its name as written, within the
/// start tag @p tag; without the quotes. Both ends are 0 when there is none.
template <typename IsMeant>
TextRange AttributeValue(std::string_view tag, IsMeant isMeant) {
    constexpr std::string_view kBlanks = " \t\r\n";
    std::size_t at = tag.find_first_of(kBlanks);
    while (at != std::string_view::npos) {
        const std::size_t name = tag.find_first_not_of(kBlanks, at);
        const std::size_t open = name == std::string_view::npos ? name : tag.find_first_of("'\"", name);
        const std::size_t close = open == std::string_view::npos ? open : tag.find(tag[open], open + 1);
        if (close == std::string_view::npos) {
            break;
        }
        if (isMeant(tag.substr(name, tag.find_first_of(" \t\r\n=", name) - name))) {
            return {open + 1, close};
        }
        at = close + 1;
    }
    return {};
}

/// The value of the rdf:about in a start tag of rdf:Description. The attribute has the prefix of the element, another one
/// for the same namespace, or in old files none.
TextRange AboutValue(std::string_view tag);

/// Whether a packet in clean UTF-8 may be about anything: a look, much cheaper than reading it.
bool MayHaveAbout(std::string_view packet);

/// Puts @p about into a packet that the toolkit has written, which has it empty.
void PutAbout(UTF8String& packet, const UTF8String& about);

}  // namespace zephmetadata::toolkit
