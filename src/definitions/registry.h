#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// What the registry holds, process-wide. An entry that is null counts as not registered.
struct DefinitionRegistry {
    std::map<UTF8String, sp<SchemaDefinition>> mSchemas;  ///< by namespace URI
    std::map<UTF8String, sp<TypeDefinition>> mTypes;      ///< by name
    std::vector<sp<SchemaDefinition>> mCommonSchemas;     ///< in load order
    std::vector<sp<SchemaDefinition>> mDynamicSchemas;    ///< in load order
    std::map<StandardSchema, UTF8String> mStandardNamespaces;
};

DefinitionRegistry& Registry();

void ReportRegistration(std::u16string_view key, std::initializer_list<UTF8String> arguments, const UTF16String& file);

/// Gives an entry without a type, or an array or choice without an element type, "text", and reports it.
void NormalizeEntryTypes(EntryDefinition& entry, const UTF8String& prefix, const UTF16String& file);

}  // namespace zephmetadata
