#pragma once

#include "providers/merging/merged_edits.h"

/// Edits of arrays, for ApplyUnitEdit.
namespace zephmetadata {

/// Edits the items of a source's own array as those of the merged tree, which is still mixed, were edited.
void EditItems(XMPMetaHandle source, const UnitEdit& edit);
/// Sets an array that was mixed. Items that a source holds at the same position keep its qualifiers.
void SettleArray(XMPMetaHandle source, const UnitEdit& edit);

}  // namespace zephmetadata
