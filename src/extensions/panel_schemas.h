#pragma once

#include <vector>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// What of a panel's schemas is not registered yet, one schema for each namespace. @p schemas stay as they are.
///
/// A property that they define several times is taken once; it is internal when it is so everywhere. Fields of
/// structures ("Struct/prefix:field"), of which panels list those that they show, add nothing to a registered schema.
std::vector<sp<SchemaDefinition>> NewSchemas(const std::vector<sp<SchemaDefinition>>& schemas);

}  // namespace zephmetadata
