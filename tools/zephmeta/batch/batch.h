#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "batch/condition.h"
#include "batch/file_names.h"
#include "media_file.h"
#include "zephmetadata/library.h"

namespace zephmeta {

/// The exit status after an interrupt.
constexpr int kInterruptedStatus = 130;

class FileResult;

/// What every command about files takes.
struct BatchOptions {
    FileRequest mFiles;
    std::string mCondition;  ///< files for which it does not hold are passed over; empty: none is
    std::size_t mJobs = 0;   ///< 0: as many as the machine has cores
    bool mOrdered = false;   ///< results in the order of the files
    bool mQuiet = false;     ///< problems alone
    bool mVerbose = false;
    bool mJson = false;
    bool mMakesSidecars = false;      ///< a sidecar that is not there is worked on as well
    std::ostream* mOutput = nullptr;  ///< of results; null: standard output, and nowhere when quiet
    std::function<void(const FileResult& result)> mOnDone;  ///< told of every file, one after the other; may be empty
};

/// What became of one file.
enum class Outcome { kRead, kWritten, kTakenBack, kWouldChange, kUnchanged, kPassedOver, kFailed };

/// What a command says of one file. It is printed as a whole when the file is done.
class FileResult {
public:
    explicit FileResult(std::string name) : mName(std::move(name)) {}

    const std::string& Name() const { return mName; }
    Outcome EndedAs() const { return mOutcome; }
    /// Why it failed; empty when it did not.
    const std::string& Reason() const { return mReason; }
    /// A line of the result.
    void Print(std::string_view line) { mOutput.append(line) += '\n'; }
    /// The same with an end of its own.
    void PrintAsIs(std::string_view text) { mOutput.append(text); }
    /// Something that could not be done.
    void Fail(const std::string& reason);
    /// Something that is to be known and stops nothing.
    void Note(const std::string& text);
    /// The same of what the library met.
    void Note(const std::vector<zephmetadata::ErrorInfo>& errors);
    /// Has a blank line put between this result and the one before.
    void SetApart() { mIsApart = true; }
    void SetOutcome(Outcome outcome) { mOutcome = outcome; }
    /// Prints all at once, for a command that is about one thing alone; 1 when something failed, else @p status.
    int Tell(int status) const;

private:
    friend class Batch;
    friend class BatchOutput;

    std::string mName;
    std::string mOutput;
    std::string mProblems;
    std::string mReason;  // the first of Fail
    bool mIsApart = false;
    Outcome mOutcome = Outcome::kRead;
};

/// Does the same to many files, with several workers at once.
///
/// An interrupt (SIGINT) lets the files at hand be finished; what was not begun is left as it is. Memory does not grow with
/// what was done, but for the names.
class Batch {
public:
    using Work = std::function<void(MediaFile& file, FileResult& result)>;
    using PlainWork = std::function<void(std::size_t number, FileResult& result)>;

    Batch(const BatchOptions& options, Problems& problems) : mOptions(options), mProblems(problems) {}

    /// Has @p work called for every file that can be read and meets the condition, by several threads at once. The exit
    /// status: 1 when something failed, 130 after an interrupt, 2 for a condition that is none.
    int Run(const Work& work);
    /// The same for files with these names, whatever they look like.
    int RunFor(const std::vector<std::string>& names, const Work& work);
    /// The same for the numbers of these names, of which no file is opened and no condition asked.
    int RunPlainly(const std::vector<std::string>& names, const PlainWork& work);

private:
    void Do(const Condition* condition, const Work& work, FileResult& result) const;

    const BatchOptions& mOptions;
    Problems& mProblems;
};

/// The files that can be read and meet the condition, for a command that takes them for one; the others are reported or passed
/// over. Nothing for a condition that is none, which is reported.
std::optional<std::vector<MediaFile>> OpenTogether(const BatchOptions& options, Problems& problems);

}  // namespace zephmeta
