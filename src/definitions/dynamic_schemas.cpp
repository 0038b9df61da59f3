#include <string_view>

#include "definitions/registry.h"

namespace zephmetadata {

UTF8String MakeDynamicSchemaNamespace(const UTF8String& name) {
    std::string_view middle = name;
    if (middle.starts_with('/')) {
        middle.remove_prefix(1);
    }
    if (middle.ends_with('/')) {
        middle.remove_suffix(1);
    }
    constexpr std::string_view kVersion = "/1.0/";
    return UTF8String(DynamicNamespaceBase).append(middle).append(kVersion);
}

bool IsDynamicNamespace(const UTF8String& namespaceURI) {
    return namespaceURI.find(DynamicNamespaceBase) != UTF8String::npos;
}

PolyRange<sp<SchemaDefinition>> DynamicSchemaDefinitions() {
    return Registry().mDynamicSchemas;
}

}  // namespace zephmetadata
