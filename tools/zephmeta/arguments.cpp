#include "arguments.h"

#include <algorithm>

#include "listing.h"
#include "text.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

constexpr std::string_view kLanguageStep = "[?xml:lang=\"";

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

/// A prefix, a colon and something after it.
bool IsPrefixed(std::string_view path) {
    const std::size_t colon = path.find(':');
    const std::string_view prefix = path.substr(0, colon);
    const auto isOfName = [](char c) { return IsLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '-'; };
    return !prefix.empty() && IsLetter(prefix.front()) && std::all_of(prefix.begin(), prefix.end(), isOfName) &&
           colon != std::string_view::npos && colon + 1 < path.size();
}

/// Where the language of a path that ends with one, as in dc:title[?xml:lang="de"], begins; npos of another path.
std::size_t LanguageStep(std::string_view path) {
    const std::size_t step = path.ends_with("\"]") ? path.rfind(kLanguageStep) : std::string_view::npos;
    return step != std::string_view::npos && step + kLanguageStep.size() + 2 < path.size() ? step
                                                                                           : std::string_view::npos;
}

/// Language tags compare without letter case (RFC 4647).
bool SameTag(std::string_view left, std::string_view right) {
    return Lower(left) == Lower(right);
}

}  // namespace

std::optional<Assignment> ParseAssignment(const std::string& argument) {
    // A language in brackets has an "=" of its own.
    std::size_t depth = 0;
    for (std::size_t i = 0; i < argument.size(); ++i) {
        depth += argument[i] == '[' ? 1U : 0U;
        depth -= argument[i] == ']' && depth > 0 ? 1U : 0U;
        if (argument[i] == '=' && depth == 0) {
            const std::string path = argument.substr(0, i);
            return IsPrefixed(path) ? std::optional(Assignment{path, argument.substr(i + 1)}) : std::nullopt;
        }
    }
    return std::nullopt;
}

Target ResolveTarget(const std::string& expression) {
    Target target;
    std::string path = expression;
    if (const std::size_t step = LanguageStep(expression); step != std::string::npos) {
        const std::size_t language = step + kLanguageStep.size();
        path.resize(step);
        target.mLanguage = expression.substr(language, expression.size() - language - 2);
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
