#pragma once

#include <optional>
#include <string>
#include <vector>

#include "zephmetadata/paths.h"
#include "zephmetadata/types.h"

namespace zephmeta {

/// One PATH=VALUE of the command line.
struct Assignment {
    std::string mExpression;
    std::string mValue;
};

/// @p argument as an assignment, when it reads like one: "prefix:name...=value".
std::optional<Assignment> ParseAssignment(const std::string& argument);

/// Where an expression of the command line leads: to a node, or to one language of an alternative.
struct Target {
    zephmetadata::Path mPath;
    std::string mLanguage;  ///< of "dc:title[?xml:lang="de"]"; empty for any other path
    std::string mProblem;   ///< why there is no such path; empty when there is
};

Target ResolveTarget(const std::string& expression);

/// The stored texts at a target: one of a simple value, those of the items of an array, those of all languages of an
/// alternative, x-default first, unless the target names one.
std::vector<std::string> TextsAt(zephmetadata::XMPMetaHandle tree, const Target& target);

}  // namespace zephmeta
