#pragma once

#include <string_view>
#include <vector>

#include "providers/merging/property_units.h"

/// Arrays and alternatives as lists of items that can be told apart, found and put together again at no more cost than
/// there are items.
namespace zephmetadata {

/// The nodes of one item, their paths relative to it: the first has an empty one.
using ArrayItem = std::vector<toolkit::Node>;

std::vector<ArrayItem> ItemsOf(const PropertyUnit& unit);
/// The unit with @p items in place of its own; its qualifiers stay. Marks are not among what is taken over.
PropertyUnit WithItems(const PropertyUnit& unit, const std::vector<ArrayItem>& items);

bool IsSimple(const toolkit::Node& node);
/// The same text for nodes, and for items, that are the same.
UTF8String KeyOf(const toolkit::Node& node);
UTF8String KeyOf(const ArrayItem& item);

}  // namespace zephmetadata
