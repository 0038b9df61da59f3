#include <iostream>

#include "arguments.h"
#include "commands.h"
#include "console.h"
#include "json.h"
#include "listing.h"
#include "media_file.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

bool ReadTarget(zephmetadata::XMPMetaHandle tree, const Target& target, bool raw, std::string& text) {
    if (!target.mLanguage.empty()) {
        const auto languages = zephmetadata::GetLanguages(tree, target.mPath);
        const auto found = languages.find(target.mLanguage);
        text = found == languages.end() ? std::string() : found->second;
        return found != languages.end();
    }
    return raw ? RawText(tree, target.mPath, text) : DisplayText(tree, target.mPath, text);
}

}  // namespace

int Get(const std::string& file, const std::vector<std::string>& paths, bool raw, bool json) {
    Problems problems;
    problems.ReportCollected({});
    const MediaFile media(file);
    if (const std::string problem = media.ReadProblem(); !problem.empty()) {
        problems.Report(file, problem);
        return problems.ExitStatus();
    }
    const zephmetadata::MetaDataReadAccess access(media.Provider());
    Json values = Json::object();
    for (const std::string& path : paths) {
        const Target target = ResolveTarget(path);
        std::string text;
        const bool found = target.mProblem.empty() && ReadTarget(*access, target, raw, text);
        if (json) {
            values[path] = found ? Json(text) : Json(nullptr);
        } else {
            std::cout << Printable(text) << '\n';
        }
        problems.ReportCollected(file);
        if (!found) {
            problems.Report(file, path + ": " + (target.mProblem.empty() ? "no value" : target.mProblem));
        }
    }
    if (json) {
        std::cout << JsonLine(values) << '\n';
    }
    return problems.ExitStatus();
}

}  // namespace zephmeta
