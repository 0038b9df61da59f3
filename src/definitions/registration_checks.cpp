#include "definitions/registry.h"
#include "zephcore/xml.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kInvalidElementType =
    u"$$$/zephmetadata/ErrorInArrayOrChoice/InvalidElementType=XMP property #{quot}@0:@1#{quot} has an invalid element "
    u"type #{quot}@2#{quot}.";
constexpr std::u16string_view kInvalidType =
    u"$$$/zephmetadata/ErrorInField/InvalidType=XMP property #{quot}@0:@1#{quot} has an invalid type "
    u"#{quot}@2#{quot}.";
constexpr std::u16string_view kInvalidElementTypeInType =
    u"$$$/zephmetadata/ErrorInArrayOrChoice/InvalidElementTypeInType=XMP type #{quot}@0#{quot} has an invalid element "
    u"type #{quot}@1#{quot}.";

bool HasElements(const std::optional<PrimitiveType>& type) {
    return type && (PrimitiveTypeIsChoice(*type) || PrimitiveTypeIsArray(*type));
}

void CheckEntryTypes(const UTF8String& prefix, const sp<EntryDefinition>& entry, const UTF16String& file) {
    if (!entry || !entry->mType) {
        return;
    }
    const zephcore::DocumentLineScope line(entry->mLine);
    if (HasElements(PrimitiveTypeOf(*entry))) {
        const auto elementType = entry->mElementType ? entry->mElementType : ElementTypeIdOf(*entry->mType);
        if (elementType && !TypeIdDefinition(*elementType)) {
            ReportRegistration(kInvalidElementType, {prefix, entry->mName, *elementType}, file);
        }
    } else if (!TypeIdDefinition(*entry->mType)) {
        ReportRegistration(kInvalidType, {prefix, entry->mName, *entry->mType}, file);
    }
}

}  // namespace

bool CheckPropertyTypes(const std::vector<sp<SchemaDefinition>>& schemas, const UTF16String& file) {
    for (const auto& schema : schemas) {
        if (!schema) {
            continue;
        }
        for (const auto& property : schema->mProperties) {
            CheckEntryTypes(schema->mPrefix, property, file);
        }
    }
    return true;
}

bool CheckFieldTypes(const std::vector<sp<TypeDefinition>>& types, const UTF16String& file) {
    for (const auto& type : types) {
        if (!type) {
            continue;
        }
        if (!type->mFields.empty() || !type->mExtends) {
            for (const auto& field : type->mFields) {
                CheckEntryTypes(field ? field->mPrefix : UTF8String(), field, file);
            }
            continue;
        }
        const zephcore::DocumentLineScope line(type->mLine);
        const UTF8String elementType = type->mElementType.value_or(UTF8String());
        if (HasElements(type->mExtends) && !TypeIdDefinition(elementType)) {
            ReportRegistration(kInvalidElementTypeInType, {type->mName, elementType}, file);
        }
    }
    return true;
}

}  // namespace zephmetadata
