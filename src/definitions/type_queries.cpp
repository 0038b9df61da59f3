#include <algorithm>
#include <array>
#include <string_view>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

namespace {

/// The ids in the order of the enumeration.
constexpr auto kPrimitiveIds = std::to_array<std::string_view>(
    {"integer", "real", "text", "boolean", "openchoice", "closedchoice", "bag", "seq", "alt"});
static_assert(kPrimitiveIds.size() == static_cast<std::size_t>(kPrimitiveType_Alt) + 1);

/// How far choices of choices are followed: documents can make a type its own element type, at any number of removes.
constexpr std::size_t kMaxElementTypeDepth = 100;

bool HasElements(PrimitiveType type) {
    return PrimitiveTypeIsChoice(type) || PrimitiveTypeIsArray(type);
}

}  // namespace

UTF8String PrimitiveTypeAsPrimitiveTypeId(PrimitiveType type) {
    const auto index = static_cast<std::size_t>(type);
    return index < kPrimitiveIds.size() ? UTF8String(kPrimitiveIds[index]) : UTF8String();
}

std::optional<PrimitiveType> PrimitiveTypeIdAsPrimitiveType(const UTF8String& id) {
    const auto* const found = std::find(kPrimitiveIds.begin(), kPrimitiveIds.end(), id);
    if (found == kPrimitiveIds.end()) {
        return std::nullopt;
    }
    return static_cast<PrimitiveType>(found - kPrimitiveIds.begin());
}

bool PrimitiveTypeIsSimple(PrimitiveType type) {
    return type >= kPrimitiveType_Integer && type <= kPrimitiveType_Boolean;
}

bool PrimitiveTypeIsChoice(PrimitiveType type) {
    return type == kPrimitiveType_OpenChoice || type == kPrimitiveType_ClosedChoice;
}

bool PrimitiveTypeIsArray(PrimitiveType type) {
    return type >= kPrimitiveType_Bag && type <= kPrimitiveType_Alt;
}

std::optional<PrimitiveType> PrimitiveTypeOf(const UTF8String& typeId) {
    if (const auto primitive = PrimitiveTypeIdAsPrimitiveType(typeId)) {
        return primitive;
    }
    const sp<TypeDefinition> type = TypeIdDefinition(typeId);
    return type ? type->mExtends : std::nullopt;
}

std::optional<PrimitiveType> PrimitiveTypeOf(const EntryDefinition& entry) {
    return entry.mType ? PrimitiveTypeOf(*entry.mType) : std::nullopt;
}

std::optional<PrimitiveType> PrimitiveTypeOf(const TypeDefinition& type) {
    if (!type.mType) {
        return std::nullopt;
    }
    const auto primitive = PrimitiveTypeIdAsPrimitiveType(*type.mType);
    return primitive ? primitive : type.mExtends;
}

bool IsSimpleType(const UTF8String& typeId) {
    UTF8String id = typeId;
    for (std::size_t depth = 0; depth < kMaxElementTypeDepth; ++depth) {
        const auto primitive = PrimitiveTypeOf(id);
        if (!primitive || !PrimitiveTypeIsChoice(*primitive)) {
            return primitive && PrimitiveTypeIsSimple(*primitive);
        }
        const sp<TypeDefinition> type = TypeIdDefinition(id);
        if (!type || !type->mExtends) {
            return type != nullptr;  // the primitive choices themselves
        }
        if (!type->mElementType) {
            return false;
        }
        id = *type->mElementType;
    }
    return false;
}

bool IsSimpleType(const TypeDefinition& type) {
    const auto primitive = PrimitiveTypeOf(type);
    if (!primitive) {
        return false;
    }
    if (PrimitiveTypeIsSimple(*primitive)) {
        return true;
    }
    return PrimitiveTypeIsChoice(*primitive) && type.mElementType && IsSimpleType(*type.mElementType);
}

bool IsArrayType(const UTF8String& typeId) {
    const auto primitive = PrimitiveTypeOf(typeId);
    return primitive && PrimitiveTypeIsArray(*primitive);
}

bool IsArrayType(const TypeDefinition& type) {
    const auto primitive = PrimitiveTypeOf(type);
    return primitive && PrimitiveTypeIsArray(*primitive);
}

bool IsStructType(const UTF8String& typeId) {
    return !PrimitiveTypeOf(typeId);
}

bool IsStructType(const TypeDefinition& type) {
    return !type.mFields.empty();
}

std::optional<UTF8String> ElementTypeIdOf(const EntryDefinition& entry) {
    const auto primitive = PrimitiveTypeOf(entry);
    if (!primitive || !HasElements(*primitive)) {
        return std::nullopt;
    }
    if (entry.mElementType) {
        return entry.mElementType;
    }
    return ElementTypeIdOf(*entry.mType);  // present, or there were no primitive kind
}

std::optional<UTF8String> ElementTypeIdOf(const TypeDefinition& type) {
    if (!type.mFields.empty() || !type.mExtends || !HasElements(*type.mExtends)) {
        return std::nullopt;
    }
    return type.mElementType;
}

std::optional<UTF8String> ElementTypeIdOf(const UTF8String& typeId) {
    const sp<TypeDefinition> type = TypeIdDefinition(typeId);
    return type ? ElementTypeIdOf(*type) : std::nullopt;
}

sp<TypeDefinition> PropertyTypeOf(const EntryDefinition& entry) {
    if (const auto elementType = ElementTypeIdOf(entry)) {
        return TypeIdDefinition(*elementType);
    }
    return entry.mType ? TypeIdDefinition(*entry.mType) : nullptr;
}

}  // namespace zephmetadata
