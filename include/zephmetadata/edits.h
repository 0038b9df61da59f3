#pragma once

#include <cstdint>
#include <vector>

#include "zephmetadata/file_status.h"
#include "zephmetadata/values.h"

/// Editing by a list of edits that is carried out as a whole or not at all, with an answer for each edit.
///
/// An edit is rehearsed on a copy first: what is refused changes nothing. Nothing is thrown. Different trees and providers
/// may be edited by different threads at the same time.
namespace zephmetadata {

class MetaDataProvider;

enum EditKind : std::int32_t {
    kEditKind_Set = 0,     ///< the value becomes mValue: of a list all its items, of an alternative one language
    kEditKind_Add = 1,     ///< an item mValue at the end of a list; a bag that holds it already stays as it is
    kEditKind_Delete = 2,  ///< the value, the item or the language goes
    kEditKind_Remove = 3,  ///< every item of a list that is mValue goes
    kEditKind_Rename = 4,  ///< every item of a list that is mValue becomes mNewValue; in a bag the second of two goes
    kEditKind_Copy = 5,    ///< what mSource holds at the path, whatever it is, takes the place of what is there
};

struct ValueEdit {
    EditKind mKind = kEditKind_Set;
    Path mPath;
    UTF8String mLanguage;  ///< of an alternative, to set or delete that language alone; else empty
    UTF8String mValue;
    UTF8String mNewValue;
    XMPMetaPtr mSource;  ///< shared; to be left unchanged until the edit was carried out
};

/// What became of a list of edits.
struct ZEPHMETADATA_EXPORT EditReport {
    std::vector<EditOutcome> mOutcomes;        ///< one for each edit
    FileStatus mStatus = kFileStatus_Success;  ///< of the write-back, where there was one: of the first failure
    UTF8String mDetail;                        ///< the same, as in FileReport
    std::vector<WriteFailure> mFailures;       ///< the files, of several that are edited as one, that were not written

    bool IsRefused() const;
    bool IsChanged() const;  ///< in the tree; not when anything was refused
};

/// Why an edit can be carried out in no tree at all: no definition, no list, a value that is not allowed or empty.
/// Localised; empty when there is no such reason.
ZEPHMETADATA_EXPORT UTF16String WhyRefused(const ValueEdit& edit);

/// Why it was refused, as a text for people (file_status.h); empty when it was not.
ZEPHMETADATA_EXPORT UTF8String Describe(const EditOutcome& outcome);

/// Carries the edits out, in their order. When one of them is refused, none is. A null tree refuses all.
ZEPHMETADATA_EXPORT EditReport ApplyEdits(XMPMetaHandle tree, const std::vector<ValueEdit>& edits);
/// What they would do, without doing it.
ZEPHMETADATA_EXPORT EditReport RehearseEdits(XMPMetaHandle tree, const std::vector<ValueEdit>& edits);

/// The same to the tree of a provider, and writes what changed back. A file that has no metadata yet gets its first when
/// something is to be set. mStatus, mDetail and mFailures tell how the writing went, as MetaDataUpdateAccess::Commit does.
ZEPHMETADATA_EXPORT EditReport ApplyEdits(const sp<MetaDataProvider>& provider, const std::vector<ValueEdit>& edits);

}  // namespace zephmetadata
