#pragma once

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// As SetFilePathForSchema, for a type.
void SetFilePathForType(const UTF16String& path, const sp<TypeDefinition>& type);

/// Forgets the file of one.
void ForgetFile(const sp<SchemaDefinition>& schema);
void ForgetFile(const sp<TypeDefinition>& type);
/// Forgets the files of all schemas and types.
void ClearFileAssociations();

}  // namespace zephmetadata
