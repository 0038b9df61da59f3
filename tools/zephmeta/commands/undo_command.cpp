#include <algorithm>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <system_error>
#include <unordered_set>

#include "batch/batch.h"
#include "commands/commands.h"
#include "console.h"
#include "edits/kept_time.h"
#include "json.h"
#include "undo/journal_file.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;
using namespace zephmetadata;
using State = JournalFile::State;

/// The names that files and folders were asked for by, and which of them meant something.
class Choice {
public:
    explicit Choice(const std::vector<std::string>& names) : mNames(names) {
        for (const std::string& name : names) {
            mLeft.insert(Absolute(name));
        }
        mWanted = mLeft;
    }

    /// Whether the file, or a folder that it lies in, is one of them.
    bool Has(const std::string& path) {
        bool isWanted = mWanted.empty();
        for (fs::path part = path; !isWanted && part.has_relative_path(); part = part.parent_path()) {
            isWanted = mWanted.contains(part.native());
            mLeft.erase(isWanted ? part.native() : std::string());
        }
        return isWanted;
    }

    void ReportTheRest(Problems& problems) const {
        for (const std::string& name : mNames) {
            if (mLeft.contains(Absolute(name))) {
                problems.Report(name, "the last command did not change it");
            }
        }
    }

private:
    /// Without the separator behind a folder.
    static std::string Absolute(const std::string& name) {
        const fs::path path = fs::absolute(name).lexically_normal();
        return path.has_filename() ? path.native() : path.parent_path().native();
    }

    const std::vector<std::string>& mNames;
    std::unordered_set<std::string> mWanted;
    std::unordered_set<std::string> mLeft;
};

/// A name as people would give it: from the folder at hand when it lies in that.
std::string NameFromHere(const std::string& path) {
    std::error_code ignored;  // without a folder at hand all names are absolute
    const std::string folder = (fs::current_path(ignored) / "").native();
    return path.starts_with(folder) ? path.substr(folder.size()) : path;
}

class UndoCommand {
public:
    UndoCommand(JournalFile& journal, const UndoRequest& request) : mJournal(journal), mRequest(request) {}

    int Run(std::vector<JournalFile::Entry> entries, Problems& problems) {
        Choice choice(mRequest.mBatch.mFiles.mNames);
        std::erase_if(entries, [&](const JournalFile::Entry& entry) { return !choice.Has(entry.mPath); });
        choice.ReportTheRest(problems);
        const auto isDone = [](const JournalFile::Entry& entry) { return entry.mState == State::kDone; };
        mTakesBack = std::any_of(entries.begin(), entries.end(), isDone);
        std::erase_if(entries, [&](const JournalFile::Entry& entry) { return isDone(entry) != mTakesBack; });
        std::sort(entries.begin(), entries.end(),
                  [](const auto& left, const auto& right) { return left.mPath < right.mPath; });
        std::vector<std::string> names;
        std::transform(entries.begin(), entries.end(), std::back_inserter(names),
                       [](const JournalFile::Entry& entry) { return NameFromHere(entry.mPath); });
        const int status =
            Batch(mRequest.mBatch, problems).RunPlainly(names, [&](std::size_t number, FileResult& result) {
                Do(entries[number], result);
            });
        DropSpent();
        return status;
    }

private:
    void Do(const JournalFile::Entry& entry, FileResult& result) {
        const std::optional<JournalRecord> record = mJournal.Read(entry);
        if (!record) {
            result.Fail("what is known of it is damaged; left as it is");
            return;
        }
        const UndoScope undo;
        KeptTime time(record->mPath, record->mKeepsTime && !mRequest.mDryRun);
        const FileReport report = mRequest.mDryRun ? RehearseFileChange(record->mUndo) : ChangeFile(record->mUndo);
        if (report.mStatus == kFileStatus_Success) {
            if (!time.PutBack()) {
                result.Note(kTimeNotPutBack);
            }
            Keep(entry, *record, undo, time, result);
            Print(*record, result);
        } else if (report.mStatus == kFileStatus_Changed) {
            Keep(entry, *record, undo, time, result);
            result.Fail("it was changed since; left as it is");
        } else {
            result.Fail(Describe(report));
        }
    }

    void DropSpent() {
        try {
            if (!mRequest.mDryRun) {
                mJournal.DropSpent();
            }
        } catch (const std::system_error&) {
            // It stays longer than it need be, and as good.
        }
    }

    /// What takes back what was just done, and that the entry is of no more use. What changed since can never be done.
    void Keep(const JournalFile::Entry& entry, const JournalRecord& record, const UndoScope& undo, const KeptTime& time,
              FileResult& result) {
        const std::lock_guard lock(mMutex);
        try {
            for (const FileChange& change : undo.Changes()) {
                JournalRecord back{record.mPath, change, record.mChanged, false};
                back.mKeepsTime = time.Adopt(back.mUndo);
                mJournal.Append(mTakesBack ? State::kUndone : State::kDone, back);
            }
            if (!mRequest.mDryRun) {
                mJournal.Mark(entry, State::kSpent);
            }
        } catch (const std::system_error& error) {
            result.Note(std::string("done, but \"undo\" will not know of it (") + error.what() + ")");
        }
    }

    void Print(const JournalRecord& record, FileResult& result) const {
        const Outcome done = mTakesBack ? Outcome::kTakenBack : Outcome::kWritten;
        result.SetOutcome(mRequest.mDryRun ? Outcome::kWouldChange : done);
        if (mRequest.mBatch.mJson) {
            Json json = FileObject(result.Name());
            json["written"] = !mRequest.mDryRun;
            json["changed"] = record.mChanged;
            result.Print(JsonLine(json));
            return;
        }
        const std::string word = mTakesBack ? "taken back" : "done again";
        result.Print(OneLine(result.Name()) + ": " + (mRequest.mDryRun ? "would be " : "") + word);
        for (const std::string& expression : record.mChanged) {
            if (mRequest.mDryRun || mRequest.mBatch.mVerbose) {
                result.Print("  " + OneLine(expression));
            }
        }
    }

    JournalFile& mJournal;
    const UndoRequest& mRequest;
    bool mTakesBack = true;
    std::mutex mMutex;  // of changes of the journal
};

}  // namespace

int Undo(const UndoRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    const std::unique_ptr<JournalFile> journal = JournalFile::OpenLast();
    bool isWhole = true;
    auto entries = journal ? journal->Entries(isWhole) : std::vector<JournalFile::Entry>();
    std::erase_if(entries, [](const JournalFile::Entry& entry) { return entry.mState == State::kSpent; });
    if (!isWhole) {
        problems.Report({}, "the journal of the last command is damaged; what it lost stays as it is");
    }
    if (entries.empty()) {
        problems.Report({}, "there is nothing to undo");
        return problems.ExitStatus();
    }
    return UndoCommand(*journal, request).Run(std::move(entries), problems);
}

}  // namespace zephmeta
