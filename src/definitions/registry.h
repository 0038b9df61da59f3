#pragma once

#include <map>
#include <set>
#include <string_view>
#include <utility>
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
    std::set<sp<SchemaDefinition>> mPackageSchemas;  ///< that packages registered, and can be taken out
    std::set<sp<TypeDefinition>> mPackageTypes;
};

DefinitionRegistry& Registry();

/// Registers a dynamic schema that a provider found in its tree, unless there is one of its namespace. Unlike all other
/// registering it may overlap with lookups of other threads.
void RegisterFoundSchema(const sp<SchemaDefinition>& schema);
void ClearFoundSchemas();

void ReportRegistration(std::u16string_view key, std::initializer_list<UTF8String> arguments, const UTF16String& file);

/// Gives an entry without a type, or an array or choice without an element type, "text", and reports it.
void NormalizeEntryTypes(EntryDefinition& entry, const UTF8String& prefix, const UTF16String& file);

/// Takes out the null entries that a host may have left in a list.
template <typename Entry>
void DropNulls(std::vector<sp<Entry>>& entries) {
    std::erase(entries, nullptr);
}

/// Whether @p added names a registered structure and lists nothing but fields whose names it does not have yet: that is
/// how an extension package extends a structure. Paths tell the fields of a structure by their names alone.
bool AddsFieldsAlone(const TypeDefinition& added);
/// Appends these fields to the registered structure and to @p fields; false when the namespace of one cannot be
/// registered.
bool AddFields(const TypeDefinition& added, const UTF16String& file, StructureFields& fields);

}  // namespace zephmetadata
