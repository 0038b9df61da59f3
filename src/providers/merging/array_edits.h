#pragma once

#include "providers/merging/merged_edits.h"

/// Edits of arrays, for ApplyUnitEdit.
namespace zephmetadata {

/// Edits the items of a source's own array as those of the merged tree were edited. What else the source has there
/// stays: of an array that is mixed the items of its own, of one that was common those that came since.
void EditItems(XMPMetaHandle source, const UnitEdit& edit);
/// Sets an array that was mixed. Items that a source holds at the same position keep its qualifiers.
void SettleArray(XMPMetaHandle source, const UnitEdit& edit);

}  // namespace zephmetadata
