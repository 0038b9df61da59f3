#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zephmetadata/paths.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

/// One value of a file as the commands show it: a simple value, an array of simple values, or a language alternative.
/// Structures and arrays of structures appear through what they hold.
struct ListedValue {
    enum class Shape { kSimple, kItems, kLanguages };

    std::string mExpression;  ///< "dc:title", "xmpMM:History[1]/stEvt:action"
    std::string mNamespace;
    std::string mLabel;
    std::string mType;  ///< the type id of its definition, else what the tree holds
    bool mInternal = false;
    bool mDefined = false;
    bool mIsNative = false;  ///< from native metadata (Exif, IPTC-IIM), not from the packet
    std::string mRaw;
    std::string mDisplay;
    Shape mShape = Shape::kSimple;
    std::vector<std::string> mItems;
    std::vector<std::pair<std::string, std::string>> mLanguages;  ///< language and text, in the order of the file
};

/// All values of a tree in the order of the file. Cost: linear in the tree.
std::vector<ListedValue> ListValues(zephmetadata::XMPMetaHandle tree);

/// The values of one tree in parts, without a look at the others.
class ValuesOfTree {
public:
    explicit ValuesOfTree(zephmetadata::XMPMetaHandle tree) : mTree(tree) {}

    /// Those below the node at @p expression in the order of the file. Cost: linear in the tree at the first call.
    std::vector<ListedValue> Below(const std::string& expression);

private:
    zephmetadata::XMPMetaHandle mTree;
    bool mIsRead = false;
    std::vector<zephmetadata::XMPNode> mNodes;
    std::map<std::string, std::size_t> mIndexes;  // of the nodes by their paths
};

/// The property that an expression leads to, or into.
std::string PropertyOf(const std::string& expression);
/// Whether what stands at an expression is a part of what stands at another.
bool IsBelow(std::string_view expression, std::string_view above);

/// Whether what @p entry describes is a structure, or an array of such, which has no text of its own.
bool IsStructured(const zephmetadata::EntryDefinition& entry);

/// What the commands show for one path: the display text where a definition describes it, else the stored text. False
/// when there is no value.
bool DisplayText(zephmetadata::XMPMetaHandle tree, const zephmetadata::Path& path, std::string& text);

/// The stored text at a path: the items of an array joined with "; ", the x-default text of a language alternative.
/// False when there is none, as for a structure.
bool RawText(zephmetadata::XMPMetaHandle tree, const zephmetadata::Path& path, std::string& text);

}  // namespace zephmeta
