#include "batch/batch.h"
#include "commands/commands.h"
#include "console.h"
#include "edits/changes.h"
#include "json.h"
#include "listing.h"
#include "media_file.h"
#include "undo/journal.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

XMPMetaPtr Copy(XMPMetaHandle tree) {
    return tree != nullptr ? CloneXMPMeta(tree) : CreateXMPMeta();
}

class ApplyCommand {
public:
    ApplyCommand(XMPMetaPtr templateTree, const ApplyRequest& request)
        : mTemplate(std::move(templateTree)), mRequest(request) {}

    void ApplyTo(MediaFile& file, FileResult& result) const {
        const std::vector<Change> changes = Planned(file);
        if (changes.empty()) {
            result.SetOutcome(Outcome::kUnchanged);
        } else if (mRequest.mDryRun) {
            result.SetOutcome(Outcome::kWouldChange);
        } else if (Write(file, changes, result)) {
            result.SetOutcome(Outcome::kWritten);
        } else {
            return;
        }
        Print(changes, result);
    }

private:
    /// What would change, found on a copy.
    std::vector<Change> Planned(const MediaFile& file) const {
        const MetaDataReadAccess access(file.Provider());
        const XMPMetaPtr copy = Copy(*access);
        ApplyTemplate(copy.get(), mTemplate.get(), mRequest.mMode);
        return Differences(*access, copy.get());
    }

    bool Write(MediaFile& file, const std::vector<Change>& changes, FileResult& result) const {
        if (!file.HasXMP() && !file.Start()) {
            result.Fail("has no XMP, and its format cannot be given any");
            return false;
        }
        const UndoScope undo;
        std::vector<std::string> changed;
        {
            MetaDataUpdateAccess access(file.Provider());
            if (!ApplyTemplate(*access, mTemplate.get(), mRequest.mMode)) {
                result.Fail("the template cannot be applied; nothing was written");
                return false;
            }
            for (const Change& change : changes) {
                if (const std::string property = PropertyOf(change.mExpression);
                    changed.empty() || property != changed.back()) {
                    access.AddChange(PathForExpression(property));
                    changed.push_back(property);
                }
            }
        }
        const std::string problem = file.WriteProblem();
        if (!problem.empty()) {
            result.Fail(problem);
            return false;
        }
        mJournal->Record(undo, changed, result);
        return true;
    }

    void Print(const std::vector<Change>& changes, FileResult& result) const {
        const bool written = !mRequest.mDryRun && !changes.empty();
        if (mRequest.mBatch.mJson) {
            Json list = Json::array();
            for (const Change& change : changes) {
                list.push_back({{"path", change.mExpression}, {"before", change.mBefore}, {"after", change.mAfter}});
            }
            Json json = FileObject(result.Name());
            json["written"] = written;
            json["changes"] = std::move(list);
            result.Print(JsonLine(json));
            return;
        }
        const char* const word = changes.empty() ? "unchanged" : written ? "written" : "would change";
        result.Print(OneLine(result.Name()) + ": " + word);
        for (const Change& change : mRequest.mDryRun || mRequest.mBatch.mVerbose ? changes : std::vector<Change>()) {
            result.Print("  " + OneLine(change.mExpression) + ": " + InWords(change));
        }
    }

    XMPMetaPtr mTemplate;
    const ApplyRequest& mRequest;
    std::unique_ptr<Journal> mJournal = std::make_unique<Journal>();
};

}  // namespace

int Apply(const ApplyRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    const MediaFile source(request.mTemplate);
    const MetaDataReadAccess access(source.Provider());
    if (*access == nullptr) {
        const std::string problem = source.ReadProblem();
        problems.Report(request.mTemplate, problem.empty() ? "has no XMP to take as a template" : problem);
        return problems.ExitStatus();
    }
    const ApplyCommand command(Copy(*access), request);
    return Batch(request.mBatch, problems).Run([&](MediaFile& file, FileResult& result) {
        command.ApplyTo(file, result);
    });
}

}  // namespace zephmeta
