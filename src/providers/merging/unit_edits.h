#pragma once

#include "providers/merging/array_items.h"
#include "providers/merging/merged_edits.h"

namespace zephmetadata {

inline constexpr int kOtherShape = -102;  ///< what the toolkit answers for a path that does not fit a tree

/// Does to one source what was done to one unit of a merged tree, keeping what the source has of its own: other
/// languages, other items of an array, qualifiers. A text that was emptied is removed. Throws XMPError when the source
/// refuses.
void ApplyUnitEdit(XMPMetaHandle source, const UnitEdit& edit);

// The steps that edits of all kinds share.

/// Removes the unit, and the structures that it leaves without fields.
void RemoveUnit(XMPMetaHandle source, const toolkit::Place& place);
/// Makes the unit anew, replacing what is at its place.
void ReplaceUnit(XMPMetaHandle source, const PropertyUnit& unit);
/// Gives an array of the source, which was read as @p own, these items. The last one takes the array with it, unless
/// the array is mixed and others may hold more.
void PutItems(XMPMetaHandle source, const PropertyUnit& own, const std::vector<ArrayItem>& items);
/// Sets and removes the qualifiers that were set and removed together with a value, of which each source has qualifiers
/// of its own.
void EditQualifiers(XMPMetaHandle source, const PropertyUnit& before, const PropertyUnit& after);

}  // namespace zephmetadata
