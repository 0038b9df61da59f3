#include "extensions/panel_schemas.h"

#include <unordered_map>
#include <utility>

#include "definitions/entry_index.h"

namespace zephmetadata {

namespace {

using Properties = std::vector<sp<PropertyDefinition>>;

Properties NewProperties(const SchemaDefinition& schema) {
    const sp<SchemaDefinition> registered = NamespaceDefinition(schema.mNamespace);
    if (!registered) {
        return schema.mProperties;
    }
    Properties properties;
    for (const auto& property : schema.mProperties) {
        if (property->mName.find('/') == UTF8String::npos && !FindEntry(registered->mProperties, property->mName)) {
            properties.push_back(property);
        }
    }
    return properties;
}

/// The first of each name, as copies.
Properties WithoutNamesakes(const Properties& properties) {
    Properties kept;
    std::unordered_map<UTF8String, sp<PropertyDefinition>> byName;
    for (const auto& property : properties) {
        sp<PropertyDefinition>& first = byName[property->mName];
        if (!first) {
            first = std::make_shared<PropertyDefinition>(*property);
            kept.push_back(first);
        }
        first->mInternal = first->mInternal && property->mInternal;
    }
    return kept;
}

}  // namespace

std::vector<sp<SchemaDefinition>> NewSchemas(const std::vector<sp<SchemaDefinition>>& schemas) {
    const EntryIndexScope indexed;
    std::vector<sp<SchemaDefinition>> added;
    std::unordered_map<UTF8String, sp<SchemaDefinition>> byNamespace;
    for (const auto& schema : schemas) {
        const Properties properties = NewProperties(*schema);
        if (properties.empty()) {
            continue;
        }
        sp<SchemaDefinition>& target = byNamespace[schema->mNamespace];
        if (!target) {
            target = std::make_shared<SchemaDefinition>(*schema);
            target->mProperties.clear();
            added.push_back(target);
        }
        target->mProperties.insert(target->mProperties.end(), properties.begin(), properties.end());
    }
    for (const auto& schema : added) {
        schema->mProperties = WithoutNamesakes(schema->mProperties);
    }
    return added;
}

}  // namespace zephmetadata
