#include <algorithm>

#include "batch/batch.h"
#include "commands/commands.h"
#include "edits/edit_arguments.h"
#include "edits/file_editor.h"
#include "media_file.h"
#include "suggestions.h"
#include "zephmetadata/edits.h"
#include "zephmetadata/file_changes.h"
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

class SetCommand {
public:
    SetCommand(const SetRequest& request, std::vector<RequestedEdit> edits, FileEdits copies)
        : mEditor(request.mWriting, request.mBatch), mEdits(std::move(edits)), mCopies(std::move(copies)) {}

    void EditFile(MediaFile& file, FileResult& result) const {
        mEditor.Edit(
            file, [this](XMPMetaHandle tree) { return EditsOf(tree); }, result);
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
        const UndoScope undo;
        EditReport report;
        if (problem.empty()) {
            report = ApplyEdits(provider, edits.mEdits);
            problem = report.IsRefused() ? zephmeta::WhyRefused(edits, report) : std::string();
        }
        int status = problems.ExitStatus();
        for (const MediaFile& file : files) {
            FileResult result(file.Name());
            if (&file == &files.front()) {
                mEditor.Kept().Record(undo, ChangedOf(edits, report), result);
            }
            const std::string failure = problem.empty() ? file.WriteProblem() : problem + kNothingWritten;
            if (failure.empty()) {
                mEditor.Print(file, ChangedOf(edits, report), {}, result);
            } else {
                result.Fail(failure);
            }
            status = result.Tell(status);
        }
        return status;
    }

private:
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

    FileEditor mEditor;
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
