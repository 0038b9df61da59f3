#pragma once

#include <optional>
#include <string>

#include "media/plan.h"
#include "zephmetadata/file_changes.h"

namespace zephmetadata::media {

/// Gets what takes back the writes of the thread that made it. The innermost one of a thread gets it.
class UndoLog {
public:
    UndoLog();
    virtual ~UndoLog();
    UndoLog(const UndoLog&) = delete;
    UndoLog& operator=(const UndoLog&) = delete;

    /// Null when there is none.
    static UndoLog* Innermost();
    /// Before a write, so that adding what takes it back cannot fail.
    virtual void Prepare(const std::string& nativePath) = 0;
    /// Of the file that was prepared for last.
    virtual void Add(FileChange undo) noexcept = 0;

private:
    UndoLog* mOuter;
};

/// A digest of what a source holds in the stretches of some changes; absent when it cannot be read. Memory is bounded.
std::optional<std::string> DigestOf(const ByteSource& source, const std::vector<ByteChange>& stretches);

/// What takes back that @p plan made @p after of @p before, of which path, kind, size and time are left open; absent when one of
/// them cannot be read. Bytes that the plan replaces by the same are left out at the ends of its stretches.
std::optional<FileChange> UndoOf(const Plan& plan, const ByteSource& before, const ByteSource& after);

}  // namespace zephmetadata::media
