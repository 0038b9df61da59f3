#include "providers/merging/array_items.h"

#include <algorithm>
#include <iterator>

#include "xmp/core/xmp_paths.h"

namespace zephmetadata {

using toolkit::Node;

namespace {

/// Whether a node below an array belongs to one of its items, and not to a qualifier of the array itself.
bool IsOfItem(const Node& node, std::size_t arrayLength) {
    return node.mPath[arrayLength] == '[';
}

}  // namespace

std::vector<ArrayItem> ItemsOf(const PropertyUnit& unit) {
    std::vector<ArrayItem> items;
    const std::size_t arrayLength = unit.Path().size();
    for (auto node = std::next(unit.mNodes.begin()); node != unit.mNodes.end(); ++node) {
        if (!IsOfItem(*node, arrayLength)) {
            continue;
        }
        const std::size_t itemLength = node->mPath.find(']', arrayLength) + 1;
        Node relative = *node;
        relative.mPath.erase(0, itemLength);
        if (relative.mPath.empty()) {
            items.emplace_back();
        }
        items.back().push_back(std::move(relative));
    }
    return items;
}

PropertyUnit WithItems(const PropertyUnit& unit, const std::vector<ArrayItem>& items) {
    PropertyUnit changed{{unit.mNodes.front()}, false, {}};
    std::copy_if(std::next(unit.mNodes.begin()), unit.mNodes.end(), std::back_inserter(changed.mNodes),
                 [length = unit.Path().size()](const Node& node) { return !IsOfItem(node, length); });
    for (std::size_t i = 0; i < items.size(); ++i) {
        const UTF8String path = toolkit::ItemPath(unit.Path(), i + 1);
        for (const Node& node : items[i]) {
            changed.mNodes.push_back({node.mSchema, path + node.mPath, node.mValue, node.mOptions});
        }
    }
    return changed;
}

bool IsSimple(const Node& node) {
    return (node.mOptions & toolkit::kPropCompositeMask) == 0;
}

UTF8String KeyOf(const Node& node) {
    // Neither paths nor values hold a NUL.
    UTF8String key = node.mPath;
    key.push_back('\0');
    key.append(node.mValue).push_back('\0');
    return key.append(std::to_string(toolkit::KindOf(node))).append(1, '\0');
}

UTF8String KeyOf(const ArrayItem& item) {
    UTF8String key;
    std::for_each(item.begin(), item.end(), [&](const Node& node) { key += KeyOf(node); });
    return key;
}

}  // namespace zephmetadata
