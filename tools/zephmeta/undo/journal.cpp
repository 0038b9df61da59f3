#include "undo/journal.h"

#include <exception>
#include <filesystem>

#include "zephcore/files.h"

namespace zephmeta {

void Journal::Record(const zephmetadata::UndoScope& undo, const std::vector<std::string>& changed, FileResult& result,
                     const KeptTimes& times) {
    const std::lock_guard lock(mMutex);
    if (mIsBroken) {
        return;
    }
    try {
        for (const zephmetadata::FileChange& change : undo.Changes()) {
            const std::string name = zephcore::PathToNative(change.mPath);
            JournalRecord record{std::filesystem::absolute(name).lexically_normal().native(), change, changed, false};
            record.mKeepsTime = times.Adopt(record.mUndo);
            mFile = mFile ? std::move(mFile) : JournalFile::Create();
            mFile->Append(JournalFile::State::kDone, record);
        }
    } catch (const std::exception& error) {
        mIsBroken = true;
        result.Note("written, but neither this nor what follows can be undone (" + std::string(error.what()) + ")");
    }
}

}  // namespace zephmeta
