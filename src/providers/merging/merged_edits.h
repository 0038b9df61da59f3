#pragma once

#include <optional>
#include <set>
#include <vector>

#include "providers/merging/property_units.h"
#include "zephmetadata/paths.h"

/// What was done to a merged tree, in a form that can be done to each of its sources.
namespace zephmetadata {

/// The whole that a changed path is part of: an array or alternative for one of its items, the outermost structure that
/// went with its last field, and what stands there instead of a structure. Can be read from @p tree. Throws XMPError
/// for what can be no path.
toolkit::Place ChangedRegion(XMPMetaHandle tree, const Path& path);
/// Those of all @p changes, without the ones that lie within others.
std::set<toolkit::Place> ChangedRegions(XMPMetaHandle tree, const std::vector<Path>& changes);

struct UnitEdit {
    toolkit::Place mPlace;
    std::optional<PropertyUnit> mBefore;  ///< as the merged tree was built, or as it was written last
    std::optional<PropertyUnit> mAfter;   ///< absent when it was removed
};

class MergedEdits {
public:
    /// Finds what differs at and below @p changes between @p merged and what it was when it was built.
    MergedEdits(XMPMetaHandle merged, const PropertyUnits& before, const std::vector<Path>& changes);

    /// Does the same to a source; what the source cannot take is left out.
    void ApplyTo(XMPMetaHandle source) const;
    /// Makes the edited state the one that later edits are compared with.
    void Settle(PropertyUnits& before) const;

private:
    std::vector<UnitEdit> mEdits;
};

}  // namespace zephmetadata
