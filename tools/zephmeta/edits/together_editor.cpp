#include "edits/together_editor.h"

#include <algorithm>
#include <iterator>

#include "edits/kept_time.h"
#include "providers.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// What edits would do to each of the files, found on copies.
struct Rehearsal {
    EditReport mReport;
    std::vector<std::vector<Change>> mChanges;  // of each file
};

Rehearsal Rehearse(const std::vector<MediaFile>& files, const FileEdits& edits) {
    std::vector<sp<MetaDataProvider>> copies;
    for (const MediaFile& file : files) {
        const MetaDataReadAccess access(file.Provider());
        copies.push_back(InMemory(*access == nullptr ? CreateXMPMeta() : CloneXMPMeta(*access)));
    }
    Rehearsal rehearsal{ApplyEdits(Together(copies), edits.mEdits), {}};
    for (std::size_t i = 0; i < files.size(); ++i) {
        const MetaDataReadAccess before(files[i].Provider());
        rehearsal.mChanges.push_back(Differences(*before, *MetaDataReadAccess(copies[i])));
    }
    return rehearsal;
}

/// Why edits make no sense for the files as one; empty when they do.
std::string WhyNotTogether(const sp<MetaDataProvider>& provider, const FileEdits& edits) {
    const MetaDataReadAccess access(provider);
    for (std::size_t i = 0; i < edits.mEdits.size(); ++i) {
        const Path& path = edits.mEdits[i].mPath;
        if (IsInstanceData(path)) {
            return edits.mExpressions[i] + ": tells one file from others; set it in each by itself";
        }
        if (path.mPathDescription.find('[') != std::string::npos && IsMixed(*access, path)) {
            return edits.mExpressions[i] + ": the files hold different lists; set or delete the whole, or add to it";
        }
    }
    return {};
}

/// Why the edits cannot be carried out in any of the files; empty when they can.
std::string WhyNot(const sp<MetaDataProvider>& provider, const FileEdits& edits, const EditReport& rehearsed) {
    std::string problem = edits.mProblem.empty() ? WhyNotTogether(provider, edits) : edits.mProblem;
    if (problem.empty() && rehearsed.IsRefused()) {
        problem = zephmeta::WhyRefused(edits, rehearsed);
    }
    return problem.empty() ? problem : problem + kNothingWritten;
}

std::string WhyNotWritten(const MediaFile& file, const EditReport& report) {
    const UTF16String path = zephcore::PathFromNative(file.Name());
    const auto failure = std::find_if(report.mFailures.begin(), report.mFailures.end(),
                                      [&](const WriteFailure& one) { return one.mPath == path; });
    return failure == report.mFailures.end() ? file.WriteProblem()
                                             : Describe(FileReport{failure->mStatus, failure->mDetail});
}

}  // namespace

int TogetherEditor::Edit(std::vector<MediaFile> files, Problems& problems) const {
    std::erase_if(files, [&](MediaFile& file) { return !CanStart(file, problems); });
    if (files.empty()) {
        return problems.ExitStatus();
    }
    const sp<MetaDataProvider> provider = AsOne(files);
    const FileEdits edits = mEditsOf(*MetaDataReadAccess(provider));
    const Rehearsal rehearsal = Rehearse(files, edits);
    std::string problem = WhyNot(provider, edits, rehearsal.mReport);
    if (problem.empty() && !mWriting.mDryRun) {
        problem = Backup(files);
    }
    std::vector<FileResult> results;
    std::transform(files.begin(), files.end(), std::back_inserter(results),
                   [](const MediaFile& file) { return FileResult(file.Name()); });
    const bool isToWrite = problem.empty() && !mWriting.mDryRun;
    const EditReport report = isToWrite ? Write(files, provider, edits, results) : rehearsal.mReport;
    int status = problems.ExitStatus();
    for (std::size_t i = 0; i < files.size(); ++i) {
        FileResult& result = results[i];
        const std::string failure = problem.empty() ? WhyNotWritten(files[i], report) : problem;
        if (!failure.empty()) {
            result.Fail(failure);
        } else if (!mBatch.mQuiet) {
            const bool areShown = mWriting.mDryRun || mBatch.mVerbose;
            mEditor.Print(files[i], ChangedOf(edits, report), areShown ? rehearsal.mChanges[i] : std::vector<Change>(),
                          result);
        }
        status = result.Tell(status);
    }
    return status;
}

/// Gives a file without XMP its first where something is to be set.
bool TogetherEditor::CanStart(MediaFile& file, Problems& problems) const {
    const XMPMetaPtr empty = CreateXMPMeta();
    const bool isNeeded = !file.HasXMP() && ApplyEdits(empty.get(), mEditsOf(empty.get()).mEdits).IsChanged();
    if (isNeeded && !file.Start()) {
        problems.Report(file.Name(), WhyNoFirst(file));
        return false;
    }
    return true;
}

/// Why a file cannot be kept as it is; then none is to be changed.
std::string TogetherEditor::Backup(const std::vector<MediaFile>& files) const {
    for (const MediaFile& file : files) {
        if (const std::string problem = mEditor.Backup(file.Name()); !problem.empty()) {
            return file.Name() + ": " + problem;
        }
    }
    return {};
}

EditReport TogetherEditor::Write(const std::vector<MediaFile>& files, const sp<MetaDataProvider>& provider,
                                 const FileEdits& edits, std::vector<FileResult>& results) const {
    KeptTimes times;
    for (const MediaFile& file : files) {
        times.Add(file.Name(), mWriting.mKeepTime);
    }
    const UndoScope undo;
    EditReport report = ApplyEdits(provider, edits.mEdits);
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (WhyNotWritten(files[i], report).empty() && !times.PutBack(files[i].Name())) {
            results[i].Note(kTimeNotPutBack);
        }
    }
    mEditor.Kept().Record(undo, ChangedOf(edits, report), results.front(), times);
    return report;
}

}  // namespace zephmeta
