#include "suggestions.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "console.h"
#include "zephmetadata/definitions.h"

namespace zephmeta {

namespace {

/// How many letters have to be added, taken away, changed or swapped with the next to make one word of the other.
std::size_t Distance(const std::string& left, const std::string& right) {
    std::vector<std::vector<std::size_t>> rows(left.size() + 1, std::vector<std::size_t>(right.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        rows[i][0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const bool isSame = left[i - 1] == right[j - 1];
            rows[i][j] = std::min({rows[i - 1][j - 1] + (isSame ? 0 : 1), rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
            }
        }
    }
    return rows.back().back();
}

std::vector<std::string> Prefixes() {
    std::vector<std::string> prefixes;
    for (const auto& schema : zephmetadata::RegisteredSchemaDefinitions()) {
        prefixes.push_back(schema->mPrefix);
    }
    return prefixes;
}

std::vector<std::string> PropertiesOf(const std::string& prefix) {
    std::vector<std::string> names;
    const auto schema = zephmetadata::NamespaceDefinition(zephmetadata::NamespaceForPrefix(prefix));
    if (schema) {
        for (const auto& property : schema->mProperties) {
            names.push_back(property->mName);
        }
    }
    return names;
}

std::string DidYouMean(const std::string& near) {
    return near.empty() ? near : "; did you mean " + near + "?";
}

}  // namespace

std::string NearestOf(const std::string& word, const std::vector<std::string>& known) {
    constexpr std::size_t kLongestWord = 64;
    const std::size_t most = std::max<std::size_t>(1, word.size() / 3);
    std::string nearest;
    std::size_t best = most + 1;
    for (const std::string& candidate : word.size() > kLongestWord ? std::vector<std::string>() : known) {
        const std::size_t distance = Distance(Lower(word), Lower(candidate));
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

std::string WhyUnknown(const std::string& expression, const Target& target) {
    const std::size_t colon = expression.find(':');
    const std::string prefix = expression.substr(0, colon);
    if (!target.mProblem.empty()) {
        const std::string near = colon == std::string::npos ? std::string() : NearestOf(prefix, Prefixes());
        return expression + ": " + target.mProblem + DidYouMean(near.empty() ? near : near + expression.substr(colon));
    }
    const std::string name = expression.substr(colon + 1, expression.find_first_of("[/", colon) - colon - 1);
    const std::vector<std::string> known = PropertiesOf(prefix);
    const bool isDefined = std::find(known.begin(), known.end(), name) != known.end();
    const std::string near = isDefined || known.empty() ? std::string() : NearestOf(name, known);
    return near.empty() ? near : expression + ": no such property" + DidYouMean(prefix + ":" + near);
}

}  // namespace zephmeta
