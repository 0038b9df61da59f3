#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>

#include "arguments.h"
#include "commands.h"
#include "console.h"
#include "json.h"
#include "listing.h"
#include "media_file.h"
#include "panel_output.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

enum class Found { kNothing, kValue, kMixed };

/// Language tags compare without letter case (RFC 4647).
bool SameTag(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char l, unsigned char r) { return std::tolower(l) == std::tolower(r); });
}

bool ReadTarget(zephmetadata::XMPMetaHandle tree, const Target& target, bool raw, std::string& text) {
    if (!target.mLanguage.empty()) {
        const auto languages = zephmetadata::GetLanguages(tree, target.mPath);
        const auto found = std::find_if(languages.begin(), languages.end(), [&](const auto& language) {
            return SameTag(language.first, target.mLanguage);
        });
        text = found == languages.end() ? std::string() : found->second;
        return found != languages.end();
    }
    return raw ? RawText(tree, target.mPath, text) : DisplayText(tree, target.mPath, text);
}

Found Find(zephmetadata::XMPMetaHandle tree, const Target& target, bool raw, std::string& text) {
    if (!target.mProblem.empty()) {
        return Found::kNothing;
    }
    if (zephmetadata::IsMixed(tree, target.mPath)) {
        return Found::kMixed;
    }
    return ReadTarget(tree, target, raw, text) ? Found::kValue : Found::kNothing;
}

/// The files come first. What follows them is a path unless it can only be a file.
struct Question {
    std::vector<std::string> mFiles;
    std::vector<std::string> mPaths;
};

Question Split(const std::vector<std::string>& arguments) {
    Question question;
    for (const std::string& argument : arguments) {
        std::error_code isNoFile;
        const bool isFile =
            question.mFiles.empty() || (question.mPaths.empty() && !ResolveTarget(argument).mProblem.empty() &&
                                        std::filesystem::exists(argument, isNoFile));
        (isFile ? question.mFiles : question.mPaths).push_back(argument);
    }
    return question;
}

}  // namespace

int Get(const std::vector<std::string>& arguments, bool raw, bool json) {
    const Question question = Split(arguments);
    if (question.mPaths.empty()) {
        std::cerr << "zephmeta: no path to read; see \"zephmeta get --help\"\n";
        return 2;
    }
    Problems problems;
    problems.ReportCollected({});
    const std::vector<MediaFile> files = OpenAll(question.mFiles, problems);
    if (files.empty()) {
        return problems.ExitStatus();
    }
    // Several files have no name in common that a problem could begin with.
    const std::string name = files.size() == 1 ? files.front().Name() : std::string();
    const zephmetadata::sp<zephmetadata::MetaDataProvider> provider = AsOne(files);
    const zephmetadata::MetaDataReadAccess access(provider);
    Json values = Json::object();
    for (const std::string& path : question.mPaths) {
        const Target target = ResolveTarget(path);
        std::string text;
        const Found found = Find(*access, target, raw, text);
        if (json) {
            values[path] = found == Found::kValue   ? Json(text)
                           : found == Found::kMixed ? Json({{"state", "mixed"}})
                                                    : Json(nullptr);
        } else {
            std::cout << (found == Found::kMixed ? "(" + Localized(kMixed) + ")" : Printable(text)) << '\n';
        }
        problems.ReportCollected(name);
        if (found == Found::kNothing) {
            problems.Report(name, path + ": " + (target.mProblem.empty() ? "no value" : target.mProblem));
        }
    }
    if (json) {
        std::cout << JsonLine(values) << '\n';
    }
    return problems.ExitStatus();
}

}  // namespace zephmeta
