#include <algorithm>

#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_shapes.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

constexpr char kQuote = '"';
constexpr char kSemicolon = ';';

UTF8String Quoted(const UTF8String& item) {
    UTF8String quoted(1, kQuote);
    for (const char c : item) {
        quoted.append(c == kQuote ? 2 : 1, c);
    }
    quoted.push_back(kQuote);
    return quoted;
}

bool NeedsQuotes(std::string_view item) {
    return item.empty() || item.front() == kQuote || item.front() == ' ' || item.back() == ' ' ||
           item.find(kSemicolon) != std::string_view::npos;
}

std::string_view TrimmedSpaces(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(' ');
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Reads the quoted item at the start of @p text. False when there is none that ends before a semicolon or the end: such
// text is taken as written. @p size is then the size of what was read, up to the semicolon.
bool ReadQuoted(std::string_view text, UTF8String& item, std::size_t& size) {
    if (!text.starts_with(kQuote)) {
        return false;
    }
    UTF8String content;
    std::size_t at = 1;
    for (;; ++at) {
        const std::size_t quote = text.find(kQuote, at);
        if (quote == std::string_view::npos) {
            return false;
        }
        content.append(text.substr(at, quote - at));
        at = quote + 1;
        if (at >= text.size() || text[at] != kQuote) {
            break;
        }
        content.push_back(kQuote);
    }
    const std::size_t end = std::min(text.find_first_not_of(' ', at), text.size());
    if (end < text.size() && text[end] != kSemicolon) {
        return false;
    }
    item = std::move(content);
    size = end;
    return true;
}

// The simple items of an array.
std::vector<UTF8String> Items(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    std::vector<UTF8String> items;
    for (Node& node : Nodes(tree, schema, path, Walk::kJustChildren)) {
        if ((node.mOptions & kPropIsQualifier) != 0) {
            continue;
        }
        if ((node.mOptions & kPropCompositeMask) != 0) {
            ThrowError(XMPErr_BadParam, "\"" + path + "\" has composite items");
        }
        items.push_back(std::move(node.mValue));
    }
    return items;
}

// A bag where a seq is due, or the other way round, is left: its items keep their qualifiers.
bool IsArrayOfTexts(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t form) {
    const std::vector<Node> nodes = Nodes(tree, schema, path, Walk::kJustChildren);
    return HasShape(GetProperty(tree, schema, path)->mOptions | kPropArrayIsOrdered, form | kPropArrayIsOrdered) &&
           std::all_of(nodes.begin(), nodes.end(), [](const Node& node) {
               return (node.mOptions & kPropIsQualifier) != 0 || (node.mOptions & kPropCompositeMask) == 0;
           });
}

// Replaces what differs between the common beginning and the common end, so that the items around keep their
// qualifiers.
void ReplaceItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                  const std::vector<UTF8String>& before, const std::vector<UTF8String>& after) {
    const auto [beforeMiddle, afterMiddle] = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    auto beforeEnd = before.end();
    auto afterEnd = after.end();
    while (beforeEnd != beforeMiddle && afterEnd != afterMiddle && *(beforeEnd - 1) == *(afterEnd - 1)) {
        --beforeEnd;
        --afterEnd;
    }
    const auto first = static_cast<int>(beforeMiddle - before.begin()) + 1;
    for (auto last = static_cast<int>(beforeEnd - before.begin()); last >= first; --last) {
        DeleteArrayItem(tree, schema, path, last);
    }
    int position = first;
    for (auto item = afterMiddle; item != afterEnd; ++item) {
        SetArrayItem(tree, schema, path, position++, *item, kInsertBeforeItem);
    }
}

}  // namespace

std::optional<UTF8String> CatenateArrayItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                                             std::string_view separator) {
    const std::optional<Property> array = GetProperty(tree, schema, path);
    if (!array) {
        return std::nullopt;
    }
    if ((array->mOptions & kPropValueIsArray) == 0) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is no array");
    }
    return JoinItems(Items(tree, schema, path), separator);
}

UTF8String JoinItems(const std::vector<UTF8String>& items, std::string_view separator) {
    UTF8String joined;
    bool isFirst = true;
    for (const UTF8String& item : items) {
        joined.append(isFirst ? std::string_view() : separator);
        joined.append(NeedsQuotes(item) ? Quoted(item) : item);
        isFirst = false;
    }
    return joined;
}

std::vector<UTF8String> SplitItems(std::string_view text) {
    std::vector<UTF8String> items;
    while (!text.empty()) {
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        UTF8String item;
        std::size_t size = 0;
        if (ReadQuoted(text, item, size)) {
            items.push_back(std::move(item));
        } else {
            size = std::min(text.find(kSemicolon), text.size());
            const std::string_view written = TrimmedSpaces(text.substr(0, size));
            if (!written.empty()) {
                items.emplace_back(written);
            }
        }
        text.remove_prefix(std::min(size + 1, text.size()));
    }
    return items;
}

void SeparateArrayItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                        std::uint32_t arrayOptions, std::string_view text) {
    CheckWritable(schema, path);
    const std::vector<UTF8String> after = SplitItems(CheckedValue(text));
    if (after.empty()) {
        DeleteProperty(tree, schema, path);
        return;
    }
    const std::uint32_t form = arrayOptions | kPropValueIsArray;
    if (!PropertyExists(tree, schema, path)) {
        SetProperty(tree, schema, path, {}, form);
    } else if (!IsArrayOfTexts(tree, schema, path, form)) {
        Reshape(tree, schema, NormalPath(tree, schema, path), form);
    }
    ReplaceItems(tree, schema, path, Items(tree, schema, path), after);
    ClearMixed(tree, schema, path);
}

}  // namespace zephmetadata::toolkit
