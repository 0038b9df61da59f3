#include "raw_values.h"

#include <algorithm>

#include "zephmetadata/values.h"

namespace zephpython {

using namespace zephmetadata;
using Shape = RawValue::Shape;

namespace {

Shape ShapeOf(NodeKind kind) {
    switch (kind) {
        case NodeKind::kNodeKind_Simple:
            return Shape::kText;
        case NodeKind::kNodeKind_Struct:
            return Shape::kFields;
        case NodeKind::kNodeKind_AltText:
            return Shape::kLanguages;
        default:
            return Shape::kList;
    }
}

bool IsBelow(const std::string& expression, const std::string& parent) {
    return expression.size() > parent.size() && expression.starts_with(parent) &&
           (expression[parent.size()] == '/' || expression[parent.size()] == '[');
}

bool IsLanguageOf(const XMPNode& node, const std::string& item) {
    return node.mIsQualifier && node.mPath.size() > item.size() && node.mPath.starts_with(item) &&
           node.mPath.compare(item.size(), std::string::npos, "/?xml:lang") == 0;
}

}  // namespace

RawValues::RawValues(XMPMetaPtr tree) : mTree(std::move(tree)), mNodes(XMPNodes(mTree.get())) {
    mPositions.reserve(mNodes.size());
    for (std::size_t i = 0; i < mNodes.size(); ++i) {
        mPositions.try_emplace(mNodes[i].mPath, i);
    }
}

std::vector<std::string> RawValues::Properties() const {
    std::vector<std::string> properties;
    for (const XMPNode& node : mNodes) {
        if (node.mPath.find_first_of("/[") == std::string::npos) {
            properties.push_back(node.mPath);
        }
    }
    return properties;
}

RawValue RawValues::At(const Path& path) const {
    if (IsMixed(mTree.get(), path)) {
        return {Shape::kMixed, {}, {}, {}};
    }
    const auto found = mPositions.find(ExpressionForPath(path));
    if (found != mPositions.end()) {
        std::size_t position = found->second;
        return Subtree(position);
    }
    // Expressions that select, as of an item by its language or of the last one, are none of a node.
    RawValue value;
    value.mShape = GetRawStringValue(mTree.get(), path, value.mText) ? Shape::kText : Shape::kNone;
    return value;
}

/// The value of the node at @p position, which goes on to the first node that is not below it. Packets are nested 200 deep
/// at most.
RawValue RawValues::Subtree(std::size_t& position) const {
    const XMPNode& node = mNodes[position++];
    RawValue value{ShapeOf(node.mKind), node.mValue, {}, {}};
    while (position < mNodes.size() && IsBelow(mNodes[position].mPath, node.mPath)) {
        const XMPNode& part = mNodes[position];
        std::string name = part.mPath.substr(node.mPath.size() + 1);
        if (value.mShape == Shape::kLanguages) {
            const bool hasLanguage = position + 1 < mNodes.size() && IsLanguageOf(mNodes[position + 1], part.mPath);
            name = hasLanguage ? mNodes[position + 1].mValue : "x-default";
        }
        RawValue content = Subtree(position);
        if (!part.mIsQualifier) {
            value.mParts.push_back(std::move(content));
            value.mNames.push_back(std::move(name));
        }
    }
    return value;
}

}  // namespace zephpython
