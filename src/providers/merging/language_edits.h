#pragma once

#include "providers/merging/merged_edits.h"

/// Edits of language alternatives, for ApplyUnitEdit.
namespace zephmetadata {

/// Sets the languages of a source that were set in the merged tree and removes those that were removed, or set to an
/// empty text; no other language changes.
void EditLanguages(XMPMetaHandle source, const UnitEdit& edit);

}  // namespace zephmetadata
