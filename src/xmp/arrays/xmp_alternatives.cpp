#include "xmp/arrays/xmp_alternatives.h"

#include <algorithm>
#include <utility>

#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_scan.h"
#include "xmp/packet/packet_text.h"
#include "xmp/packet/utf8.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

// The number of the item when @p path is exactly an item of @p arrayPath.
bool IsItemOf(std::string_view path, std::string_view arrayPath) {
    if (path.size() < arrayPath.size() + 3 || !path.starts_with(arrayPath) || path[arrayPath.size()] != '[') {
        return false;
    }
    return path.find(']', arrayPath.size()) == path.size() - 1;
}

// The pair that the toolkit would make one text of.
bool IsEndangeredPair(const Alternative& alternative) {
    return alternative.mItems.size() == 2 && alternative.HasLanguage(kDefaultLanguage) &&
           alternative.mItems[0].mValue != alternative.mItems[1].mValue;
}

// The index, from 0, of the item that WidenTree added; the number of items when there is none.
std::size_t AddedItem(const Alternative& alternative) {
    const std::vector<AlternativeItem>& items = alternative.mItems;
    const auto isDefault = [](const AlternativeItem& item) { return SameLanguage(item.mLanguage, kDefaultLanguage); };
    const auto first = std::find_if(items.begin(), items.end(), isDefault);
    if (items.size() != 3 || first == items.end()) {
        return items.size();
    }
    const auto isAdded = [&](const AlternativeItem& item) {
        return SameLanguage(item.mLanguage, kUndeterminedLanguage) && item.mValue == first->mValue;
    };
    const auto added = std::find_if(items.rbegin(), items.rend(), isAdded);
    const auto isOther = [&](const AlternativeItem& item) { return item.mValue != first->mValue; };
    if (added == items.rend() || std::none_of(items.begin(), items.end(), isOther)) {
        return items.size();
    }
    return static_cast<std::size_t>(items.rend() - added) - 1;
}

}  // namespace

bool Alternative::HasLanguage(std::string_view language) const {
    return std::any_of(mItems.begin(), mItems.end(),
                       [&](const AlternativeItem& item) { return SameLanguage(item.mLanguage, language); });
}

std::vector<Alternative> Alternatives(const std::vector<Node>& nodes) {
    std::vector<Alternative> found;
    std::vector<std::size_t> open;  // those that the current node lies in, outermost first
    for (const Node& node : nodes) {
        while (!open.empty() && (node.mPath.empty() || !IsAtOrBelow(node.mPath, found[open.back()].mPath) ||
                                 node.mSchema != found[open.back()].mSchema)) {
            open.pop_back();
        }
        if (!open.empty()) {
            Alternative& alternative = found[open.back()];
            std::vector<AlternativeItem>& items = alternative.mItems;
            if (IsItemOf(node.mPath, alternative.mPath)) {
                items.push_back({node.mValue, {}, node.mOptions});
            } else if (node.mPath == LanguagePath(ItemPath(alternative.mPath, items.size()))) {
                items.back().mLanguage = node.mValue;
            }
        }
        if ((node.mOptions & kPropArrayIsAlternate) != 0) {
            open.push_back(found.size());
            found.push_back({node.mSchema, node.mPath, {}});
        }
    }
    return found;
}

std::vector<Alternative> Alternatives(XMPMetaHandle tree) {
    return Alternatives(Nodes(tree, {}, {}, Walk::kSubtree));
}

bool IsChangedByWriting(const Alternative& alternative) {
    const bool isMoved = alternative.HasLanguage(kDefaultLanguage) &&
                         !SameLanguage(alternative.mItems.front().mLanguage, kDefaultLanguage);
    return isMoved || IsEndangeredPair(alternative);
}

bool IsChangedByWriting(XMPMetaHandle tree) {
    const std::vector<Alternative> alternatives = Alternatives(tree);
    return std::any_of(alternatives.begin(), alternatives.end(),
                       [](const Alternative& alternative) { return IsChangedByWriting(alternative); });
}

void WidenTree(XMPMetaHandle tree) {
    for (const Alternative& alternative : Alternatives(tree)) {
        const bool isText = std::none_of(alternative.mItems.begin(), alternative.mItems.end(),
                                         [](const auto& item) { return (item.mOptions & kPropCompositeMask) != 0; });
        if (!isText || !IsEndangeredPair(alternative)) {
            continue;
        }
        const bool firstIsDefault = SameLanguage(alternative.mItems[0].mLanguage, kDefaultLanguage);
        const UTF8String& text = alternative.mItems[firstIsDefault ? 0 : 1].mValue;
        const QuietToolkit quiet;
        const UTF8String language = LanguagePath(ItemPath(alternative.mPath, 3));
        const UTF8String value(kUndeterminedLanguage);
        const char* const schema = alternative.mSchema.c_str();
        const XmpPtr native = NativeToChange(tree, alternative.mSchema, alternative.mPath);
        if (!xmp_append_array_item(native, schema, alternative.mPath.c_str(), 0, text.c_str(), 0) ||
            !xmp_set_property(native, schema, language.c_str(), value.c_str(), 0)) {
            ThrowToolkitError("\"" + alternative.mPath + "\"");
        }
    }
}

namespace {

void DropTwins(XMPMetaHandle tree) {
    for (const Alternative& alternative : Alternatives(tree)) {
        for (std::size_t i = alternative.mItems.size(); i > 0; --i) {
            if (SameLanguage(alternative.mItems[i - 1].mLanguage, kTwinLanguage)) {
                const QuietToolkit quiet;
                xmp_delete_property(NativeToChange(tree, alternative.mSchema, alternative.mPath),
                                    alternative.mSchema.c_str(), ItemPath(alternative.mPath, i).c_str());
            }
        }
    }
}

void NarrowTree(XMPMetaHandle tree) {
    for (const Alternative& alternative : Alternatives(tree)) {
        const std::size_t added = AddedItem(alternative);
        if (added < alternative.mItems.size()) {
            const QuietToolkit quiet;
            const UTF8String path = ItemPath(alternative.mPath, added + 1);
            xmp_delete_property(NativeToChange(tree, alternative.mSchema, alternative.mPath),
                                alternative.mSchema.c_str(), path.c_str());
        }
    }
}

}  // namespace

void MendAlternatives(XMPMetaHandle tree, std::string_view packet) {
    if (packet.find(kTwinLanguage) != std::string_view::npos) {
        DropTwins(tree);
    }
    // Character references may spell any language.
    if (MayNameUndetermined(packet) || packet.find("&#") != std::string_view::npos) {
        NarrowTree(tree);
    }
}

}  // namespace zephmetadata::toolkit
