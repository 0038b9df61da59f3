#include "batch/batch.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <map>
#include <mutex>
#include <numeric>
#include <thread>

#include "batch/interrupt.h"
#include "json.h"

namespace zephmeta {

namespace {

std::string Plural(std::size_t count, std::string_view noun) {
    return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

/// How many files ended how.
class Tally {
public:
    void Count(Outcome outcome, const std::string& reason) {
        ++mOutcomes[outcome];
        if (outcome == Outcome::kFailed) {
            // What stands in brackets or behind a path is another one in every file.
            ++mReasons[reason.substr(0, reason.find(" ("))];
        }
    }

    bool HasFailures() const { return mOutcomes.contains(Outcome::kFailed); }
    bool HasEdits() const {
        return std::any_of(mOutcomes.begin(), mOutcomes.end(), [](const auto& entry) {
            return entry.first != Outcome::kRead && entry.first != Outcome::kFailed &&
                   entry.first != Outcome::kPassedOver;
        });
    }
    std::size_t Total() const {
        return std::accumulate(mOutcomes.begin(), mOutcomes.end(), std::size_t{0},
                               [](std::size_t sum, const auto& entry) { return sum + entry.second; });
    }

    std::string Summary() const {
        static const std::map<Outcome, std::string_view> names = {{Outcome::kRead, "read"},
                                                                  {Outcome::kWritten, "written"},
                                                                  {Outcome::kTakenBack, "taken back"},
                                                                  {Outcome::kUnchanged, "unchanged"},
                                                                  {Outcome::kWouldChange, "would change"},
                                                                  {Outcome::kFailed, "failed"},
                                                                  {Outcome::kPassedOver, "passed over"}};
        std::string text;
        for (const auto& [outcome, count] : mOutcomes) {
            text.append(text.empty() ? "" : ", ").append(std::to_string(count)).append(" ").append(names.at(outcome));
        }
        return text + Reasons();
    }

private:
    std::string Reasons() const {
        constexpr std::size_t kMostReasons = 5;
        std::vector<std::pair<std::size_t, std::string>> reasons;
        for (const auto& [reason, count] : mReasons) {
            reasons.emplace_back(count, reason);
        }
        std::stable_sort(reasons.begin(), reasons.end(),
                         [](const auto& left, const auto& right) { return left.first > right.first; });
        std::string text;
        for (std::size_t i = 0; i < std::min(reasons.size(), kMostReasons); ++i) {
            text.append(text.empty() ? " (" : "; ");
            text.append(std::to_string(reasons[i].first)).append(": ").append(OneLine(reasons[i].second));
        }
        return text.empty() ? text : text + (reasons.size() > kMostReasons ? "; ...)" : ")");
    }

    std::map<Outcome, std::size_t> mOutcomes;
    std::map<std::string, std::size_t> mReasons;
};

/// The condition of a command, which is reported when it is none.
ConditionReading ConditionOf(const BatchOptions& options, Problems& problems) {
    ConditionReading condition = ReadCondition(options.mCondition);
    if (!condition.mProblem.empty()) {
        problems.Report({}, "--if: " + condition.mProblem);
    }
    return condition;
}

/// Whether a file meets a condition; a null one is met by every file.
bool Meets(const MediaFile& file, const Condition* condition) {
    return condition == nullptr || condition->Holds(TreeValues(*zephmetadata::MetaDataReadAccess(file.Provider())));
}

FileResult ResultOf(const std::string& name, std::size_t number, const Batch::PlainWork& work) {
    FileResult result(name);
    try {
        zephmetadata::ErrorScope errors;
        work(number, result);
        result.Note(errors.Errors());
    } catch (const std::exception& error) {
        result.Fail(error.what());
    }
    return result;
}

}  // namespace

/// Prints results as they are done, or in the order of the files.
class BatchOutput {
public:
    BatchOutput(const BatchOptions& options, std::size_t files)
        : mOptions(options), mIsOrdered(options.mOrdered || files <= kFewFiles), mProgress(files, true) {}

    void Done(std::size_t number, FileResult result) {
        const std::lock_guard lock(mMutex);
        if (!mIsOrdered) {
            Print(result);
            return;
        }
        mWaiting.emplace(number, std::move(result));
        for (auto next = mWaiting.begin(); next != mWaiting.end() && next->first == mPrinted; ++mPrinted) {
            Print(next->second);
            next = mWaiting.erase(next);
        }
    }

    const Tally& Results() const { return mTally; }

private:
    void Print(const FileResult& result) {
        mTally.Count(result.mOutcome, result.mReason);
        if (mOptions.mOnDone) {
            mOptions.mOnDone(result);
        }
        mProgress.Erase();
        std::ostream& out = mOptions.mOutput == nullptr ? std::cout : *mOptions.mOutput;
        if (!mOptions.mQuiet || mOptions.mOutput != nullptr) {
            out << (result.mIsApart && mHasPrinted ? "\n" : "") << result.mOutput;
            mHasPrinted = mHasPrinted || !result.mOutput.empty();
        }
        if (mOptions.mJson && result.mOutput.empty() && !result.mReason.empty()) {
            Json json = FileObject(result.mName);
            json["error"] = result.mReason;
            out << JsonLine(json) << '\n';
        }
        if (!result.mProblems.empty()) {
            std::cout.flush();
            std::cerr << result.mProblems;
        }
        mProgress.Next(result.mName);
    }

    /// So few are done before anybody waits for the first.
    static constexpr std::size_t kFewFiles = 100;

    const BatchOptions& mOptions;
    bool mIsOrdered;
    std::mutex mMutex;  // guards all that follows
    Progress mProgress;
    Tally mTally;
    std::map<std::size_t, FileResult> mWaiting;
    std::size_t mPrinted = 0;
    bool mHasPrinted = false;
};

void FileResult::Fail(const std::string& reason) {
    mOutcome = Outcome::kFailed;
    mReason = mReason.empty() ? reason : mReason;
    Note(reason);
}

void FileResult::Note(const std::string& text) {
    mProblems.append(OneLine(mName)).append(": ").append(OneLine(text)).append("\n");
}

void FileResult::Note(const std::vector<zephmetadata::ErrorInfo>& errors) {
    for (const zephmetadata::ErrorInfo& error : errors) {
        Note(Shown(error.message));
    }
}

int FileResult::Tell(int status) const {
    std::cout << mOutput << std::flush;
    std::cerr << mProblems;
    return mReason.empty() ? status : 1;
}

void Batch::Do(const Condition* condition, const Work& work, FileResult& result) const {
    MediaFile file(result.Name());
    const bool isMade = mOptions.mMakesSidecars && file.IsMissingSidecar();
    const std::string problem = isMade ? std::string() : file.ReadProblem();
    if (!problem.empty()) {
        result.Fail(problem);
    } else if (!Meets(file, condition)) {
        result.SetOutcome(Outcome::kPassedOver);
    } else {
        work(file, result);
    }
}

int Batch::Run(const Work& work) {
    return RunFor(FileNames(mOptions.mFiles, mProblems), work);
}

int Batch::RunFor(const std::vector<std::string>& names, const Work& work) {
    const ConditionReading condition = ConditionOf(mOptions, mProblems);
    if (!condition.mProblem.empty()) {
        return 2;
    }
    return RunPlainly(
        names, [&](std::size_t /*number*/, FileResult& result) { Do(condition.mCondition.get(), work, result); });
}

int Batch::RunPlainly(const std::vector<std::string>& names, const PlainWork& work) {
    const InterruptGuard guard;
    BatchOutput output(mOptions, names.size());
    std::atomic<std::size_t> next = 0;
    const auto worker = [&] {
        for (std::size_t i = next++; i < names.size() && !InterruptGuard::IsInterrupted(); i = next++) {
            output.Done(i, ResultOf(names[i], i, work));
        }
    };
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t jobs = std::min(mOptions.mJobs == 0 ? cores : mOptions.mJobs, names.size());
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < jobs; ++i) {
        others.emplace_back(worker);
    }
    worker();
    others.clear();
    std::cout.flush();
    const Tally& tally = output.Results();
    const bool isCut = tally.Total() < names.size();
    constexpr std::size_t kFilesWorthCounting = 10;
    const bool isLong = names.size() >= kFilesWorthCounting && (tally.HasEdits() || tally.HasFailures());
    if (!mOptions.mQuiet && (mOptions.mVerbose || isCut || isLong)) {
        std::cerr << "zephmeta: " << Plural(names.size(), "file") << ": " << tally.Summary();
        std::cerr << (isCut ? ", " + std::to_string(names.size() - tally.Total()) + " not begun (interrupted)" : "")
                  << '\n';
    }
    if (isCut) {
        return kInterruptedStatus;
    }
    return tally.HasFailures() ? 1 : mProblems.ExitStatus();
}

std::optional<std::vector<MediaFile>> OpenTogether(const BatchOptions& options, Problems& problems) {
    const ConditionReading condition = ConditionOf(options, problems);
    if (!condition.mProblem.empty()) {
        return std::nullopt;
    }
    std::vector<MediaFile> files = OpenAll(FileNames(options.mFiles, problems), problems);
    std::erase_if(files, [&](const MediaFile& file) { return !Meets(file, condition.mCondition.get()); });
    return files;
}

}  // namespace zephmeta
