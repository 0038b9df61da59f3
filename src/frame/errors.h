#pragma once

#include "zephmetadata/library.h"

namespace zephmetadata {

/// Keeps an error record and has the host's callbacks called with its text. @p detail is localised and filled in
/// already; @p context is the document concerned, empty where there is none.
void SendError(ErrorKind kind, const UTF16String& detail, const UTF16String& context);

/// The callback list exists between these two; errors reported outside reach no callback.
void CreateErrorCallbacks();
void DestroyErrorCallbacks();
/// Drops the callbacks whose function object is empty.
void PruneErrorCallbacks();

}  // namespace zephmetadata
