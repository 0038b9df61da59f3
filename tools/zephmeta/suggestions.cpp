#include "suggestions.h"

#include "zephmetadata/suggestions.h"

namespace zephmeta {

std::string WhyUnknown(const std::string& expression, const Target& target) {
    const std::string near = zephmetadata::NearestExpression(expression);
    if (near.empty() && target.mProblem.empty()) {
        return {};
    }
    const std::string question = near.empty() ? near : "; did you mean " + near + "?";
    return expression + ": " + (target.mProblem.empty() ? "no such property" : target.mProblem) + question;
}

}  // namespace zephmeta
