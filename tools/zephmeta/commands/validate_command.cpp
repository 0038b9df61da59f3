#include <algorithm>
#include <atomic>

#include "batch/batch.h"
#include "commands/commands.h"
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

Json ToJson(const std::string& name, const std::vector<ValidationFinding>& findings) {
    Json list = Json::array();
    for (const ValidationFinding& finding : findings) {
        list.push_back({{"path", finding.path},
                        {"severity", SeverityName(finding.severity)},
                        {"rule", ValidationRuleName(finding.rule)},
                        {"message", Shown(finding.message)}});
    }
    Json json = FileObject(name);
    json["findings"] = std::move(list);
    return json;
}

void PrintText(const std::vector<ValidationFinding>& findings, FileResult& result) {
    for (const ValidationFinding& finding : findings) {
        result.Print(OneLine(result.Name()) + ": " + SeverityName(finding.severity) + ": " + OneLine(finding.path) +
                     ": " + OneLine(Shown(finding.message)) + " [" + ValidationRuleName(finding.rule) + "]");
    }
}

}  // namespace

int Validate(const BatchOptions& options, bool native) {
    Problems problems;
    problems.ReportCollected({});
    const ValidationScope scope = native ? kValidationScope_All : kValidationScope_Packet;
    std::atomic<bool> hasErrors = false;
    const int status = Batch(options, problems).Run([&](MediaFile& file, FileResult& result) {
        const MetaDataReadAccess access(file.Provider());
        const std::vector<ValidationFinding> findings = ValidateXMP(*access, scope);
        hasErrors = hasErrors || std::any_of(findings.begin(), findings.end(), [](const ValidationFinding& finding) {
                        return finding.severity == kValidationSeverity_Error;
                    });
        if (options.mJson) {
            result.Print(JsonLine(ToJson(file.Name(), findings)));
        } else {
            PrintText(findings, result);
        }
    });
    return status == 0 && hasErrors ? 1 : status;
}

}  // namespace zephmeta
