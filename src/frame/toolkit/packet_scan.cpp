#include "frame/toolkit/packet_scan.h"

#include <algorithm>
#include <optional>

#include "frame/toolkit/packet_text.h"
#include "frame/toolkit/utf8.h"
#include "frame/toolkit/xmp_tree.h"

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
        tag.mName = mRest.substr(0, mRest.find_first_of(" \t\r\n/>"));
        tag.mName.remove_prefix(tag.mName.find(':') + 1);  // npos + 1 is 0
        const std::size_t end = EndOfTag();
        tag.mIsEmptyElement = end > 0 && end < mRest.size() && mRest[end - 1] == '/';
        mRest.remove_prefix(std::min(end, mRest.size()));
        return tag;
    }

private:
    /// Where the ">" of the tag is; values in quotes may hold others.
    std::size_t EndOfTag() const {
        std::size_t at = mRest.find_first_of("\"'>");
        while (at != std::string_view::npos && mRest[at] != '>') {
            const std::size_t close = mRest.find(mRest[at], at + 1);
            at = close == std::string_view::npos ? close : mRest.find_first_of("\"'>", close + 1);
        }
        return at;
    }

    std::string_view mRest;
};

/// Whether an alternative has two items, lies within another, or is nested too deep to be told.
bool MayHoldPair(std::string_view packet) {
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

}  // namespace

bool MayNeedWidening(std::string_view packet) {
    // Comments, CDATA sections and declarations begin with "<!", hexadecimal references with "&#x"; an XML declaration
    // or a byte order mark is taken off.
    return packet.empty() || packet.size() > kMaxPacketBytes || packet.find("<!") != std::string_view::npos ||
           packet.find("&#") != std::string_view::npos || packet.starts_with("<?xml") ||
           packet.starts_with("\xEF\xBB\xBF") || !IsXMLText(packet) || MayHoldPair(packet);
}

}  // namespace zephmetadata::toolkit
