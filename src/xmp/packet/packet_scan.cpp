#include "xmp/packet/packet_scan.h"

#include <algorithm>
#include <optional>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_about.h"
#include "xmp/packet/packet_text.h"
#include "xmp/packet/utf8.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

struct Tag {
    std::string_view mName;  ///< without prefix; empty for a processing instruction
    bool mIsEnd = false;
    bool mIsEmptyElement = false;
};

/// The tags of well-formed XML without comments, CDATA sections and declarations, one after the other.
class TagReader {
public:
    explicit TagReader(std::string_view text) : mRest(text) {}

    std::optional<Tag> Next() {
        const std::size_t start = mRest.find('<');
        if (start == std::string_view::npos) {
            return std::nullopt;
        }
        mRest.remove_prefix(start + 1);
        if (mRest.starts_with('?')) {
            mRest.remove_prefix(std::min(mRest.find("?>"), mRest.size()));
            return Tag();
        }
        Tag tag;
        tag.mIsEnd = mRest.starts_with('/');
        mRest.remove_prefix(tag.mIsEnd ? 1 : 0);
        tag.mName = mRest.substr(0, NameLength());
        tag.mName.remove_prefix(tag.mName.find(':') + 1);  // npos + 1 is 0
        const std::size_t end = EndOfTag();
        tag.mIsEmptyElement = end > 0 && end < mRest.size() && mRest[end - 1] == '/';
        mRest.remove_prefix(std::min(end, mRest.size()));
        return tag;
    }

private:
    // Both loops run over most of a packet: a call for each character would make them slow.
    std::size_t NameLength() const {
        std::size_t at = 0;
        while (at < mRest.size() && static_cast<unsigned char>(mRest[at]) > ' ' && mRest[at] != '/' &&
               mRest[at] != '>') {
            ++at;
        }
        return at;
    }

    /// Where the ">" of the tag is; values in quotes may hold others.
    std::size_t EndOfTag() const {
        char quote = 0;
        for (std::size_t at = 0; at < mRest.size(); ++at) {
            const char c = mRest[at];
            if (quote != 0) {
                quote = c == quote ? '\0' : quote;
            } else if (c == '>') {
                return at;
            } else if (c == '"' || c == '\'') {
                quote = c;
            }
        }
        return std::string_view::npos;
    }

    std::string_view mRest;
};

/// Whether an alternative has two items, lies within another, or is nested too deep to be told, or nothing is around
/// rdf:RDF.
bool MayBeWidened(std::string_view packet) {
    TagReader tags(packet);
    std::size_t depth = 0;
    std::size_t alternative = 0;  // the depth of what is within the alternative that is open, 0 for none
    std::size_t items = 0;
    while (const std::optional<Tag> tag = tags.Next()) {
        if (tag->mName.empty()) {
            continue;
        }
        if (tag->mIsEnd) {
            if (depth == 0 || (depth == alternative && items == 2)) {
                return true;
            }
            alternative = depth == alternative ? 0 : alternative;
            --depth;
            continue;
        }
        items += alternative != 0 && depth == alternative ? 1U : 0U;
        if (depth == 0 && tag->mName == "RDF") {
            return true;
        }
        const bool isAlternative = tag->mName == "Alt";
        if (depth + 1 >= kMaxPacketDepth || (isAlternative && alternative != 0)) {
            return true;
        }
        if (!tag->mIsEmptyElement) {
            ++depth;
            if (isAlternative) {
                alternative = depth;
                items = 0;
            }
        }
    }
    return depth != 0;
}

/// Whether so much may be told that it takes a parser to tell whether it is within bounds.
bool MayHoldTooMuch(std::string_view packet) {
    constexpr std::size_t kSmall = 16'000;
    constexpr std::size_t kFewNodes = 10'000;
    static_assert(kSmall * (EstimatedNodeBytes(kSmall) + EstimatedTextBytes(0)) < kMaxPacketMemory);
    static_assert(kFewNodes * kFewNodes <= 2 * kMaxSiblingSteps);
    if (packet.size() <= kSmall) {
        return false;
    }
    const auto makesNode = [](char c) { return c == '<' || c == '=' || c == '&' || c == '\n'; };
    const auto nodes = static_cast<std::size_t>(std::count_if(packet.begin(), packet.end(), makesNode));
    return nodes > kFewNodes || nodes * EstimatedNodeBytes(packet.size()) > kMaxPacketMemory / 2;
}

}  // namespace

bool MayNeedWidening(std::string_view packet) {
    // Comments, CDATA sections and declarations begin with "<!", hexadecimal references with "&#x"; an XML declaration
    // or a byte order mark is taken off.
    return packet.empty() || packet.size() > kMaxPacketBytes || MayHoldTooMuch(packet) ||
           packet.find("<!") != std::string_view::npos || packet.find("&#") != std::string_view::npos ||
           packet.starts_with("<?xml") || packet.starts_with("\xEF\xBB\xBF") || !IsXMLText(packet) ||
           MayHaveAbout(packet) || MayBeWidened(packet);
}

bool MayNameUndetermined(std::string_view packet) {
    constexpr std::string_view kAttribute = "xml:lang";
    for (std::size_t at = packet.find(kAttribute); at != std::string_view::npos; at = packet.find(kAttribute, at)) {
        at += kAttribute.size();
        const std::size_t quote = std::min(packet.find_first_not_of(" \t\r\n=", at), packet.size());
        const std::string_view value = packet.substr(std::min(quote + 1, packet.size()));
        if (SameLanguage(value.substr(0, kUndeterminedLanguage.size()), kUndeterminedLanguage)) {
            return true;
        }
    }
    return false;
}

}  // namespace zephmetadata::toolkit
