#include <iostream>
#include <map>

#include "commands.h"
#include "console.h"
#include "json.h"
#include "listing.h"
#include "media_file.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

struct Change {
    std::string mExpression;
    std::string mBefore;
    std::string mAfter;
};

std::map<std::string, std::string> TextsByPath(XMPMetaHandle tree) {
    std::map<std::string, std::string> texts;
    if (tree != nullptr) {
        for (const ListedValue& value : ListValues(tree)) {
            std::string& text = texts[value.mExpression];
            text = value.mItems.empty() ? value.mRaw : value.mDisplay;
            for (const auto& [language, languageText] : value.mLanguages) {
                if (language != "x-default") {
                    text.append(" [").append(language).append("] ").append(languageText);
                }
            }
        }
    }
    return texts;
}

std::vector<Change> Differences(XMPMetaHandle before, XMPMetaHandle after) {
    std::map<std::string, Change> changes;
    for (const auto& [expression, text] : TextsByPath(before)) {
        changes[expression] = {expression, text, {}};
    }
    for (const auto& [expression, text] : TextsByPath(after)) {
        Change& change = changes[expression];
        change.mExpression = expression;
        change.mAfter = text;
    }
    std::vector<Change> differing;
    for (auto& [expression, change] : changes) {
        if (change.mBefore != change.mAfter) {
            differing.push_back(std::move(change));
        }
    }
    return differing;
}

/// The top-level property that an expression lies in.
std::string Property(const std::string& expression) {
    return expression.substr(0, expression.find_first_of("[/"));
}

XMPMetaPtr Copy(XMPMetaHandle tree) {
    return tree != nullptr ? ParseXMPMeta(SerializeXMPMeta(tree)) : CreateXMPMeta();
}

class ApplyCommand {
public:
    ApplyCommand(XMPMetaPtr templateTree, const ApplyRequest& request, bool json)
        : mTemplate(std::move(templateTree)), mRequest(request), mJson(json) {}

    int Run() {
        Progress progress(mRequest.mFiles.size(), true);
        for (const std::string& file : mRequest.mFiles) {
            progress.Next(file);
            ApplyTo(file);
            mProblems.ReportCollected(file);
        }
        return mProblems.ExitStatus();
    }

private:
    void ApplyTo(const std::string& name) {
        MediaFile file(name);
        if (const std::string problem = file.ReadProblem(); !problem.empty()) {
            mProblems.Report(name, problem);
            return;
        }
        const std::vector<Change> changes = Planned(file);
        if (!mRequest.mDryRun && !changes.empty() && !Write(file, changes)) {
            return;
        }
        Print(name, changes);
    }

    /// What would change, found on a copy.
    std::vector<Change> Planned(const MediaFile& file) const {
        const MetaDataReadAccess access(file.Provider());
        const XMPMetaPtr copy = Copy(*access);
        ApplyTemplate(copy.get(), mTemplate.get(), mRequest.mMode);
        return Differences(*access, copy.get());
    }

    bool Write(MediaFile& file, const std::vector<Change>& changes) {
        if (!file.HasXMP() && !file.Start()) {
            mProblems.Report(file.Name(), "has no XMP, and its format cannot be given any");
            return false;
        }
        {
            MetaDataUpdateAccess access(file.Provider());
            if (!ApplyTemplate(*access, mTemplate.get(), mRequest.mMode)) {
                mProblems.Report(file.Name(), "the template cannot be applied; nothing was written");
                return false;
            }
            std::string last;
            for (const Change& change : changes) {
                if (const std::string property = Property(change.mExpression); property != last) {
                    access.AddChange(PathForExpression(property));
                    last = property;
                }
            }
        }
        const std::string problem = file.WriteProblem();
        if (!problem.empty()) {
            mProblems.Report(file.Name(), problem);
        }
        return problem.empty();
    }

    void Print(const std::string& name, const std::vector<Change>& changes) const {
        const bool written = !mRequest.mDryRun && !changes.empty();
        if (mJson) {
            Json list = Json::array();
            for (const Change& change : changes) {
                list.push_back({{"path", change.mExpression}, {"before", change.mBefore}, {"after", change.mAfter}});
            }
            std::cout << JsonLine({{"file", name}, {"written", written}, {"changes", list}}) << '\n';
            return;
        }
        const char* const result = changes.empty() ? "unchanged" : written ? "written" : "would change";
        std::cout << OneLine(name) << ": " << result << '\n';
        for (const Change& change : mRequest.mDryRun ? changes : std::vector<Change>()) {
            std::cout << "  " << OneLine(change.mExpression) << ": "
                      << (change.mBefore.empty() ? "added \"" + OneLine(change.mAfter) + "\""
                          : change.mAfter.empty()
                              ? "removed \"" + OneLine(change.mBefore) + "\""
                              : "\"" + OneLine(change.mBefore) + "\" becomes \"" + OneLine(change.mAfter) + "\"")
                      << '\n';
        }
    }

    XMPMetaPtr mTemplate;
    const ApplyRequest& mRequest;
    bool mJson;
    Problems mProblems;
};

}  // namespace

int Apply(const ApplyRequest& request, bool json) {
    Problems problems;
    problems.ReportCollected({});
    const MediaFile source(request.mTemplate);
    const MetaDataReadAccess access(source.Provider());
    if (*access == nullptr) {
        const std::string problem = source.ReadProblem();
        problems.Report(request.mTemplate, problem.empty() ? "has no XMP to take as a template" : problem);
        return problems.ExitStatus();
    }
    return ApplyCommand(Copy(*access), request, json).Run();
}

}  // namespace zephmeta
