#pragma once

#include <optional>

#include "zephmetadata/values.h"

namespace zephmetadata {

/// Why a text is no value.
struct ValueProblem {
    ValidationRule mRule;
    UTF16String mMessage;
};

/// Holds one text against a type, and against the choices, bounds and pattern of @p entry, the property, field or array
/// that it is a value of. Absent when it is allowed.
std::optional<ValueProblem> CheckValue(const UTF8String& typeId, const EntryDefinition& entry, const UTF8String& value);

}  // namespace zephmetadata
