#include "listing.h"

#include <algorithm>

#include "text.h"
#include "zephmetadata/languages.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using zephmetadata::NodeKind;
using zephmetadata::XMPNode;
using Nodes = std::vector<XMPNode>;

/// One past the last node below the one at @p index.
std::size_t EndOf(const Nodes& nodes, std::size_t index) {
    const std::string& path = nodes[index].mPath;
    std::size_t end = index + 1;
    while (end < nodes.size() && IsBelow(nodes[end].mPath, path)) {
        ++end;
    }
    return end;
}

/// The nodes of a tree with the end of what is below each, so that a subtree can be looked at and passed over.
class Walker {
public:
    explicit Walker(Nodes nodes) : mNodes(std::move(nodes)) {}

    const XMPNode& At(std::size_t index) const { return mNodes[index]; }
    std::size_t Size() const { return mNodes.size(); }

    std::size_t EndOf(std::size_t index) const { return zephmeta::EndOf(mNodes, index); }

    /// Whether all that the array at @p index holds are simple values.
    bool HoldsSimpleItems(std::size_t index) const {
        const std::size_t end = EndOf(index);
        for (std::size_t below = index + 1; below < end; ++below) {
            if (mNodes[below].mKind != NodeKind::kNodeKind_Simple) {
                return false;
            }
        }
        return true;
    }

private:
    Nodes mNodes;
};

const char* TreeType(NodeKind kind) {
    switch (kind) {
        case NodeKind::kNodeKind_Bag:
            return "bag";
        case NodeKind::kNodeKind_Seq:
            return "seq";
        case NodeKind::kNodeKind_Alt:
            return "alt";
        case NodeKind::kNodeKind_AltText:
            return "langalt";
        default:
            return "text";
    }
}

void CollectItems(const Walker& tree, std::size_t index, ListedValue& value) {
    value.mShape = ListedValue::Shape::kItems;
    const std::size_t end = tree.EndOf(index);
    for (std::size_t below = index + 1; below < end; ++below) {
        if (!tree.At(below).mIsQualifier) {
            value.mRaw += (value.mItems.empty() ? "" : "; ") + tree.At(below).mValue;
            value.mItems.push_back(tree.At(below).mValue);
        }
    }
}

void CollectLanguages(const Walker& tree, std::size_t index, ListedValue& value) {
    value.mShape = ListedValue::Shape::kLanguages;
    std::string text;
    const std::size_t end = tree.EndOf(index);
    for (std::size_t below = index + 1; below < end; ++below) {
        if (!tree.At(below).mIsQualifier) {
            text = tree.At(below).mValue;
        } else if (tree.At(below).mPath.ends_with("/?xml:lang")) {
            value.mLanguages.emplace_back(tree.At(below).mValue, text);
        }
    }
    for (const auto& [language, languageText] : value.mLanguages) {
        if (language == "x-default") {
            value.mRaw = languageText;
        }
    }
    if (value.mRaw.empty() && !value.mLanguages.empty()) {
        value.mRaw = value.mLanguages.front().second;
    }
}

void Describe(zephmetadata::XMPMetaHandle tree, const XMPNode& node, ListedValue& value) {
    const zephmetadata::Path path = zephmetadata::PathForExpression(node.mPath);
    const auto entry = zephmetadata::PathEntryDefinition(path);
    value.mExpression = node.mPath;
    value.mNamespace = node.mNamespace;
    value.mInternal = path.mInternal;
    value.mDefined = entry != nullptr;
    value.mIsNative = node.mIsNative;
    value.mLabel = entry ? Shown(LabelOf(*entry)) : std::string();
    value.mType = entry ? entry->mType.value_or(std::string()) : TreeType(node.mKind);
    if (!entry || !zephmetadata::GetValue(tree, path, value.mDisplay) || value.mDisplay.empty()) {
        // The definition may expect another kind of node than stands there; then the stored text says more.
        value.mDisplay = value.mRaw;
    }
}

/// Whether the node is shown as one value, with all that is below it.
bool IsOneValue(const Walker& tree, std::size_t index) {
    const NodeKind kind = tree.At(index).mKind;
    return kind == NodeKind::kNodeKind_Simple || (kind != NodeKind::kNodeKind_Struct && tree.HoldsSimpleItems(index));
}

/// The value at a node that is shown as one, without what its definition says of it.
ListedValue Collected(const Walker& nodes, std::size_t index) {
    ListedValue value;
    const NodeKind kind = nodes.At(index).mKind;
    if (kind == NodeKind::kNodeKind_AltText) {
        CollectLanguages(nodes, index, value);
    } else if (kind == NodeKind::kNodeKind_Simple) {
        value.mRaw = nodes.At(index).mValue;
    } else {
        CollectItems(nodes, index, value);
    }
    return value;
}

std::vector<ListedValue> Listed(zephmetadata::XMPMetaHandle tree, const Walker& nodes) {
    std::vector<ListedValue> values;
    std::size_t index = 0;
    while (index < nodes.Size()) {
        const XMPNode& node = nodes.At(index);
        if (node.mIsQualifier || !IsOneValue(nodes, index)) {
            ++index;
            continue;
        }
        ListedValue value = Collected(nodes, index);
        Describe(tree, node, value);
        values.push_back(std::move(value));
        index = nodes.EndOf(index);
    }
    return values;
}

}  // namespace

std::string PropertyOf(const std::string& expression) {
    return expression.substr(0, expression.find_first_of("[/"));
}

bool IsBelow(std::string_view expression, std::string_view above) {
    return expression.size() > above.size() && expression.starts_with(above) &&
           (expression[above.size()] == '[' || expression[above.size()] == '/');
}

bool IsStructured(const zephmetadata::EntryDefinition& entry) {
    const auto kind = zephmetadata::PrimitiveTypeOf(entry);
    if (!kind) {
        return entry.mType.has_value();
    }
    const auto elementType =
        zephmetadata::PrimitiveTypeIsArray(*kind) ? zephmetadata::ElementTypeIdOf(entry) : std::nullopt;
    return elementType && zephmetadata::IsStructType(*elementType);
}

bool DisplayText(zephmetadata::XMPMetaHandle tree, const zephmetadata::Path& path, std::string& text) {
    const auto entry = zephmetadata::PathEntryDefinition(path);
    if (entry && !IsStructured(*entry) && zephmetadata::GetValue(tree, path, text) && !text.empty()) {
        return true;
    }
    // The definition may expect another kind of node than stands there; then the stored text says more.
    return RawText(tree, path, text);
}

std::vector<ListedValue> ListValues(zephmetadata::XMPMetaHandle tree) {
    return Listed(tree, Walker(zephmetadata::XMPNodes(tree)));
}

std::vector<ListedValue> ValuesOfTree::Below(const std::string& expression) {
    if (!mIsRead) {
        mNodes = zephmetadata::XMPNodes(mTree);
        for (std::size_t index = 0; index < mNodes.size(); ++index) {
            mIndexes.emplace(mNodes[index].mPath, index);
        }
        mIsRead = true;
    }
    const auto found = mIndexes.find(expression);
    if (found == mIndexes.end()) {
        return {};
    }
    const auto at = [&](std::size_t index) { return mNodes.begin() + static_cast<std::ptrdiff_t>(index); };
    return Listed(mTree, Walker(Nodes(at(found->second) + 1, at(EndOf(mNodes, found->second)))));
}

bool RawText(zephmetadata::XMPMetaHandle tree, const zephmetadata::Path& path, std::string& text) {
    if (!zephmetadata::GetRawStringValue(tree, path, text)) {
        return false;
    }
    if (!text.empty()) {
        return true;
    }
    // A container has no text of its own.
    const Walker nodes(zephmetadata::XMPNodes(tree));
    const std::string expression = zephmetadata::ExpressionForPath(path);
    std::size_t index = 0;
    while (index < nodes.Size() && nodes.At(index).mPath != expression) {
        ++index;
    }
    if (index == nodes.Size() || !IsOneValue(nodes, index)) {
        return false;
    }
    text = Collected(nodes, index).mRaw;
    return true;
}

}  // namespace zephmeta
