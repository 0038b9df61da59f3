#pragma once

#include <map>
#include <set>
#include <vector>

#include "xmp/tree/place.h"
#include "xmp/tree/xmp_tree.h"

/// Trees in the pieces by which several sources are compared and edited: a simple property, an array or an alternative
/// is one piece with all below it; a structure is a piece by itself, and so is each of its fields.
namespace zephmetadata {

struct PropertyUnit {
    std::vector<toolkit::Node> mNodes;  ///< the property first, then what belongs to it in document order
    bool mMixed = false;
    std::set<UTF8String> mMixedItems;  ///< paths of the items that are mixed where the whole is not
    std::size_t mSources = 1;          ///< how many trees hold it

    bool IsStructure() const;
    bool IsLanguageAlternative() const;
    bool IsArray() const;
    const UTF8String& Path() const { return mNodes.front().mPath; }
};

/// In the order of their places, so that a structure stands before its fields.
using PropertyUnits = std::map<toolkit::Place, PropertyUnit>;

/// The units of a whole tree, with its marks.
PropertyUnits UnitsOf(XMPMetaHandle tree);
/// Those at and below one place.
PropertyUnits UnitsAt(XMPMetaHandle tree, const toolkit::Place& place);
/// The range of @p units at and below one place, as a copy.
PropertyUnits UnitsAt(const PropertyUnits& units, const toolkit::Place& place);

/// Whether two units say the same; of structures only that both are such, as their fields are units.
bool SameContent(const PropertyUnit& left, const PropertyUnit& right);

/// Makes the unit in a tree that holds nothing at its place.
void CopyUnit(XMPMetaHandle tree, const PropertyUnit& unit);

/// Merges trees: what all hold alike is plain, the rest is marked as mixed and stands there as the first tree has it.
class TreeMerge {
public:
    void Add(XMPMetaHandle source);
    XMPMetaPtr MergedTree();
    /// What the merged tree holds, marks included.
    const PropertyUnits& Units() const { return mUnits; }

private:
    PropertyUnits mUnits;
    std::size_t mSources = 0;
};

}  // namespace zephmetadata
