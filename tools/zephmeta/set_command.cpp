#include <algorithm>
#include <iostream>
#include <map>
#include <optional>
#include <unordered_set>

#include "arguments.h"
#include "commands.h"
#include "console.h"
#include "json.h"
#include "media_file.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

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

/// Whether the edit is about one item of a list: by its number, or by a name that stands for one, as tiff:Artist does.
bool LeadsToItem(const Edit& edit) {
    if (edit.mKind == Edit::Kind::kAdd || !edit.mTarget.mLanguage.empty()) {
        return false;
    }
    const Path& path = edit.mTarget.mPath;
    if (path.mPathDescription.find('[') != std::string::npos) {
        return true;
    }
    const auto kind = zephmetadata::PrimitiveTypeOfPath(path);
    const zephmetadata::XMPMetaPtr scratch = zephmetadata::CreateXMPMeta();
    if ((kind && !zephmetadata::PrimitiveTypeIsSimple(*kind)) ||
        !zephmetadata::SetValue(scratch.get(), path, edit.mKind == Edit::Kind::kSet ? edit.mValue : "1")) {
        return false;
    }
    const std::vector<zephmetadata::XMPNode> nodes = zephmetadata::XMPNodes(scratch.get());
    return std::any_of(nodes.begin(), nodes.end(),
                       [](const zephmetadata::XMPNode& node) { return node.mPath.ends_with(']'); });
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

/// A file that the edits change, with what they change in it.
struct ChangedFile {
    MediaFile mFile;
    std::vector<std::string> mChanged;
};

class SetCommand {
public:
    SetCommand(std::vector<Edit> edits, bool json) : mEdits(std::move(edits)), mJson(json) {}

    int Run(std::vector<std::string> names) {
        mProblems.ReportCollected({});
        // An item is meant by its place in the list that was read, everything else can be done to what is there now.
        constexpr int kTries = 20;
        mTriesLeft = std::any_of(mEdits.begin(), mEdits.end(), &LeadsToItem) ? 1 : kTries;
        mProblems.PassOverCollected();
        while (!names.empty()) {
            --mTriesLeft;
            names = Edited(names);
        }
        return mProblems.ExitStatus();
    }

private:
    /// The files that another program changed meanwhile and that are worth another try.
    std::vector<std::string> Edited(const std::vector<std::string>& names) {
        std::vector<ChangedFile> changed;
        for (MediaFile& file : OpenAll(names, mProblems)) {
            if (IsRefused(file.Name(), names.size() > 1)) {
                continue;
            }
            if (!file.HasXMP() && HasValuesToSet() && !file.Start()) {
                const std::string reason = file.WhyWithoutXMP();
                mProblems.Report(file.Name(), reason.empty() ? "has no XMP, and its format cannot be given any"
                                                             : "cannot be given any XMP (" + reason + ")");
                continue;
            }
            if (const auto expressions = Rehearse(file); expressions && expressions->empty()) {
                Print(file.Name(), {}, {});
            } else if (expressions) {
                changed.push_back({std::move(file), *expressions});
            }
        }
        return EditTogether(changed);
    }

    bool IsRefused(const std::string& name, bool amongOthers) {
        bool refused = false;
        for (const Edit& edit : mEdits) {
            std::string reason = Refusal(edit);
            if (reason.empty() && amongOthers && zephmetadata::IsInstanceData(edit.mTarget.mPath)) {
                reason = "tells this file from others; set it in one file alone";
            }
            if (!reason.empty()) {
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

    /// Does the edits to a copy of the file's tree; what they changed, absent when one of them cannot be done.
    std::optional<std::vector<std::string>> Rehearse(const MediaFile& file) {
        const zephmetadata::MetaDataReadAccess access(file.Provider());
        if (*access == nullptr) {
            return std::vector<std::string>();
        }
        const zephmetadata::XMPMetaPtr copy = zephmetadata::ParseXMPMeta(zephmetadata::SerializeXMPMeta(*access));
        std::vector<std::string> changed;
        const std::string refused = ApplyAll(copy.get(), changed);
        mProblems.PassOverCollected();
        if (!refused.empty()) {
            mProblems.Report(file.Name(), refused + ": cannot be changed like this; nothing was written");
            return std::nullopt;
        }
        return changed;
    }

    /// Edits all files as one, so that each is written once. Those that are worth another try come back.
    std::vector<std::string> EditTogether(const std::vector<ChangedFile>& files) {
        std::vector<std::string> again;
        std::vector<MediaFile> media;
        std::transform(files.begin(), files.end(), std::back_inserter(media),
                       [](const ChangedFile& file) { return file.mFile; });
        if (media.empty() || !WriteAll(AsOne(media), media)) {
            return again;
        }
        for (const ChangedFile& file : files) {
            mProblems.ReportCollected(file.mFile.Name());
            if (file.mFile.WasChangedMeanwhile() && mTriesLeft > 0) {
                again.push_back(file.mFile.Name());
            } else if (const std::string problem = file.mFile.WriteProblem(); !problem.empty()) {
                mProblems.Report(file.mFile.Name(), problem);
            } else {
                Print(file.mFile.Name(), file.mChanged, file.mFile.Sidecar());
            }
        }
        return again;
    }

    /// False when an edit makes no sense for these files together, which is reported for each of them.
    bool WriteAll(const zephmetadata::sp<zephmetadata::MetaDataProvider>& provider,
                  const std::vector<MediaFile>& files) {
        zephmetadata::MetaDataUpdateAccess access(provider);
        for (const Edit& edit : mEdits) {
            const Path& path = edit.mTarget.mPath;
            if (LeadsToItem(edit) && zephmetadata::IsMixed(*access, path)) {
                for (const MediaFile& file : files) {
                    mProblems.Report(file.Name(), edit.mExpression +
                                                      ": the files hold different lists; set or delete "
                                                      "the whole, or add to it; nothing was written");
                }
                return false;
            }
        }
        std::vector<std::string> changed;
        const std::string refused = ApplyAll(*access, changed);
        mProblems.PassOverCollected();
        if (!refused.empty()) {
            for (const MediaFile& file : files) {
                mProblems.Report(file.Name(),
                                 refused + ": cannot be changed in these files together; nothing was written");
            }
            return false;
        }
        for (const std::string& expression : changed) {
            access.AddChange(ResolveTarget(expression).mPath);
        }
        return true;
    }

    /// Does the edits up to the first that the library refuses, whose expression it returns; empty when it did all.
    /// @p changed gets each expression once.
    std::string ApplyAll(XMPMetaHandle tree, std::vector<std::string>& changed) const {
        Appender appender(tree);
        std::unordered_set<std::string> seen;
        const std::size_t errorsBefore = CountWritingErrors();
        for (const Edit& edit : mEdits) {
            if (Apply(tree, edit, appender) && seen.insert(edit.mExpression).second) {
                changed.push_back(edit.mExpression);
            }
            if (CountWritingErrors() > errorsBefore) {
                return edit.mExpression;
            }
        }
        return {};
    }

    void Print(const std::string& name, const std::vector<std::string>& changed, const std::string& sidecar) const {
        if (mJson) {
            Json json = {{"file", name}, {"written", !changed.empty()}, {"changed", changed}};
            if (!sidecar.empty()) {
                json["sidecar"] = sidecar;
            }
            std::cout << JsonLine(json) << '\n';
        } else if (!sidecar.empty()) {
            std::cout << OneLine(name) << ": written to its sidecar " << OneLine(sidecar) << '\n';
        } else {
            std::cout << OneLine(name) << ": " << (changed.empty() ? "unchanged" : "written") << '\n';
        }
    }

    std::vector<Edit> mEdits;
    bool mJson;
    int mTriesLeft = 0;
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
