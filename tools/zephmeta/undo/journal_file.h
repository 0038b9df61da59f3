#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "undo/journal_record.h"

namespace zephmeta {

/// The file with the records of one run, locked as long as this lives. It belongs to the user alone. What the system refuses
/// throws std::system_error, a user without a home std::runtime_error.
class JournalFile {
public:
    enum class State : char {
        kDone = 'd',    ///< the file is as the command wrote it
        kUndone = 'u',  ///< the file is as it was before
        kSpent = '-',   ///< of no use any more
    };
    struct Entry {
        State mState = State::kSpent;
        std::uint64_t mOffset = 0;
        std::string mPath;  ///< absolute
    };

    /// Makes one for a run. Those of earlier runs that are at their end are removed, whatever comes of it.
    static std::unique_ptr<JournalFile> Create();
    /// The newest of a run that is at its end; null when there is none.
    static std::unique_ptr<JournalFile> OpenLast();

    ~JournalFile();
    JournalFile(const JournalFile&) = delete;
    JournalFile& operator=(const JournalFile&) = delete;

    /// All records in their order, as far as they are whole; @p isWhole says whether all are. What is appended comes behind
    /// the last whole one.
    std::vector<Entry> Entries(bool& isWhole);
    /// Absent when it is damaged.
    std::optional<JournalRecord> Read(const Entry& entry) const;
    /// Adds a record. When that fails the file is as it was.
    void Append(State state, const JournalRecord& record);
    void Mark(const Entry& entry, State state) const;
    /// Makes it as small as it can be. Entries are other ones afterwards.
    void DropSpent();

private:
    JournalFile(std::filesystem::path path, int file) : mPath(std::move(path)), mFile(file) {}
    static std::unique_ptr<JournalFile> Begin(const std::filesystem::path& path);
    void TakeName() const;

    std::filesystem::path mPath;
    int mFile;
    std::uint64_t mEnd = 0;       // of what is whole
    std::uint64_t mUnsynced = 0;  // records that a loss of power would take
};

}  // namespace zephmeta
