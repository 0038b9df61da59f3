#pragma once

#include "json.h"
#include "zephmetadata/definitions.h"

namespace zephmeta {

/// Definitions as `schemas --json` and `types --json` show them. An absent member is left out.
Json ToJson(const zephmetadata::SchemaDefinition& schema);
Json ToJson(const zephmetadata::TypeDefinition& type);

}  // namespace zephmeta
