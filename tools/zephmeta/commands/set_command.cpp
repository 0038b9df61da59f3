#include <algorithm>

#include "batch/batch.h"
#include "commands/commands.h"
#include "edits/edit_arguments.h"
#include "edits/together_editor.h"
#include "listing.h"
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
        const std::string property = PropertyOf(node.mPath);
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

/// The edits that were asked for and the copies, for a file that holds a tree.
FileEdits EditsOf(const std::vector<RequestedEdit>& requested, const FileEdits& copies, XMPMetaHandle tree) {
    FileEdits edits = EditsFor(requested, tree);
    for (std::size_t i = 0; i < copies.mEdits.size(); ++i) {
        edits.Add(copies.mEdits[i], copies.mExpressions[i]);
    }
    return edits;
}

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
    const FileEditor::EditSource editsOf = [&](XMPMetaHandle tree) { return EditsOf(reading.mEdits, copies, tree); };
    if (request.mTogether) {
        auto files = OpenTogether(request.mBatch, problems);
        return files ? TogetherEditor(request.mWriting, request.mBatch, editsOf).Edit(*std::move(files), problems) : 2;
    }
    const FileEditor editor(request.mWriting, request.mBatch);
    return Batch(request.mBatch, problems).Run([&](MediaFile& file, FileResult& result) {
        editor.Edit(file, editsOf, result);
    });
}

}  // namespace zephmeta
