#pragma once

#include "zephmetadata/library.h"

namespace zephmetadata {

/// Keeps an error record and has the host's callbacks called with its text. @p detail is localised and filled in
/// already, and cut off where it is very long; @p context is the document concerned, empty where there is none.
void SendError(ErrorKind kind, const UTF16String& detail, const UTF16String& context);

/// What is read or registered of one document while this lives sends no more than this thread's kMostRecords records, the
/// last of which says that there are more: a document may have a problem in every element. Scopes nest, each on its own.
class RecordLimit {
public:
    static constexpr std::size_t kMostRecords = 10000;

    RecordLimit();
    ~RecordLimit();
    RecordLimit(const RecordLimit&) = delete;
    RecordLimit& operator=(const RecordLimit&) = delete;

    /// Counts one more record.
    std::size_t Count() { return ++mRecords; }

private:
    RecordLimit* mBefore;
    std::size_t mRecords = 0;
};

/// The callback list exists between these two; errors reported outside reach no callback.
void CreateErrorCallbacks();
void DestroyErrorCallbacks();
/// Drops the callbacks whose function object is empty.
void PruneErrorCallbacks();

}  // namespace zephmetadata
