#pragma once

#include <CLI/CLI.hpp>

#include "json.h"

namespace zephmeta {

/// A command with its options, arguments and subcommands, as data: what the manual page and the completions of shells are
/// made from (scripts/make-cli-docs). Hidden options are left out.
Json DescribeCommand(const CLI::App& command);

}  // namespace zephmeta
