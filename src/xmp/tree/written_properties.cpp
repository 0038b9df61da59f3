#include "xmp/tree/written_properties.h"

#include <algorithm>
#include <tuple>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"

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

bool IsBefore(const Node& left, const Node& right) {
    return left.mPath < right.mPath;
}

/// @p nodes in document order.
WrittenProperty Written(std::vector<Node> nodes) {
    WrittenProperty property{std::move(nodes), false};
    const bool mayHoldAlternatives = std::any_of(property.mNodes.begin(), property.mNodes.end(), [](const Node& node) {
        return (node.mOptions & kPropArrayIsAlternate) != 0;
    });
    if (mayHoldAlternatives) {
        const std::vector<Alternative> alternatives = Alternatives(property.mNodes);
        // From the inside out, since a move changes the paths of what lies within.
        for (auto alternative = alternatives.rbegin(); alternative != alternatives.rend(); ++alternative) {
            property.mIsChanged = property.mIsChanged || IsChangedByWriting(*alternative);
            MoveDefaultFirst(property.mNodes, *alternative);
        }
    }
    if (!std::is_sorted(property.mNodes.begin(), property.mNodes.end(), &IsBefore)) {
        std::sort(property.mNodes.begin(), property.mNodes.end(), &IsBefore);
    }
    return property;
}

}  // namespace

bool operator==(const WrittenProperty& left, const WrittenProperty& right) {
    return std::equal(left.mNodes.begin(), left.mNodes.end(), right.mNodes.begin(), right.mNodes.end(), SameNode);
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
            properties.push_back(Written(std::exchange(nodes, {})));
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
    std::sort(properties.begin(), properties.end());
    return properties;
}

std::optional<WrittenProperty> WrittenPropertyAt(XMPMetaHandle tree, const Place& place) {
    std::optional<Property> root = GetProperty(tree, place.mSchema, place.mPath);
    if (!root) {
        return std::nullopt;
    }
    std::vector<Node> nodes = Nodes(tree, place.mSchema, place.mPath, Walk::kSubtree);
    nodes.insert(nodes.begin(), {place.mSchema, place.mPath, std::move(root->mValue), root->mOptions});
    return Written(std::move(nodes));
}

}  // namespace zephmetadata::toolkit
