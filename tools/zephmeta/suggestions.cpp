#include "suggestions.h"

#include "zephmetadata/suggestions.h"

namespace zephmeta {

namespace {

std::string PrefixOf(const std::string& expression) {
    return expression.substr(0, expression.find(':'));
}

std::string WhyUnknown(const std::string& expression, const Target& target, const std::string& near) {
    if (near.empty() && target.mProblem.empty()) {
        return {};
    }
    const std::string question = near.empty() ? near : "; did you mean " + near + "?";
    return expression + ": " + (target.mProblem.empty() ? "no such property" : target.mProblem) + question;
}

}  // namespace

std::string WhyUnknown(const std::string& expression, const Target& target) {
    return WhyUnknown(expression, target, zephmetadata::NearestExpression(expression));
}

std::string WhyUnreadable(const std::string& expression, const Target& target) {
    const std::string near = zephmetadata::NearestExpression(expression);
    const bool isMistyped = !target.mProblem.empty() || PrefixOf(near) == PrefixOf(expression);
    return isMistyped ? WhyUnknown(expression, target, near) : std::string();
}

}  // namespace zephmeta
