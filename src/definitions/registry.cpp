#include "definitions/registry.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <shared_mutex>
#include <unordered_set>

#include "definitions/entry_index.h"
#include "definitions/package_contents.h"
#include "frame/errors.h"
#include "frame/initialization.h"
#include "xmp/core/toolkit.h"
#include "xmp/core/xmp_paths.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kNamespaceRefused =
    u"$$$/zephmetadata/ErrorInNamespaceRegistration=namespace #{quot}@0#{quot} couldn't be registered with prefix "
    u"#{quot}@1#{quot}.";
constexpr std::u16string_view kDuplicateSchema =
    u"$$$/zephmetadata/ErrorInSchemaRegistration/duplicateSchemaDefinition=schema definition for #{quot}@0#{quot} "
    u"already exists.";
constexpr std::u16string_view kDuplicateProperty =
    u"$$$/zephmetadata/ErrorInSchemaRegistration/duplicatePropertyDefinition=property definition for namespace "
    u"#{quot}@0@1#{quot} already exists.";
constexpr std::u16string_view kDuplicateType =
    u"$$$/zephmetadata/ErrorInTypeRegistration/duplicateTypeDefinition=type definition for #{quot}@0#{quot} already "
    u"exists.";
constexpr std::u16string_view kInvalidType =
    u"$$$/zephmetadata/ErrorInTypeRegistration/invalidType=invalid Type #{quot}@0#{quot}.";
constexpr std::u16string_view kEntryTypeDefaulted =
    u"$$$/zephmetadata/ErrorInProperty/InvalidTypeChangedToDefault=invalid type for XMP property #{quot}@0:@1#{quot} "
    u"is changed to default type 'text'.";
constexpr std::u16string_view kEntryElementTypeDefaulted =
    u"$$$/zephmetadata/ErrorInArrayOrChoice/InvalidElementTypeChangedToDefault=invalid element type for XMP property "
    u"#{quot}@0:@1#{quot} is changed to default type 'text'.";
constexpr std::u16string_view kTypeElementTypeDefaulted =
    u"$$$/zephmetadata/ErrorInArrayOrChoice/InvalidElementTypeInTypeChangedToDefault=invalid element type for type "
    u"#{quot}@0#{quot} is changed to default type 'text'.";

/// Of a schema or a field.
template <typename Definition>
bool RegisterNamespace(const Definition& definition, const UTF16String& file) {
    if (toolkit::RegisterNamespace(definition.mNamespace, definition.mPrefix)) {
        return true;
    }
    const zephcore::DocumentLineScope line(definition.mLine);
    ReportRegistration(kNamespaceRefused, {definition.mNamespace, definition.mPrefix}, file);
    return false;
}

template <typename Definition>
sp<Definition> Find(const std::map<UTF8String, sp<Definition>>& map, const UTF8String& key) {
    const auto found = map.find(key);
    return found == map.end() ? nullptr : found->second;
}

template <typename Definition>
bool Remove(std::map<UTF8String, sp<Definition>>& map, const UTF8String& key) {
    return IsInitialized() && Find(map, key) && map.erase(key) > 0;
}

/// The schemas that providers found in trees, while other threads look theirs up.
struct FoundSchemas {
    std::atomic<bool> mHasAny = false;  // most hosts never meet one, and take no lock
    std::shared_mutex mMutex;           // guards the map
    std::map<UTF8String, sp<SchemaDefinition>> mSchemas;
};

FoundSchemas& Found() {
    static FoundSchemas found;
    return found;
}

sp<SchemaDefinition> FindFound(const UTF8String& namespaceURI) {
    if (!Found().mHasAny) {
        return nullptr;
    }
    const std::shared_lock lock(Found().mMutex);
    return Find(Found().mSchemas, namespaceURI);
}

sp<SchemaDefinition> FindSchema(const UTF8String& namespaceURI) {
    const sp<SchemaDefinition> schema = Find(Registry().mSchemas, namespaceURI);
    return schema ? schema : FindFound(namespaceURI);
}

/// What is registered, in the order of the map.
template <typename Definition>
std::vector<sp<Definition>> Registered(const std::map<UTF8String, sp<Definition>>& map) {
    std::vector<sp<Definition>> definitions;
    for (const auto& [key, definition] : map) {
        if (definition) {
            definitions.push_back(definition);
        }
    }
    return definitions;
}

/// Adds the properties that @p registered does not have yet.
void MergeProperties(const SchemaDefinition& added, SchemaDefinition& registered, const UTF16String& file) {
    const EntryIndexScope indexed;
    for (const auto& property : added.mProperties) {
        if (FindEntry(registered.mProperties, property->mName)) {
            const zephcore::DocumentLineScope line(property->mLine);
            ReportRegistration(kDuplicateProperty, {added.mNamespace, property->mName}, file);
            continue;
        }
        registered.mProperties.push_back(property);
        PackageRecording::Add(registered.mNamespace, property);
        NormalizeEntryTypes(*property, registered.mPrefix, file);
    }
}

void NormalizeType(TypeDefinition& type, const UTF16String& file) {
    type.mType = type.mName;
    DropNulls(type.mFields);
    DropNulls(type.mChoices);
    DropNulls(type.mQualifiers);
    const bool hasElements =
        type.mExtends && (PrimitiveTypeIsChoice(*type.mExtends) || PrimitiveTypeIsArray(*type.mExtends));
    if (type.mFields.empty() && hasElements && !type.mElementType) {
        type.mElementType = kTypeText;
        ReportRegistration(kTypeElementTypeDefaulted, {type.mName}, file);
    }
    for (const auto& field : type.mFields) {
        NormalizeEntryTypes(*field, field->mPrefix, file);
    }
}

}  // namespace

DefinitionRegistry& Registry() {
    static DefinitionRegistry registry;
    return registry;
}

void ReportRegistration(std::u16string_view key, std::initializer_list<UTF8String> arguments, const UTF16String& file) {
    std::array<UTF16String, 3> texts;
    std::transform(arguments.begin(), arguments.end(), texts.begin(),
                   [](const UTF8String& argument) { return zephcore::UTF8to16(argument); });
    SendError(ErrorKind::DefinitionRegistrationError, zephcore::ZString(key, {texts[0], texts[1], texts[2]}), file);
}

void NormalizeEntryTypes(EntryDefinition& entry, const UTF8String& prefix, const UTF16String& file) {
    const zephcore::DocumentLineScope line(entry.mLine);
    DropNulls(entry.mChoices);
    DropNulls(entry.mQualifiers);
    if (!entry.mType) {
        entry.mType = kTypeText;
        ReportRegistration(kEntryTypeDefaulted, {prefix, entry.mName}, file);
        return;
    }
    const auto primitive = PrimitiveTypeOf(entry);
    const bool hasElements = primitive && (PrimitiveTypeIsChoice(*primitive) || PrimitiveTypeIsArray(*primitive));
    if (!hasElements || entry.mElementType) {
        return;
    }
    const sp<TypeDefinition> type = TypeIdDefinition(*entry.mType);
    if (type && !type->mElementType) {
        entry.mElementType = kTypeText;
        ReportRegistration(kEntryElementTypeDefaulted, {prefix, entry.mName}, file);
    }
}

bool RegisterSchemaDefinition(const sp<SchemaDefinition>& schema, const UTF16String& file, bool merge) {
    if (!schema || !IsInitialized()) {
        return false;
    }
    const zephcore::DocumentLineScope line(schema->mLine);
    DropNulls(schema->mProperties);
    const sp<SchemaDefinition> registered = NamespaceDefinition(schema->mNamespace);
    if (registered && merge) {
        MergeProperties(*schema, *registered, file);
        return false;
    }
    if (registered) {
        ReportRegistration(kDuplicateSchema, {schema->mNamespace}, file);
        return false;
    }
    Registry().mSchemas[schema->mNamespace] = schema;
    RegisterNamespace(*schema, file);
    for (const auto& property : schema->mProperties) {
        NormalizeEntryTypes(*property, schema->mPrefix, file);
    }
    PackageRecording::Add(schema);
    return true;
}

void RegisterFoundSchema(const sp<SchemaDefinition>& schema) {
    if (!schema || !IsInitialized() || FindSchema(schema->mNamespace)) {
        return;
    }
    RegisterNamespace(*schema, {});
    DropNulls(schema->mProperties);
    for (const auto& property : schema->mProperties) {
        NormalizeEntryTypes(*property, schema->mPrefix, {});
    }
    const std::lock_guard lock(Found().mMutex);  // not earlier: error callbacks look things up
    Found().mSchemas.try_emplace(schema->mNamespace, schema);
    Found().mHasAny = true;
}

void ClearFoundSchemas() {
    const std::lock_guard lock(Found().mMutex);
    Found().mSchemas.clear();
    Found().mHasAny = false;
}

bool AddsFieldsAlone(const TypeDefinition& added) {
    const sp<TypeDefinition> registered = TypeIdDefinition(added.mName);
    if (!registered || registered->mFields.empty() || added.mFields.empty()) {
        return false;
    }
    const EntryIndexScope indexed;
    std::unordered_set<UTF8String> seen;
    return std::all_of(added.mFields.begin(), added.mFields.end(), [&](const sp<FieldDefinition>& field) {
        return !FindEntry(registered->mFields, field->mName) && seen.insert(field->mName).second;
    });
}

bool AddFields(const TypeDefinition& added, const UTF16String& file, StructureFields& fields) {
    const sp<TypeDefinition> registered = TypeIdDefinition(added.mName);
    bool accepted = true;
    for (const auto& field : added.mFields) {
        if (RegisterNamespace(*field, file)) {
            NormalizeEntryTypes(*field, field->mPrefix, file);
            registered->mFields.push_back(field);
            PackageRecording::Add(added.mName, field);
            fields.emplace_back(added.mName, field);
        } else {
            accepted = false;
        }
    }
    return accepted;
}

bool RegisterTypeDefinition(const sp<TypeDefinition>& type, const UTF16String& file) {
    if (!type || !IsInitialized()) {
        return false;
    }
    const zephcore::DocumentLineScope line(type->mLine);
    if (TypeIdDefinition(type->mName)) {
        ReportRegistration(kDuplicateType, {type->mName}, file);
        return false;
    }
    Registry().mTypes[type->mName] = type;
    NormalizeType(*type, file);
    bool accepted = true;
    for (const auto& field : type->mFields) {
        accepted = RegisterNamespace(*field, file) && accepted;
    }
    if (!accepted) {
        Registry().mTypes[type->mName] = nullptr;
        ReportRegistration(kInvalidType, {type->mName}, file);
        return false;
    }
    PackageRecording::Add(type);
    return true;
}

bool RemoveSchemaDefinition(const sp<SchemaDefinition>& schema) {
    if (!schema) {
        return false;
    }
    const std::lock_guard lock(Found().mMutex);
    return Remove(Registry().mSchemas, schema->mNamespace) || Remove(Found().mSchemas, schema->mNamespace);
}

bool RemoveTypeDefinition(const sp<TypeDefinition>& type) {
    return type && Remove(Registry().mTypes, type->mName);
}

bool IsSchemaDefinitionAlreadyRegistered(const sp<SchemaDefinition>& schema) {
    return schema && FindSchema(schema->mNamespace);
}

sp<SchemaDefinition> NamespaceDefinition(const UTF8String& namespaceURI) {
    return IsInitialized() ? FindSchema(namespaceURI) : nullptr;
}

sp<TypeDefinition> TypeIdDefinition(const UTF8String& typeId) {
    return IsInitialized() ? Find(Registry().mTypes, typeId) : nullptr;
}

PolyRange<sp<SchemaDefinition>> CommonSchemaDefinitions() {
    return Registry().mCommonSchemas;
}

std::vector<sp<SchemaDefinition>> RegisteredSchemaDefinitions() {
    auto schemas = Registered(Registry().mSchemas);
    {
        const std::shared_lock lock(Found().mMutex);
        const auto found = Registered(Found().mSchemas);
        schemas.insert(schemas.end(), found.begin(), found.end());
    }
    std::stable_sort(schemas.begin(), schemas.end(),
                     [](const auto& left, const auto& right) { return left->mPrefix < right->mPrefix; });
    return schemas;
}

std::vector<sp<TypeDefinition>> RegisteredTypeDefinitions() {
    return Registered(Registry().mTypes);
}

UTF8String StandardSchemaNamespace(StandardSchema schema) {
    if (!IsInitialized()) {
        return {};
    }
    const auto found = Registry().mStandardNamespaces.find(schema);
    return found == Registry().mStandardNamespaces.end() ? UTF8String() : found->second;
}

UTF8String NamespaceForPrefix(const UTF8String& prefix) {
    return IsInitialized() && toolkit::IsNCName(prefix) ? toolkit::NamespaceOf(prefix).value_or(UTF8String())
                                                        : UTF8String();
}

}  // namespace zephmetadata
