#pragma once

#include <optional>
#include <vector>

#include "providers/property_units.h"
#include "zephmetadata/paths.h"

/// What was done to a merged tree, in a form that can be done to each of its sources.
namespace zephmetadata {

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
