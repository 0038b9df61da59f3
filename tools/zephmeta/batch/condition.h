#pragma once

#include <memory>
#include <string>

#include "zephmetadata/types.h"

namespace zephmeta {

/// What --if asks of a file, for example: xmp:Rating>=4 and (dc:subject has sea or missing dc:rights).
class Condition {
public:
    Condition() = default;
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    virtual ~Condition() = default;

    /// A null tree has no values. May be asked by several threads at once.
    virtual bool Holds(zephmetadata::XMPMetaHandle tree) const = 0;
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
