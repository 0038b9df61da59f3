#include "xmp/tree/written_properties.h"

#include <algorithm>
#include <tuple>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"

namespace zephmetadata::toolkit {
namespace {

// The item that an item becomes when x-default moves to the front.
std::size_t MovedItem(std::size_t item, std::size_t defaultItem) {
    if (item > defaultItem) {
        return item;
    }
    return item == defaultItem ? 1 : item + 1;
}

// The toolkit moves x-default to the front of an alternative when it writes: so does the comparison.
void MoveDefaultFirst(std::vector<Node>& nodes, const Alternative& alternative) {
    const auto isDefault = [](const auto& item) { return SameLanguage(item.mLanguage, kDefaultLanguage); };
    const auto found = std::find_if(alternative.mItems.begin(), alternative.mItems.end(), isDefault);
    if (found == alternative.mItems.begin() || found == alternative.mItems.end()) {
        return;
    }
    const auto defaultItem = static_cast<std::size_t>(found - alternative.mItems.begin()) + 1;
    const std::size_t number = alternative.mPath.size() + 1;
    for (Node& below : nodes) {
        if (below.mPath.size() > number && below.mPath[number - 1] == '[' &&
            IsAtOrBelow(below.mPath, alternative.mPath)) {
            const std::size_t end = below.mPath.find(']', number);
            const std::size_t item = std::stoul(below.mPath.substr(number, end - number));
            below.mPath.replace(number, end - number, std::to_string(MovedItem(item, defaultItem)));
        }
    }
}

bool HoldsAlternatives(const std::vector<Node>& nodes) {
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const Node& node) { return (node.mOptions & kPropArrayIsAlternate) != 0; });
}

/// The nodes as a written packet has them, in the order of their paths.
std::vector<Node> Comparable(std::vector<Node> nodes) {
    if (HoldsAlternatives(nodes)) {
        std::vector<Alternative> alternatives = Alternatives(nodes);
        // From the inside out, since a move changes the paths of what lies within.
        std::reverse(alternatives.begin(), alternatives.end());
        for (const Alternative& alternative : alternatives) {
            MoveDefaultFirst(nodes, alternative);
        }
    }
    std::sort(nodes.begin(), nodes.end(), [](const Node& left, const Node& right) { return left.mPath < right.mPath; });
    return nodes;
}

bool HoldSame(const std::vector<Node>& left, const std::vector<Node>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), SameNode);
}

WrittenProperty Written(std::vector<Node> nodes, std::size_t position) {
    bool isChanged = false;
    if (HoldsAlternatives(nodes)) {
        const std::vector<Alternative> alternatives = Alternatives(nodes);
        isChanged = std::any_of(alternatives.begin(), alternatives.end(),
                                [](const Alternative& alternative) { return IsChangedByWriting(alternative); });
    }
    return {std::move(nodes), isChanged, position};
}

}  // namespace

bool operator==(const WrittenProperty& left, const WrittenProperty& right) {
    return left.mNodes.size() == right.mNodes.size() &&
           (HoldSame(left.mNodes, right.mNodes) || HoldSame(Comparable(left.mNodes), Comparable(right.mNodes)));
}

bool operator<(const WrittenProperty& left, const WrittenProperty& right) {
    return std::tie(left.Schema(), left.Path()) < std::tie(right.Schema(), right.Path());
}

bool operator<(const WrittenProperty& left, const Place& right) {
    return std::tie(left.Schema(), left.Path()) < std::tie(right.mSchema, right.mPath);
}

bool operator<(const Place& left, const WrittenProperty& right) {
    return std::tie(left.mSchema, left.mPath) < std::tie(right.Schema(), right.Path());
}

std::vector<WrittenProperty> WrittenProperties(XMPMetaHandle tree) {
    std::vector<WrittenProperty> properties;
    std::vector<Node> nodes;
    const auto finish = [&] {
        if (!nodes.empty()) {
            properties.push_back(Written(std::exchange(nodes, {}), properties.size()));
        }
    };
    for (Node& node : Nodes(tree, {}, {}, Walk::kSubtree)) {
        const bool isSchema = (node.mOptions & kSchemaNode) != 0;
        if (isSchema || node.mPath.find_first_of("/[") == UTF8String::npos) {
            finish();
        }
        if (!isSchema) {
            nodes.push_back(std::move(node));
        }
    }
    finish();
    return properties;
}

std::optional<WrittenProperty> WrittenPropertyAt(XMPMetaHandle tree, const Place& place) {
    std::optional<Property> root = GetProperty(tree, place.mSchema, place.mPath);
    if (!root) {
        return std::nullopt;
    }
    std::vector<Node> nodes = Nodes(tree, place.mSchema, place.mPath, Walk::kSubtree);
    nodes.insert(nodes.begin(), {place.mSchema, place.mPath, std::move(root->mValue), root->mOptions});
    return Written(std::move(nodes), 0);
}

void AddProperty(XMPMetaHandle tree, const WrittenProperty& property) {
    for (const Node& node : property.mNodes) {
        CopyNode(tree, node, node.mPath);
    }
}

}  // namespace zephmetadata::toolkit
