#pragma once

#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// The names of the first properties of a schema, or of the first fields of a structure.
struct EntryNames {
    std::unordered_set<UTF8String> mNames;
    std::size_t mEntries = 0;
};

/// What the registry holds, process-wide. An entry that is null counts as not registered.
struct DefinitionRegistry {
    std::map<UTF8String, sp<SchemaDefinition>> mSchemas;  ///< by namespace URI
    std::map<UTF8String, sp<TypeDefinition>> mTypes;      ///< by name
    std::vector<sp<SchemaDefinition>> mCommonSchemas;     ///< in load order
    std::vector<sp<SchemaDefinition>> mDynamicSchemas;    ///< in load order
    std::map<StandardSchema, UTF8String> mStandardNamespaces;
    /// The names in the lists of properties and fields that documents were merged into; absent outside of a MergingScope.
    std::optional<std::unordered_map<const void*, EntryNames>> mMergeIndex;
};

DefinitionRegistry& Registry();

/// While it lives, the names in what is merged into are kept, so that many documents can add to one schema or structure
/// in a time that is linear in what they add. Nothing else may rename properties or fields meanwhile. Not nested.
class MergingScope {
public:
    MergingScope() { Registry().mMergeIndex.emplace(); }
    ~MergingScope() { Registry().mMergeIndex.reset(); }
    MergingScope(const MergingScope&) = delete;
    MergingScope& operator=(const MergingScope&) = delete;
};

void ReportRegistration(std::u16string_view key, std::initializer_list<UTF8String> arguments, const UTF16String& file);

/// Gives an entry without a type, or an array or choice without an element type, "text", and reports it.
void NormalizeEntryTypes(EntryDefinition& entry, const UTF8String& prefix, const UTF16String& file);

/// Whether @p added names a registered structure and lists nothing but fields whose names it does not have yet: that is
/// how an extension package extends a structure. Paths tell the fields of a structure by their names alone.
bool AddsFieldsAlone(const TypeDefinition& added);
/// Appends these fields to the registered structure; false when the namespace of one cannot be registered.
bool AddFields(const TypeDefinition& added, const UTF16String& file);

}  // namespace zephmetadata
