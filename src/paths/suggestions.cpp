#include "zephmetadata/suggestions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <tuple>

#include "zephcore/text.h"
#include "zephmetadata/languages.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

UTF8String Lower(UTF8String text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// How many letters have to be added, taken away, changed or swapped with the next to make one word of the other.
std::size_t Distance(const UTF8String& left, const UTF8String& right) {
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

/// Tells how far names are from a word that may be mistyped.
class Measure {
public:
    Measure(const UTF8String& word, std::size_t most) : mWord(Lower(word)), mMost(most) {}
    explicit Measure(const UTF8String& word) : Measure(word, std::max<std::size_t>(1, word.size() / 3)) {}

    std::size_t Of(const UTF8String& name) const {
        const std::size_t longer = std::max(name.size(), mWord.size());
        const bool isNear = longer <= kLongestWord && longer - std::min(name.size(), mWord.size()) <= Most();
        return isNear ? Distance(mWord, Lower(name)) : Most() + 1;
    }
    /// Names that are farther away are other names.
    std::size_t Most() const { return mMost; }

private:
    static constexpr std::size_t kLongestWord = 64;

    UTF8String mWord;
    std::size_t mMost;
};

/// Of several properties of one name, those of these schemas are meant first.
std::size_t RankOf(const SchemaDefinition& schema) {
    constexpr auto kCommonPrefixes = std::to_array<std::string_view>(
        {"dc", "xmp", "xmpRights", "photoshop", "tiff", "exif", "exifEX", "Iptc4xmpCore"});
    return static_cast<std::size_t>(std::find(kCommonPrefixes.begin(), kCommonPrefixes.end(), schema.mPrefix) -
                                    kCommonPrefixes.begin());
}

/// What has no prefix may be a label, as "keywords" is that of dc:subject.
std::size_t DistanceOf(const PropertyDefinition& property, const Measure& toName, bool isLabelToo) {
    const std::size_t distance = toName.Of(property.mName);
    return isLabelToo ? std::min(distance, toName.Of(zephcore::UTF16to8(LabelOf(property)))) : distance;
}

/// The property in all schemas whose name, and then whose prefix, is nearest.
UTF8String NearestProperty(const UTF8String& prefix, const UTF8String& name) {
    const Measure toPrefix(prefix);
    constexpr std::size_t kLettersForAMistake = 5;  // some short name of some schema is near to any word
    const Measure toName = prefix.empty() ? Measure(name, name.size() / kLettersForAMistake) : Measure(name);
    auto best = std::tuple(toName.Most() + 1, std::size_t{0});
    UTF8String nearest;
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        const std::size_t ofPrefix = toPrefix.Of(schema->mPrefix);
        for (const sp<PropertyDefinition>& property : schema->mProperties) {
            const auto distance =
                std::tuple(DistanceOf(*property, toName, prefix.empty()), prefix.empty() ? RankOf(*schema) : ofPrefix);
            if ((prefix.empty() || ofPrefix <= toPrefix.Most()) && distance < best) {
                best = distance;
                nearest = schema->mPrefix + ":" + property->mName;
            }
        }
    }
    return nearest;
}

/// The property of exactly this name in another schema than was meant.
UTF8String Namesake(const UTF8String& name) {
    sp<SchemaDefinition> best;
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        const bool isThere =
            std::any_of(schema->mProperties.begin(), schema->mProperties.end(),
                        [&](const sp<PropertyDefinition>& property) { return property->mName == name; });
        if (isThere && (!best || RankOf(*schema) < RankOf(*best))) {
            best = schema;
        }
    }
    return best ? best->mPrefix + ":" + name : UTF8String();
}

}  // namespace

UTF8String NearestName(const UTF8String& word, const std::vector<UTF8String>& known) {
    const Measure measure(word);
    UTF8String nearest;
    std::size_t best = measure.Most() + 1;
    for (const UTF8String& candidate : known) {
        const std::size_t distance = measure.Of(candidate);
        if (distance < best) {
            best = distance;
            nearest = candidate;
        }
    }
    return nearest;
}

UTF8String NearestExpression(const UTF8String& expression) {
    const std::size_t end = std::min(expression.find_first_of("/["), expression.size());
    const UTF8String property = expression.substr(0, end);
    const std::size_t colon = property.find(':');
    const UTF8String prefix = colon == UTF8String::npos ? UTF8String() : property.substr(0, colon);
    const UTF8String name = colon == UTF8String::npos ? property : property.substr(colon + 1);
    if (PathEntryDefinition(PathForExpression(property))) {
        return {};
    }
    const UTF8String near = NearestProperty(prefix, name);
    const UTF8String nearest = near.empty() ? Namesake(name) : near;
    return nearest.empty() ? nearest : nearest + expression.substr(end);
}

}  // namespace zephmetadata
