#include "arguments.h"

#include <regex>

#include "listing.h"
#include "text.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

const std::regex& AssignmentPattern() {
    // The path is everything before the first "=" outside brackets: a language in brackets has an "=" of its own.
    static const std::regex pattern(R"(([A-Za-z_][\w.-]*:(?:\[[^\]]*\]|[^=\[])+)=([^]*))");
    return pattern;
}

/// Language tags compare without letter case (RFC 4647).
bool SameTag(std::string_view left, std::string_view right) {
    return Lower(left) == Lower(right);
}

}  // namespace

std::optional<Assignment> ParseAssignment(const std::string& argument) {
    // Long texts are no reason to run a backtracking matcher over all of them: the value is split off first.
    std::size_t depth = 0;
    for (std::size_t i = 0; i < argument.size(); ++i) {
        depth += argument[i] == '[' ? 1U : 0U;
        depth -= argument[i] == ']' && depth > 0 ? 1U : 0U;
        if (argument[i] == '=' && depth == 0) {
            const std::string path = argument.substr(0, i);
            if (!std::regex_match(path + "=", AssignmentPattern())) {
                return std::nullopt;
            }
            return Assignment{path, argument.substr(i + 1)};
        }
    }
    return std::nullopt;
}

Target ResolveTarget(const std::string& expression) {
    Target target;
    static const std::regex language(R"re((.*)\[\?xml:lang="([A-Za-z0-9-]+)"\])re");
    std::smatch match;
    std::string path = expression;
    if (std::regex_match(expression, match, language)) {
        path = match[1];
        target.mLanguage = match[2];
    }
    target.mPath = zephmetadata::PathForExpression(path);
    if (!(target.mPath == zephmetadata::Path())) {
        return target;
    }
    const std::string prefix = path.substr(0, path.find(':'));
    const bool isKnown = prefix.size() < path.size() && !zephmetadata::NamespaceForPrefix(prefix).empty();
    target.mProblem =
        isKnown || prefix.size() == path.size() ? "not a metadata path" : "unknown prefix \"" + prefix + "\"";
    return target;
}

std::vector<std::string> TextsAt(zephmetadata::XMPMetaHandle tree, const Target& target) {
    std::vector<std::string> texts;
    if (tree == nullptr || !zephmetadata::HasValue(tree, target.mPath)) {
        return texts;
    }
    if (zephmetadata::PrimitiveTypeOfPath(target.mPath) == zephmetadata::kPrimitiveType_Alt) {
        for (const auto& [language, text] : zephmetadata::GetLanguages(tree, target.mPath)) {
            if (target.mLanguage.empty() || SameTag(language, target.mLanguage)) {
                texts.insert(SameTag(language, "x-default") ? texts.begin() : texts.end(), text);
            }
        }
    } else if (zephmetadata::IsPathAnArray(target.mPath, true)) {
        texts = zephmetadata::GetItems(tree, target.mPath);
    } else if (std::string text; RawText(tree, target.mPath, text)) {
        texts.push_back(text);
    }
    return texts;
}

}  // namespace zephmeta
