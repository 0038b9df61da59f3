#pragma once

#include "providers/merging/merged_edits.h"

namespace zephmetadata {

/// Does to one source what was done to one unit of a merged tree, keeping what the source has of its own: other
/// languages, other items of an array that is still mixed, qualifiers. Throws XMPError when the source refuses.
void ApplyUnitEdit(XMPMetaHandle source, const UnitEdit& edit);

// The steps that edits of all kinds share.

/// Removes the unit, and the structures that it leaves without fields.
void RemoveUnit(XMPMetaHandle source, const toolkit::Place& place);
/// Makes the unit anew, replacing what is at its place.
void ReplaceUnit(XMPMetaHandle source, const PropertyUnit& unit);
/// Sets and removes the qualifiers that were set and removed together with a value, of which each source has qualifiers
/// of its own.
void EditQualifiers(XMPMetaHandle source, const PropertyUnit& before, const PropertyUnit& after);

}  // namespace zephmetadata
