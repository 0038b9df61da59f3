#include <algorithm>
#include <iostream>
#include <map>
#include <unordered_set>

#include "arguments.h"
#include "commands.h"
#include "console.h"
#include "json.h"
#include "media_file.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using zephmetadata::Path;
using zephmetadata::XMPMetaHandle;

/// One thing to do to every file.
struct Edit {
    enum class Kind { kSet, kAdd, kDelete };

    Kind mKind = Kind::kSet;
    std::string mExpression;
    std::string mValue;
    Target mTarget;
};

/// Why an edit cannot be done to any file; empty when it can.
std::string Refusal(const Edit& edit) {
    const Path& path = edit.mTarget.mPath;
    if (!edit.mTarget.mProblem.empty()) {
        return edit.mTarget.mProblem;
    }
    if (!zephmetadata::PathEntryDefinition(path)) {
        return "no definition describes it";
    }
    if (edit.mKind == Edit::Kind::kDelete) {
        return {};
    }
    if (edit.mValue.empty()) {
        // Not every format keeps an empty value, and an empty one says nothing.
        return edit.mKind == Edit::Kind::kAdd ? "an item cannot be empty"
                                              : "a value cannot be empty; --delete removes it";
    }
    if (edit.mKind == Edit::Kind::kAdd && !zephmetadata::IsPathAnArray(path, true)) {
        return "not a list; set it with PATH=VALUE";
    }
    if (edit.mKind == Edit::Kind::kAdd) {
        return Shown(zephmetadata::WhyNotAllowed(zephmetadata::CreatePathFromArrayItem(path, -1), edit.mValue));
    }
    return Shown(zephmetadata::WhyNotAllowed(path, edit.mValue));
}

/// Appends items to the lists of one tree. The texts of a list are read once, however many are appended.
class Appender {
public:
    explicit Appender(XMPMetaHandle tree) : mTree(tree) {}

    bool Add(const Edit& edit) {
        const Path& path = edit.mTarget.mPath;
        if (IsThereAlready(edit)) {
            return false;  // an unordered list gains nothing from holding an item twice
        }
        const int count = zephmetadata::CountArrayItems(mTree, path);
        return zephmetadata::SetValue(mTree, zephmetadata::CreatePathFromArrayItem(path, count + 1), edit.mValue);
    }

private:
    bool IsThereAlready(const Edit& edit) {
        const Path& path = edit.mTarget.mPath;
        if (zephmetadata::PrimitiveTypeOfPath(path) != zephmetadata::kPrimitiveType_Bag) {
            return false;
        }
        auto texts = mTexts.find(edit.mExpression);
        if (texts == mTexts.end()) {
            const std::vector<std::string> items = zephmetadata::GetItems(mTree, path);
            texts = mTexts.try_emplace(edit.mExpression, items.begin(), items.end()).first;
        }
        return !texts->second.insert(edit.mValue).second;
    }

    XMPMetaHandle mTree;
    std::map<std::string, std::unordered_set<std::string>> mTexts;  // of the bags by their expressions
};

bool Delete(XMPMetaHandle tree, const Edit& edit) {
    if (!edit.mTarget.mLanguage.empty()) {
        return zephmetadata::SetLanguage(tree, edit.mTarget.mPath, edit.mTarget.mLanguage, {});
    }
    if (!zephmetadata::HasValue(tree, edit.mTarget.mPath)) {
        return false;
    }
    if (const auto item = SplitItem(edit.mExpression)) {
        return zephmetadata::DeleteArrayItem(tree, item->mArray, item->mNumber - 1);
    }
    return zephmetadata::DeleteValue(tree, edit.mTarget.mPath);
}

/// Does the edit to a tree; whether it changed anything.
bool Apply(XMPMetaHandle tree, const Edit& edit, Appender& appender) {
    switch (edit.mKind) {
        case Edit::Kind::kAdd:
            return appender.Add(edit);
        case Edit::Kind::kDelete:
            return Delete(tree, edit);
        default:
            return edit.mTarget.mLanguage.empty()
                       ? zephmetadata::SetValue(tree, edit.mTarget.mPath, edit.mValue)
                       : zephmetadata::SetLanguage(tree, edit.mTarget.mPath, edit.mTarget.mLanguage, edit.mValue);
    }
}

/// How many writes the library has refused so far.
std::size_t CountWritingErrors() {
    const auto infos = zephmetadata::GetErrorInfos();
    return static_cast<std::size_t>(std::count_if(infos.begin(), infos.end(), [](const auto& info) {
        return info.kind == zephmetadata::ErrorKind::ErrorWritingXMP;
    }));
}

class SetCommand {
public:
    SetCommand(std::vector<Edit> edits, bool json) : mEdits(std::move(edits)), mJson(json) {}

    int Run(const std::vector<std::string>& files) {
        mProblems.ReportCollected({});
        Progress progress(files.size(), true);
        for (const std::string& file : files) {
            progress.Next(file);
            EditFile(file);
            mProblems.ReportCollected(file);
        }
        return mProblems.ExitStatus();
    }

private:
    void EditFile(const std::string& name) {
        MediaFile file(name);
        if (const std::string problem = file.ReadProblem(); !problem.empty()) {
            mProblems.Report(name, problem);
            return;
        }
        if (IsRefused(name)) {
            return;
        }
        if (!file.HasXMP() && HasValuesToSet() && !file.Start()) {
            mProblems.Report(name, "has no XMP, and its format cannot be given any");
            return;
        }
        std::vector<std::string> changed;
        {
            zephmetadata::MetaDataUpdateAccess access(file.Provider());
            if (const std::string refused = ApplyAll(*access, changed); !refused.empty()) {
                mProblems.PassOverCollected();
                mProblems.Report(name, refused + ": cannot be changed like this; nothing was written");
                return;  // without a recorded change nothing is written
            }
            for (const std::string& expression : changed) {
                access.AddChange(ResolveTarget(expression).mPath);
            }
        }
        if (const std::string problem = file.WriteProblem(); !problem.empty()) {
            mProblems.Report(name, problem);
            return;
        }
        Print(name, changed);
    }

    bool IsRefused(const std::string& name) {
        bool refused = false;
        for (const Edit& edit : mEdits) {
            if (const std::string reason = Refusal(edit); !reason.empty()) {
                mProblems.Report(name, edit.mExpression + ": " + reason);
                refused = true;
            }
        }
        return refused;
    }

    bool HasValuesToSet() const {
        return std::any_of(mEdits.begin(), mEdits.end(),
                           [](const Edit& edit) { return edit.mKind != Edit::Kind::kDelete; });
    }

    /// Does the edits up to the first that the library refuses, whose expression it returns; empty when it did all.
    /// @p changed gets each expression once.
    std::string ApplyAll(XMPMetaHandle tree, std::vector<std::string>& changed) const {
        Appender appender(tree);
        std::unordered_set<std::string> seen;
        const std::size_t errorsBefore = CountWritingErrors();
        for (const Edit& edit : mEdits) {
            if (tree != nullptr && Apply(tree, edit, appender) && seen.insert(edit.mExpression).second) {
                changed.push_back(edit.mExpression);
            }
            if (CountWritingErrors() > errorsBefore) {
                return edit.mExpression;
            }
        }
        return {};
    }

    void Print(const std::string& name, const std::vector<std::string>& changed) const {
        if (mJson) {
            const Json json = {{"file", name}, {"written", !changed.empty()}, {"changed", changed}};
            std::cout << JsonLine(json) << '\n';
        } else {
            std::cout << OneLine(name) << ": " << (changed.empty() ? "unchanged" : "written") << '\n';
        }
    }

    std::vector<Edit> mEdits;
    bool mJson;
    Problems mProblems;
};

Edit MakeEdit(Edit::Kind kind, const std::string& expression, const std::string& value) {
    return {kind, expression, value, ResolveTarget(expression)};
}

}  // namespace

int Set(const SetRequest& request, bool json) {
    std::vector<std::string> files;
    std::vector<Edit> edits;
    for (const std::string& argument : request.mArguments) {
        if (const auto assignment = ParseAssignment(argument)) {
            edits.push_back(MakeEdit(Edit::Kind::kSet, assignment->mExpression, assignment->mValue));
        } else {
            files.push_back(argument);
        }
    }
    for (const std::string& argument : request.mAdditions) {
        const auto assignment = ParseAssignment(argument);
        if (!assignment) {
            std::cerr << "zephmeta: --add wants PATH=VALUE, not \"" << OneLine(argument) << "\"\n";
            return 2;
        }
        edits.push_back(MakeEdit(Edit::Kind::kAdd, assignment->mExpression, assignment->mValue));
    }
    for (const std::string& expression : request.mDeletions) {
        edits.push_back(MakeEdit(Edit::Kind::kDelete, expression, {}));
    }
    if (files.empty() || edits.empty()) {
        std::cerr << "zephmeta: " << (files.empty() ? "no file to change" : "nothing to set")
                  << "; see \"zephmeta set --help\"\n";
        return 2;
    }
    return SetCommand(std::move(edits), json).Run(files);
}

}  // namespace zephmeta
