#pragma once

#include <unordered_set>
#include <vector>

#include "xmp/core/toolkit.h"

namespace zephmetadata::toolkit {

/// Document history of one tree: open it, note what changed, prepare it for saving. All bookkeeping lands in that tree.
///
/// PrepareForSave gives it a new xmpMM:InstanceID ("xmp.iid:" and a random UUID), xmpMM:DocumentID ("xmp.did:") and xmpMM:OriginalDocumentID
/// where they are missing, sets xmp:MetadataDate to now, and appends one item to xmpMM:History: stEvt:action "saved",
/// stEvt:instanceID, stEvt:when, stEvt:softwareAgent (the host's client name) and stEvt:changed (the noted parts, each once,
/// in order, joined with ";"). An instance identifier or metadata date that is
/// itself among the noted parts stays as it was set, and so does a property of a shape that it should not have. Without noted parts it does nothing.
class TXMPDocOps {
public:
    void OpenXMP(XMPMetaHandle tree);
    void NoteChange(const UTF8String& part);
    void PrepareForSave();

private:
    XMPMetaPtr mTree;
    std::vector<UTF8String> mParts;
    std::unordered_set<UTF8String> mNoted;  // the same parts
};

}  // namespace zephmetadata::toolkit
