#include "values/constructed_values.h"

#include <array>
#include <map>
#include <string_view>

#include "values/formatting/constructors.h"

namespace zephmetadata {

namespace {

/// The older property is in the auxiliary namespace, which no standard schema value stands for.
constexpr const char* kAuxNamespace = "http://ns.adobe.com/exif/1.0/aux/";

struct AliasRow {
    StandardSchema mSchema;
    std::string_view mProperty;
    std::optional<StandardSchema> mReadSchema;  ///< none: the auxiliary namespace
    std::string_view mReadProperty;
};

/// Cameras wrote these under other names before Exif 2.3 was mapped to XMP.
constexpr auto kAliases = std::to_array<AliasRow>({
    {kStandardSchema_EXIFEX, "LensModel", std::nullopt, "Lens"},
    {kStandardSchema_EXIFEX, "BodySerialNumber", std::nullopt, "SerialNumber"},
    {kStandardSchema_EXIFEX, "LensSerialNumber", std::nullopt, "LensSerialNumber"},
    {kStandardSchema_EXIFEX, "CameraOwnerName", std::nullopt, "OwnerName"},
    {kStandardSchema_EXIF, "GPSHPositioningError", kStandardSchema_EXIFEX, "GPSHPositioningError"},
});

std::map<Path, Path>& Aliases() {
    static std::map<Path, Path> aliases;
    return aliases;
}

std::map<Path, Constructor>& Constructors() {
    static std::map<Path, Constructor> constructors;
    return constructors;
}

}  // namespace

void FillConstructedValues() {
    Constructors() = AggregateConstructors();
    for (const AliasRow& row : kAliases) {
        const UTF8String readNamespace = row.mReadSchema ? StandardSchemaNamespace(*row.mReadSchema) : kAuxNamespace;
        const Path key =
            PathForSchemaNameAndPropertyName(StandardSchemaNamespace(row.mSchema), UTF8String(row.mProperty));
        Aliases().emplace(key, PathForSchemaNameAndPropertyName(readNamespace, UTF8String(row.mReadProperty)));
    }
}

void ClearConstructedValues() {
    Aliases().clear();
    Constructors().clear();
}

bool GetConstructedValue(XMPMetaHandle tree, const Path& path, UTF8String& value, GetValueResult* result) {
    const auto alias = Aliases().find(path);
    if (alias != Aliases().end() && GetValue(tree, alias->second, value, result)) {
        return true;
    }
    const auto constructor = Constructors().find(path);
    return constructor != Constructors().end() && constructor->second(tree, value, result);
}

}  // namespace zephmetadata
