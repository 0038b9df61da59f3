#include "definitions/entry_index.h"
#include "xmp/core/toolkit.h"
#include "zephcore/text.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

/// A path below @p parent, which it shares its schema with.
Path Derived(const Path& parent, UTF8String description, UTF8String entryName, UTF8String parentId) {
    return {.mInternal = parent.mInternal,
            .mNamespace = parent.mNamespace,
            .mPathDescription = std::move(description),
            .mEntryName = std::move(entryName),
            .mParentId = std::move(parentId)};
}

Path FieldPath(const Path& parent, const FieldDefinition& field, const UTF8String& structureType) {
    return Derived(
        parent,
        toolkit::ComposeStructFieldPath(parent.mNamespace, parent.mPathDescription, field.mNamespace, field.mName),
        field.mName, structureType);
}

/// What the items of the array at @p parent are looked up under.
UTF8String ItemParentId(const Path& parent) {
    const sp<TypeDefinition> type = TypeEntryDefinition(parent);
    if (!type) {
        return {};
    }
    return type->mExtends ? PrimitiveTypeAsPrimitiveTypeId(*type->mExtends) : type->mType.value_or(UTF8String());
}

}  // namespace

Path CreatePathFromSchemaProperty(const sp<SchemaDefinition>& schema, const sp<PropertyDefinition>& property) {
    if (!schema || !property) {
        return {};
    }
    return {.mInternal = property->mInternal,
            .mNamespace = schema->mNamespace,
            .mPathDescription = property->mName,
            .mEntryName = property->mName,
            .mParentId = schema->mNamespace};
}

Path CreatePathFromStructureField(const Path& parent, const sp<FieldDefinition>& field) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    if (!field || !entry || !entry->mType) {
        return {};
    }
    try {
        return FieldPath(parent, *field, *entry->mType);
    } catch (const XMPError&) {
        return {};
    }
}

Path CreatePathFromArrayedStructureField(const Path& parent, const sp<FieldDefinition>& field) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    if (!field || !entry || !entry->mElementType) {
        return {};
    }
    return FieldPath(parent, *field, *entry->mElementType);
}

Path CreatePathFromArrayItem(const Path& parent, int index) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    const auto elementType = entry ? ElementTypeIdOf(*entry) : std::nullopt;
    if (!elementType) {
        return {};
    }
    return Derived(parent, toolkit::ComposeArrayItemPath(parent.mNamespace, parent.mPathDescription, index),
                   *elementType, ItemParentId(parent));
}

Path CreatePathFromQualifier(const Path& parent, const sp<QualifierDefinition>& qualifier) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    if (!qualifier || !entry || !entry->mType) {
        return {};
    }
    const UTF8String& qualifierNamespace = qualifier->mNamespace.empty() ? parent.mNamespace : qualifier->mNamespace;
    return Derived(
        parent,
        toolkit::ComposeQualifierPath(parent.mNamespace, parent.mPathDescription, qualifierNamespace, qualifier->mName),
        qualifier->mName, *entry->mType);
}

Path CreatePathFromElementType(const Path& path, const sp<EntryDefinition>& entry, const sp<TypeDefinition>& type) {
    if (!entry || !type) {
        return {};
    }
    return Derived(path, path.mPathDescription, type->mName, entry->mElementType.value_or(UTF8String()));
}

Path PathForSchemaNameAndPropertyName(UTF8String namespaceURI, UTF8String propertyName) {
    const sp<SchemaDefinition> schema = NamespaceDefinition(namespaceURI);
    return schema ? CreatePathFromSchemaProperty(schema, FindEntry(schema->mProperties, propertyName)) : Path();
}

Path PathForSchemaNameAndPropertyName(UTF16String namespaceURI, UTF16String propertyName) {
    return PathForSchemaNameAndPropertyName(zephcore::UTF16to8(namespaceURI), zephcore::UTF16to8(propertyName));
}

}  // namespace zephmetadata
