#pragma once

#include <string_view>
#include <vector>

#include "xmp/tree/xmp_tree.h"

/// Language alternatives as a whole tree holds them.
namespace zephmetadata::toolkit {

inline constexpr std::string_view kDefaultLanguage = "x-default";
inline constexpr std::string_view kUndeterminedLanguage = "und";

struct AlternativeItem {
    UTF8String mValue;
    UTF8String mLanguage;  ///< empty when the item has none
    std::uint32_t mOptions = 0;
};

struct Alternative {
    UTF8String mSchema;
    UTF8String mPath;
    std::vector<AlternativeItem> mItems;

    bool HasLanguage(std::string_view language) const;
};

/// The alternatives among @p nodes, wherever they are nested; @p nodes in document order, as Nodes returns them.
std::vector<Alternative> Alternatives(const std::vector<Node>& nodes);
/// The same for a whole tree.
std::vector<Alternative> Alternatives(XMPMetaHandle tree);

/// Whether the toolkit would change one that it writes: a pair of which it keeps one text, or an x-default that is not the
/// first item.
bool IsChangedByWriting(const Alternative& alternative);
/// Whether a tree holds such a one.
bool IsChangedByWriting(XMPMetaHandle tree);

}  // namespace zephmetadata::toolkit
