#pragma once

#include <memory>
#include <string>
#include <vector>

#include "arguments.h"
#include "zephmetadata/types.h"

namespace zephmeta {

/// What a condition looks at: the values of one file, wherever they are kept.
class ValueSource {
public:
    ValueSource() = default;
    ValueSource(const ValueSource&) = delete;
    ValueSource& operator=(const ValueSource&) = delete;
    virtual ~ValueSource() = default;

    virtual std::vector<std::string> Texts(const Target& target) const = 0;
    /// Whether anything is there, be it a structure that has no text of its own.
    virtual bool Has(const Target& target) const = 0;
};

/// The values of a tree, which may be null: it has none.
class TreeValues : public ValueSource {
public:
    explicit TreeValues(zephmetadata::XMPMetaHandle tree) : mTree(tree) {}
    std::vector<std::string> Texts(const Target& target) const override;
    bool Has(const Target& target) const override;

private:
    zephmetadata::XMPMetaHandle mTree;
};

/// What --if asks of a file, for example: xmp:Rating>=4 and (dc:subject has sea or missing dc:rights).
class Condition {
public:
    Condition() = default;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    virtual ~Condition() = default;

    /// May be asked by several threads at once.
    virtual bool Holds(const ValueSource& values) const = 0;
};

struct ConditionReading {
    std::unique_ptr<const Condition> mCondition;  ///< null when there is a problem, and for an empty text
    std::string mProblem;                         ///< in words, with the place in the text
};

/// Grammar: `or`, `and`, `not`, brackets; `missing PATH`, `PATH` (has any value), `PATH has TEXT` (an item, or a language, that
/// is TEXT), `PATH contains TEXT` (whatever the letter case), and `PATH = != < <= > >= VALUE`. Numbers compare as numbers and
/// dates as dates, as far as VALUE goes: 2020 is all of that year. A VALUE with blanks stands in quotes.
ConditionReading ReadCondition(const std::string& text);

}  // namespace zephmeta
