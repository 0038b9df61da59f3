#include "documents/definition_json.h"

#include "console.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

template <typename Value>
void SetIfPresent(Json& json, const char* member, const std::optional<Value>& value) {
    if (value) {
        json[member] = *value;
    }
}

template <typename List>
void SetIfAny(Json& json, const char* member, const List& list) {
    if (!list.empty()) {
        json[member] = list;
    }
}

Json Choices(const EntryDefinition& entry) {
    Json choices = Json::array();
    for (const auto& choice : entry.mChoices) {
        choices.push_back({{"value", choice->mRawValue}, {"label", Shown(choice->mLabel)}});
    }
    return choices;
}

Json EntryJson(const EntryDefinition& entry);

template <typename Definition>
Json QualifiedEntries(const std::vector<sp<Definition>>& definitions) {
    Json list = Json::array();
    for (const auto& definition : definitions) {
        Json json = EntryJson(*definition);
        json["namespace"] = definition->mNamespace;
        json["prefix"] = definition->mPrefix;
        list.push_back(std::move(json));
    }
    return list;
}

/// What properties, fields and qualifiers have in common.
Json EntryJson(const EntryDefinition& entry) {
    Json json = {{"name", entry.mName}};
    SetIfPresent(json, "type", entry.mType);
    SetIfPresent(json, "elementType", ElementTypeIdOf(entry));
    json["label"] = Shown(entry.mLabel);
    json["description"] = Shown(entry.mDescription);
    SetIfPresent(json, "min", entry.mMin);
    SetIfPresent(json, "max", entry.mMax);
    SetIfPresent(json, "pattern", entry.mPattern);
    SetIfPresent(json, "deprecated", entry.mDeprecated);
    SetIfAny(json, "choices", Choices(entry));
    SetIfAny(json, "qualifiers", QualifiedEntries(entry.mQualifiers));
    return json;
}

}  // namespace

Json ToJson(const SchemaDefinition& schema) {
    Json properties = Json::array();
    for (const auto& property : schema.mProperties) {
        Json json = EntryJson(*property);
        json["internal"] = property->mInternal;
        properties.push_back(std::move(json));
    }
    return {{"namespace", schema.mNamespace},     {"prefix", schema.mPrefix},
            {"label", Shown(schema.mLabel)},      {"description", Shown(schema.mDescription)},
            {"dynamic", schema.mDynamic},         {"custom", schema.mCustom},
            {"properties", std::move(properties)}};
}

Json ToJson(const TypeDefinition& type) {
    Json json = {{"name", type.mName}};
    if (type.mExtends) {
        json["extends"] = PrimitiveTypeAsPrimitiveTypeId(*type.mExtends);
    }
    SetIfPresent(json, "elementType", type.mElementType);
    json["label"] = Shown(type.mLabel);
    json["description"] = Shown(type.mDescription);
    SetIfAny(json, "choices", Choices(type));
    SetIfAny(json, "qualifiers", QualifiedEntries(type.mQualifiers));
    SetIfAny(json, "fields", QualifiedEntries(type.mFields));
    return json;
}

}  // namespace zephmeta
