#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "zephmetadata/paths.h"
#include "zephmetadata/xmp_meta.h"

namespace zephpython {

/// A value as it is stored, in the shape in which it is stored.
struct RawValue {
    enum class Shape { kNone, kText, kList, kFields, kLanguages, kMixed };

    Shape mShape = Shape::kNone;
    std::string mText;
    std::vector<RawValue> mParts;     ///< of lists, structures and alternatives
    std::vector<std::string> mNames;  ///< of fields, or languages, one for each part; of lists of no meaning
};

/// The values of one tree. Walks the tree once, when it is first asked.
class RawValues {
public:
    explicit RawValues(zephmetadata::XMPMetaPtr tree);

    RawValue At(const zephmetadata::Path& path) const;
    /// The expressions of the properties, in the order of the tree.
    std::vector<std::string> Properties() const;

private:
    RawValue Subtree(std::size_t& position) const;

    zephmetadata::XMPMetaPtr mTree;
    std::vector<zephmetadata::XMPNode> mNodes;
    std::unordered_map<std::string, std::size_t> mPositions;  // in mNodes, by expression
};

}  // namespace zephpython
