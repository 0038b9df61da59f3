#include "definitions/entry_index.h"
#include "zephcore/text.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

/// The property of a schema that lists none: whatever stands in the metadata is text.
sp<PropertyDefinition> DynamicProperty(const UTF8String& name) {
    const UTF16String label = zephcore::UTF8to16(name);
    return CreateNewProperty(kPrimitiveType_Text, name, label, label, {}, {});
}

bool IsBagOrSeq(const Path& path) {
    const auto primitive = PrimitiveTypeOfPath(path);
    return primitive == kPrimitiveType_Bag || primitive == kPrimitiveType_Seq;
}

}  // namespace

sp<EntryDefinition> PathEntryDefinition(const Path& path) {
    if (const sp<SchemaDefinition> schema = NamespaceDefinition(path.mParentId)) {
        if (schema->mDynamic) {
            return DynamicProperty(path.mEntryName);
        }
        if (const auto property = FindEntry(schema->mProperties, path.mEntryName)) {
            return property;
        }
    }
    if (const sp<TypeDefinition> type = TypeIdDefinition(path.mParentId)) {
        if (const auto field = FindEntry(type->mFields, path.mEntryName)) {
            return field;
        }
    }
    return TypeIdDefinition(path.mEntryName);
}

sp<TypeDefinition> TypeEntryDefinition(const Path& path) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        return nullptr;
    }
    if (IsPathAnArray(path, false)) {
        const auto elementType = ElementTypeIdOf(*entry);
        return elementType ? TypeIdDefinition(*elementType) : nullptr;
    }
    return entry->mType ? TypeIdDefinition(*entry->mType) : nullptr;
}

std::optional<PrimitiveType> PrimitiveTypeOfPath(const Path& path) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        return std::nullopt;
    }
    return entry->mType ? PrimitiveTypeOf(*entry->mType) : entry->mExtends;
}

bool IsPathAnArray(const Path& path, bool includeExternal) {
    return (path.mInternal || includeExternal) && IsBagOrSeq(path);
}

}  // namespace zephmetadata
