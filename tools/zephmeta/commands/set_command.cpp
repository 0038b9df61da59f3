#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <unordered_set>

#include "batch/batch.h"
#include "commands/commands.h"
#include "documents/document_file.h"
#include "edits/changes.h"
#include "edits/edit_arguments.h"
#include "json.h"
#include "media_file.h"
#include "suggestions.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// Copies of what stands in another file, for --from: of @p expressions, or of all that does not tell one file from others.
FileEdits EditsFrom(const XMPMetaPtr& source, const std::vector<std::string>& expressions) {
    FileEdits edits;
    const auto copy = [&](const std::string& expression, const Path& path) {
        edits.Add({kEditKind_Copy, path, {}, {}, {}, source}, expression);
    };
    std::string last;
    for (const XMPNode& node : expressions.empty() ? XMPNodes(source.get()) : std::vector<XMPNode>()) {
        const std::string property = node.mPath.substr(0, node.mPath.find_first_of("[/"));
        const Path path = PathForExpression(property);
        if (std::exchange(last, property) != property && !IsInstanceData(path) && PathEntryDefinition(path)) {
            copy(property, path);
        }
    }
    for (const std::string& expression : expressions) {
        copy(expression, PathForExpression(expression));
    }
    return edits;
}

/// The times of a file, to be put back after it was written.
class KeptTime {
public:
    KeptTime(const std::string& name, bool isKept)
        : mName(name), mIsKept(isKept && stat(name.c_str(), &mStatus) == 0) {}
    void PutBack() const {
        const std::array times = {mStatus.st_atim, mStatus.st_mtim};
        if (mIsKept) {
            utimensat(AT_FDCWD, mName.c_str(), times.data(), 0);
        }
    }

private:
    std::string mName;
    struct stat mStatus {};
    bool mIsKept;
};

class SetCommand {
public:
    SetCommand(const SetRequest& request, std::vector<RequestedEdit> edits, FileEdits copies)
        : mRequest(request), mEdits(std::move(edits)), mCopies(std::move(copies)) {}

    void EditFile(MediaFile& file, FileResult& result) const {
        // An item is meant by its place in the list that was read, everything else can be done to what is there now.
        constexpr int kTries = 20;
        const bool isRepeatable = std::none_of(mEdits.begin(), mEdits.end(), [](const RequestedEdit& one) {
            return one.mEdit.mPath.mPathDescription.find('[') != std::string::npos;
        });
        int triesLeft = isRepeatable ? kTries : 1;
        while (EditOnce(file, --triesLeft > 0, result)) {
            file = MediaFile(file.Name());
        }
    }

    /// The files as one, as an editor shows them: what they share changes in all, the rest stays each file's own.
    int EditTogether(std::vector<MediaFile> files, Problems& problems) const {
        std::erase_if(files, [&](MediaFile& file) { return !CanStart(file, problems); });
        if (files.empty()) {
            return problems.ExitStatus();
        }
        const auto provider = AsOne(files);
        const FileEdits edits = EditsOf(*MetaDataReadAccess(provider));
        std::string problem = edits.mProblem.empty() ? WhyNotTogether(provider, edits) : edits.mProblem;
        EditReport report;
        if (problem.empty()) {
            report = ApplyEdits(provider, edits.mEdits);
            problem = report.IsRefused() ? WhyNot(edits, report) : std::string();
        }
        int status = problems.ExitStatus();
        for (const MediaFile& file : files) {
            FileResult result(file.Name());
            const std::string failure = problem.empty() ? file.WriteProblem() : problem + kNothingWritten;
            if (failure.empty()) {
                Print(file, ChangedOf(edits, report), {}, result);
            } else {
                result.Fail(failure);
            }
            status = result.Tell(status);
        }
        return status;
    }

private:
    static constexpr const char* kNothingWritten = "; nothing was written";

    /// True when another program changed the file meanwhile and another try is worth it.
    bool EditOnce(MediaFile& file, bool mayTryAgain, FileResult& result) const {
        const FileEdits edits = EditsOf(*MetaDataReadAccess(file.Provider()));
        if (!edits.mProblem.empty()) {
            result.Fail(edits.mProblem + kNothingWritten);
        } else if (mRequest.mDryRun) {
            Rehearse(file, edits, result);
        } else if (file.IsMissingSidecar()) {
            MakeSidecar(file, edits, result);
        } else {
            return Write(file, edits, mayTryAgain, result);
        }
        return false;
    }

    /// Gives a file without XMP its first where something is to be set.
    bool CanStart(MediaFile& file, Problems& problems) const {
        const XMPMetaPtr empty = CreateXMPMeta();
        const bool isNeeded = !file.HasXMP() && ApplyEdits(empty.get(), EditsOf(empty.get()).mEdits).IsChanged();
        if (isNeeded && !file.Start()) {
            problems.Report(file.Name(), WhyNoFirst(file));
            return false;
        }
        return true;
    }

    FileEdits EditsOf(XMPMetaHandle tree) const {
        FileEdits edits = EditsFor(mEdits, tree);
        for (std::size_t i = 0; i < mCopies.mEdits.size(); ++i) {
            edits.Add(mCopies.mEdits[i], mCopies.mExpressions[i]);
        }
        return edits;
    }

    static std::string WhyNot(const FileEdits& edits, const EditReport& report) {
        const auto refused = std::find_if(report.mOutcomes.begin(), report.mOutcomes.end(),
                                          [](const EditOutcome& one) { return one.mResult == kEditResult_Refused; });
        const auto number = static_cast<std::size_t>(refused - report.mOutcomes.begin());
        return edits.mExpressions[number] + ": " + Shown(refused->mReason);
    }

    static std::string WhyNotTogether(const sp<MetaDataProvider>& provider, const FileEdits& edits) {
        const MetaDataReadAccess access(provider);
        for (std::size_t i = 0; i < edits.mEdits.size(); ++i) {
            const Path& path = edits.mEdits[i].mPath;
            if (IsInstanceData(path)) {
                return edits.mExpressions[i] + ": tells one file from others; set it in each by itself";
            }
            if (path.mPathDescription.find('[') != std::string::npos && IsMixed(*access, path)) {
                return edits.mExpressions[i] +
                       ": the files hold different lists; set or delete the whole, or add to it";
            }
        }
        return {};
    }

    /// What was changed, each once.
    static std::vector<std::string> ChangedOf(const FileEdits& edits, const EditReport& report) {
        std::vector<std::string> changed;
        std::unordered_set<std::string> seen;
        for (std::size_t i = 0; i < edits.mEdits.size() && report.IsChanged(); ++i) {
            if (report.mOutcomes[i].mResult == kEditResult_Changed && seen.insert(edits.mExpressions[i]).second) {
                changed.push_back(edits.mExpressions[i]);
            }
        }
        return changed;
    }

    void Rehearse(const MediaFile& file, const FileEdits& edits, FileResult& result) const {
        const MetaDataReadAccess access(file.Provider());
        const XMPMetaPtr after = *access == nullptr ? CreateXMPMeta() : CloneXMPMeta(*access);
        const EditReport report = ApplyEdits(after.get(), edits.mEdits);
        if (report.IsRefused()) {
            result.Fail(WhyNot(edits, report));
            return;
        }
        result.SetOutcome(report.IsChanged() ? Outcome::kWouldChange : Outcome::kUnchanged);
        Print(file, ChangedOf(edits, report), Differences(*access, after.get()), result);
    }

    bool Write(MediaFile& file, const FileEdits& edits, bool mayTryAgain, FileResult& result) const {
        if (std::string problem = Backup(file.Name()); !problem.empty()) {
            result.Fail(problem);
            return false;
        }
        const KeptTime time(file.Name(), mRequest.mKeepTime);
        const XMPMetaPtr before =
            mRequest.mBatch.mVerbose ? CloneXMPMeta(*MetaDataReadAccess(file.Provider())) : nullptr;
        const EditReport report = ApplyEdits(file.Provider(), edits.mEdits);
        if (report.IsRefused()) {
            const bool hasTree = *MetaDataReadAccess(file.Provider()) != nullptr;
            result.Fail(hasTree ? WhyNot(edits, report) + kNothingWritten : WhyNoFirst(file));
            return false;
        }
        if (report.IsChanged() && mayTryAgain && file.WasChangedMeanwhile()) {
            return true;
        }
        if (const std::string problem = report.IsChanged() ? file.WriteProblem() : std::string(); !problem.empty()) {
            result.Fail(problem);
            return false;
        }
        time.PutBack();
        result.SetOutcome(report.IsChanged() ? Outcome::kWritten : Outcome::kUnchanged);
        std::vector<Change> changes;
        if (mRequest.mBatch.mVerbose && report.IsChanged()) {
            const XMPMetaPtr after = before ? CloneXMPMeta(before.get()) : CreateXMPMeta();
            ApplyEdits(after.get(), edits.mEdits);  // without what every write changes
            changes = Differences(before.get(), after.get());
        }
        Print(file, ChangedOf(edits, report), changes, result);
        return false;
    }

    void MakeSidecar(const MediaFile& file, const FileEdits& edits, FileResult& result) const {
        const XMPMetaPtr tree = CreateXMPMeta();
        const EditReport report = ApplyEdits(tree.get(), edits.mEdits);
        std::string problem = report.IsRefused() ? WhyNot(edits, report) + kNothingWritten : std::string();
        if (report.IsChanged()) {
            problem = WriteNewFile(file.Name(), SerializeXMPMeta(tree.get()));
        }
        if (!problem.empty()) {
            result.Fail(problem);
            return;
        }
        result.SetOutcome(report.IsChanged() ? Outcome::kWritten : Outcome::kUnchanged);
        Print(file, ChangedOf(edits, report), {}, result);
    }

    static std::string WhyNoFirst(const MediaFile& file) {
        const std::string reason = file.WhyWithoutXMP();
        return reason.empty() ? "has no XMP, and its format cannot be given any"
                              : "cannot be given any XMP (" + reason + ")";
    }

    /// The file as it is, under a name with the suffix, unless that is there already. Why not; empty when it is there.
    std::string Backup(const std::string& name) const {
        if (mRequest.mBackup.empty()) {
            return {};
        }
        std::error_code error;
        std::filesystem::copy_file(name, name + mRequest.mBackup, std::filesystem::copy_options::skip_existing, error);
        return error ? "the backup cannot be written (" + error.message() + "); nothing was changed" : std::string();
    }

    void Print(const MediaFile& file, const std::vector<std::string>& changed, const std::vector<Change>& changes,
               FileResult& result) const {
        const bool isWritten = !mRequest.mDryRun && !changed.empty();
        const std::string sidecar = isWritten ? file.Sidecar() : std::string();
        if (mRequest.mBatch.mJson) {
            Json json = FileObject(file.Name());
            json["written"] = isWritten;
            json["changed"] = changed;
            for (const Change& change : changes) {
                json["changes"].push_back(
                    {{"path", change.mExpression}, {"before", change.mBefore}, {"after", change.mAfter}});
            }
            if (!sidecar.empty()) {
                json["sidecar"] = sidecar;
            }
            result.Print(JsonLine(json));
            return;
        }
        const std::string word = changed.empty() ? "unchanged" : isWritten ? "written" : "would change";
        result.Print(OneLine(file.Name()) + ": " + word +
                     (sidecar.empty() ? "" : " to its sidecar " + OneLine(sidecar)));
        for (const Change& change : changes) {
            result.Print("  " + OneLine(change.mExpression) + ": " + InWords(change));
        }
    }

    const SetRequest& mRequest;
    std::vector<RequestedEdit> mEdits;
    FileEdits mCopies;
};

/// Tells assignments from files. A file that is there is a file, whatever its name looks like.
void Sort(SetRequest& request) {
    for (std::string& argument : request.mArguments) {
        const bool isEdit = ParseAssignment(argument).has_value() && !NamesFiles(argument);
        (isEdit ? request.mEdits.mAssignments : request.mBatch.mFiles.mNames).push_back(std::move(argument));
    }
    request.mArguments.clear();
}

}  // namespace

int Set(SetRequest request) {
    Sort(request);
    const bool hasEdits = !request.mEdits.IsEmpty() || !request.mFrom.empty();
    Problems problems;
    if (request.mBatch.mFiles.mNames.empty() || !hasEdits) {
        problems.Report(
            {}, std::string(hasEdits ? "no file to change" : "nothing to set") + "; see \"zephmeta set --help\"");
        return 2;
    }
    problems.ReportCollected({});
    const EditReading reading = ReadEdits(request.mEdits);
    FileEdits copies;
    if (!request.mFrom.empty()) {
        const MediaFile source(request.mFrom);
        const MetaDataReadAccess access(source.Provider());
        if (*access == nullptr) {
            const std::string problem = source.ReadProblem();
            problems.Report(request.mFrom, problem.empty() ? "has no XMP to copy" : problem);
        }
        copies = EditsFrom(CloneXMPMeta(*access), request.mFromPaths);
    }
    const std::vector<std::string>& names = request.mBatch.mFiles.mNames;
    for (const std::string& problem : reading.mProblems) {
        problems.Report(names.size() == 1 && !reading.mIsWrongUsage ? names.front() : std::string(), problem);
    }
    if (problems.ExitStatus() != 0) {
        return reading.mIsWrongUsage ? 2 : 1;  // nothing is done by halves
    }
    request.mBatch.mMakesSidecars = true;
    const SetCommand command(request, reading.mEdits, std::move(copies));
    if (request.mTogether) {
        return command.EditTogether(OpenAll(FileNames(request.mBatch.mFiles, problems), problems), problems);
    }
    return Batch(request.mBatch, problems).Run([&](MediaFile& file, FileResult& result) {
        command.EditFile(file, result);
    });
}

}  // namespace zephmeta
