#include "edits/file_editor.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

#include "edits/kept_time.h"
#include "json.h"
#include "zephcore/files.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// An item is meant by its place in the list that was read, everything else can be done to what is there now.
bool IsRepeatable(const FileEdits& edits) {
    return std::none_of(edits.mEdits.begin(), edits.mEdits.end(), [](const ValueEdit& edit) {
        return edit.mPath.mPathDescription.find('[') != std::string::npos;
    });
}

}  // namespace

void FileEditor::Edit(MediaFile& file, const EditSource& editsOf, FileResult& result) const {
    constexpr int kTries = 20;
    int triesLeft = kTries;
    while (EditOnce(file, editsOf, --triesLeft > 0, result)) {
        file = MediaFile(file.Name());
    }
}

/// True when another program changed the file meanwhile and another try is worth it.
bool FileEditor::EditOnce(MediaFile& file, const EditSource& editsOf, bool mayTryAgain, FileResult& result) const {
    const FileEdits edits = editsOf(*MetaDataReadAccess(file.Provider()));
    if (!edits.mProblem.empty()) {
        result.Fail(edits.mProblem + kNothingWritten);
    } else if (edits.mEdits.empty()) {
        result.SetOutcome(Outcome::kUnchanged);
        Print(file, {}, {}, result);
    } else if (mWriting.mDryRun) {
        Rehearse(file, edits, result);
    } else if (file.IsMissingSidecar()) {
        MakeSidecar(file, edits, result);
    } else {
        return Write(file, edits, mayTryAgain && IsRepeatable(edits), result);
    }
    return false;
}

void FileEditor::Rehearse(const MediaFile& file, const FileEdits& edits, FileResult& result) const {
    const MetaDataReadAccess access(file.Provider());
    const XMPMetaPtr after = *access == nullptr ? CreateXMPMeta() : CloneXMPMeta(*access);
    const EditReport report = ApplyEdits(after.get(), edits.mEdits);
    if (report.IsRefused()) {
        result.Fail(WhyRefused(edits, report));
        return;
    }
    result.SetOutcome(report.IsChanged() ? Outcome::kWouldChange : Outcome::kUnchanged);
    Print(file, ChangedOf(edits, report), Differences(*access, after.get()), result);
}

bool FileEditor::Write(MediaFile& file, const FileEdits& edits, bool mayTryAgain, FileResult& result) const {
    if (std::string problem = Backup(file.Name()); !problem.empty()) {
        result.Fail(problem);
        return false;
    }
    KeptTimes time(file.Name(), mWriting.mKeepTime);
    const XMPMetaPtr before = mBatch.mVerbose ? CloneXMPMeta(*MetaDataReadAccess(file.Provider())) : nullptr;
    const UndoScope undo;
    const EditReport report = ApplyEdits(file.Provider(), edits.mEdits);
    if (report.IsRefused()) {
        const bool hasTree = *MetaDataReadAccess(file.Provider()) != nullptr;
        result.Fail(hasTree ? WhyRefused(edits, report) + kNothingWritten : WhyNoFirst(file));
        return false;
    }
    if (report.mStatus == kFileStatus_Changed && mayTryAgain) {
        return true;
    }
    if (report.mStatus != kFileStatus_Success) {
        result.Fail(Describe(FileReport{report.mStatus, report.mDetail}));
        return false;
    }
    if (!time.PutBack(file.Name())) {
        result.Note(kTimeNotPutBack);
    }
    mJournal->Record(undo, ChangedOf(edits, report), result, time);
    result.SetOutcome(report.IsChanged() ? Outcome::kWritten : Outcome::kUnchanged);
    std::vector<Change> changes;
    if (mBatch.mVerbose && report.IsChanged()) {
        const XMPMetaPtr after = before ? CloneXMPMeta(before.get()) : CreateXMPMeta();
        ApplyEdits(after.get(), edits.mEdits);  // without what every write changes
        changes = Differences(before.get(), after.get());
    }
    Print(file, ChangedOf(edits, report), changes, result);
    return false;
}

void FileEditor::MakeSidecar(const MediaFile& file, const FileEdits& edits, FileResult& result) const {
    const XMPMetaPtr tree = CreateXMPMeta();
    const EditReport report = ApplyEdits(tree.get(), edits.mEdits);
    if (report.IsRefused()) {
        result.Fail(WhyRefused(edits, report) + kNothingWritten);
        return;
    }
    if (report.IsChanged()) {
        const UndoScope undo;
        FileChange making;
        making.mPath = zephcore::PathFromNative(file.Name());
        making.mKind = kFileChange_Make;
        making.mBytes.push_back({0, 0, SerializeXMPMeta(tree.get())});
        const FileReport made = ChangeFile(making);
        if (made.mStatus != kFileStatus_Success) {
            result.Fail(Describe(made));
            return;
        }
        mJournal->Record(undo, ChangedOf(edits, report), result);
    }
    result.SetOutcome(report.IsChanged() ? Outcome::kWritten : Outcome::kUnchanged);
    Print(file, ChangedOf(edits, report), {}, result);
}

std::string FileEditor::Backup(const std::string& name) const {
    if (mWriting.mBackup.empty()) {
        return {};
    }
    std::error_code error;
    std::filesystem::copy_file(name, name + mWriting.mBackup, std::filesystem::copy_options::skip_existing, error);
    return error ? "the backup cannot be written (" + error.message() + "); nothing was changed" : std::string();
}

void FileEditor::Print(const MediaFile& file, const std::vector<std::string>& changed,
                       const std::vector<Change>& changes, FileResult& result) const {
    const bool isWritten = !mWriting.mDryRun && !changed.empty();
    const std::string sidecar = isWritten ? file.Sidecar() : std::string();
    if (mBatch.mJson) {
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
    result.Print(OneLine(file.Name()) + ": " + word + (sidecar.empty() ? "" : " to its sidecar " + OneLine(sidecar)));
    for (const Change& change : changes) {
        result.Print("  " + OneLine(change.mExpression) + ": " + InWords(change));
    }
}

std::string WhyRefused(const FileEdits& edits, const EditReport& report) {
    const auto refused = std::find_if(report.mOutcomes.begin(), report.mOutcomes.end(),
                                      [](const EditOutcome& one) { return one.mResult == kEditResult_Refused; });
    const auto number = static_cast<std::size_t>(refused - report.mOutcomes.begin());
    return edits.mExpressions[number] + ": " + Shown(refused->mReason);
}

std::vector<std::string> ChangedOf(const FileEdits& edits, const EditReport& report) {
    std::vector<std::string> changed;
    std::unordered_set<std::string> seen;
    for (std::size_t i = 0; i < edits.mEdits.size() && report.IsChanged(); ++i) {
        if (report.mOutcomes[i].mResult == kEditResult_Changed && seen.insert(edits.mExpressions[i]).second) {
            changed.push_back(edits.mExpressions[i]);
        }
    }
    return changed;
}

std::string WhyNoFirst(const MediaFile& file) {
    const std::string reason = file.WhyWithoutXMP();
    return reason.empty() ? "has no XMP, and its format cannot be given any"
                          : "cannot be given any XMP (" + reason + ")";
}

}  // namespace zephmeta
