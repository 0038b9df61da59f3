#include <algorithm>
#include <set>

#include "definitions/package_contents.h"
#include "definitions/registry.h"
#include "extensions/bundled_packages.h"

namespace zephmetadata {

namespace {

using QualifiedName = std::pair<UTF8String, UTF8String>;

/// Takes out the fields that the registered structure has. Fields of one name may differ in their namespaces.
void JoinType(TypeDefinition& type, const TypeDefinition& registered, const UTF16String& source,
              StructureFields& fields) {
    std::set<QualifiedName> known;
    for (const sp<FieldDefinition>& field : registered.mFields) {
        known.emplace(field->mNamespace, field->mName);
    }
    std::erase_if(type.mFields, [&](const sp<FieldDefinition>& field) {
        return !known.emplace(field->mNamespace, field->mName).second;
    });
    if (!registered.mFields.empty()) {
        AddFields(type, source, fields);
    }
}

/// A vocabulary grows: choices that a later version of it has join those of the property.
void AddChoices(const PropertyDefinition& added, const sp<PropertyDefinition>& registered) {
    std::set<UTF8String> known;
    for (const sp<ChoiceDefinition>& choice : registered->mChoices) {
        known.insert(choice->mRawValue);
    }
    for (const sp<ChoiceDefinition>& choice : added.mChoices) {
        if (!known.empty() && known.insert(choice->mRawValue).second) {
            registered->mChoices.push_back(choice);
            PackageRecording::Add(registered, choice);
        }
    }
}

void JoinSchema(SchemaDefinition& schema, const SchemaDefinition& registered) {
    std::map<UTF8String, sp<PropertyDefinition>> known;
    for (const sp<PropertyDefinition>& property : registered.mProperties) {
        known.emplace(property->mName, property);
    }
    std::erase_if(schema.mProperties, [&](const sp<PropertyDefinition>& property) {
        const auto found = known.find(property->mName);
        if (found == known.end()) {
            return false;
        }
        AddChoices(*property, found->second);
        return true;
    });
}

}  // namespace

void JoinRegisteredDefinitions(Definitions& definitions, const UTF16String& source, StructureFields& fields) {
    auto& [schemas, types] = definitions;
    std::erase_if(types, [&](const sp<TypeDefinition>& type) {
        const sp<TypeDefinition> registered = TypeIdDefinition(type->mName);
        if (registered) {
            JoinType(*type, *registered, source, fields);
        }
        return registered != nullptr;
    });
    for (const sp<SchemaDefinition>& schema : schemas) {
        if (const sp<SchemaDefinition> registered = NamespaceDefinition(schema->mNamespace)) {
            JoinSchema(*schema, *registered);
        }
    }
}

}  // namespace zephmetadata
