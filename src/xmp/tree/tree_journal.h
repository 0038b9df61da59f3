#pragma once

#include <map>
#include <memory>

#include "xmp/tree/written_properties.h"

/// What a tree was before it was changed, as far as it was: so that a change of a file costs no second reading of it.
namespace zephmetadata::toolkit {

struct TreeJournal {
    /// The top-level properties that were touched since the journal was begun, as they were then; null for none.
    std::map<Place, std::shared_ptr<const WrittenProperty>> mBefore;
};

/// Begins one. The tree and the caller share it; copies of the tree have none.
std::shared_ptr<const TreeJournal> BeginJournal(XMPMetaHandle tree);
/// Null when none was begun, or since then the tree became another as a whole.
const TreeJournal* JournalOf(XMPMetaHandle tree);
void EndJournal(XMPMetaHandle tree);

}  // namespace zephmetadata::toolkit
