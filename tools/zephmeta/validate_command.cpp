#include <iostream>

#include "commands.h"
#include "console.h"
#include "json.h"
#include "media_file.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

const char* SeverityName(ValidationSeverity severity) {
    return severity == kValidationSeverity_Error ? "error" : "warning";
}

Json ToJson(const std::string& file, const std::vector<ValidationFinding>& findings) {
    Json list = Json::array();
    for (const ValidationFinding& finding : findings) {
        list.push_back({{"path", finding.path},
                        {"severity", SeverityName(finding.severity)},
                        {"rule", ValidationRuleName(finding.rule)},
                        {"message", Shown(finding.message)}});
    }
    return {{"file", file}, {"findings", std::move(list)}};
}

void PrintText(const std::string& file, const std::vector<ValidationFinding>& findings) {
    for (const ValidationFinding& finding : findings) {
        std::cout << OneLine(file) << ": " << SeverityName(finding.severity) << ": " << OneLine(finding.path) << ": "
                  << OneLine(Shown(finding.message)) << " [" << ValidationRuleName(finding.rule) << "]\n";
    }
}

}  // namespace

int Validate(const std::vector<std::string>& files, bool json) {
    Problems problems;
    problems.ReportCollected({});
    Progress progress(files.size(), true);
    bool hasErrors = false;
    for (const std::string& file : files) {
        progress.Next(file);
        const MediaFile media(file);
        if (const std::string problem = media.ReadProblem(); !problem.empty()) {
            problems.Report(file, problem);
            continue;
        }
        const MetaDataReadAccess access(media.Provider());
        const std::vector<ValidationFinding> findings = ValidateXMP(*access);
        for (const ValidationFinding& finding : findings) {
            hasErrors = hasErrors || finding.severity == kValidationSeverity_Error;
        }
        if (json) {
            std::cout << JsonLine(ToJson(file, findings)) << '\n';
        } else {
            PrintText(file, findings);
        }
        problems.ReportCollected(file);
    }
    return hasErrors ? 1 : problems.ExitStatus();
}

}  // namespace zephmeta
