#include "definitions/loading.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "definitions/definitions_parser.h"
#include "definitions/entry_index.h"
#include "definitions/registry.h"
#include "definitions/schema_files.h"
#include "frame/errors.h"
#include "zephcore/environment.h"
#include "zephcore/files.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephmetadata/library.h"

namespace zephmetadata {

namespace {

/// The documents that belong to no standard schema; later ones build on the types of earlier ones.
constexpr auto kGeneralDocuments =
    std::to_array<std::string_view>({"primitive_type", "constructed_type", "aux", "corvid"});

/// The document of each standard schema, in the order of the enumeration.
constexpr auto kStandardDocuments = std::to_array<std::string_view>({"dc",        "xmp",
                                                                     "xmpRights", "xmpMM",
                                                                     "xmpBJ",     "xmpTPg",
                                                                     "xmpDM",     "xmpPMAssign",
                                                                     "xmpPMMemo", "pdf",
                                                                     "tessera",   "kvs",
                                                                     "exif",      "exifEX",
                                                                     "tiff",      "xmpCA",
                                                                     "xmpScript", "bext",
                                                                     "iptcCore",  "iptcExtension",
                                                                     "dicom",     "plus",
                                                                     "mobile",    "as11core",
                                                                     "as11ukdpp", "as11structural",
                                                                     "iXML"});
static_assert(kStandardDocuments.size() == static_cast<std::size_t>(kStandardSchema_IXML) + 1);

/// Documents of these names in a custom folder are left over from older versions, whose schemas are built in today.
constexpr auto kSupersededFiles = std::to_array<std::u16string_view>({u"DICOM.xml", u"Mobile.xml"});

/// Registers all of @p definitions with @p registerOne, whatever becomes of the others; whether all were accepted.
template <typename Definition, typename Register>
bool RegisterAll(const std::vector<sp<Definition>>& definitions, const Register& registerOne) {
    bool accepted = true;
    for (const auto& definition : definitions) {
        accepted = registerOne(definition) && accepted;
    }
    return accepted;
}

/// Structures that exist take up new fields where @p addedFields is there to tell of them; elsewhere they are duplicates.
Definitions Register(Definitions definitions, const UTF16String& file, bool merge,
                     StructureFields* addedFields = nullptr) {
    const EntryIndexScope indexed;
    const RecordLimit limit;
    auto& [schemas, types] = definitions;
    DropNulls(types);
    const auto registerType = [&](const auto& type) {
        DropNulls(type->mFields);
        return addedFields != nullptr && AddsFieldsAlone(*type) ? AddFields(*type, file, *addedFields)
                                                                : RegisterTypeDefinition(type, file);
    };
    if (RegisterAll(types, registerType)) {
        CheckFieldTypes(types, file);
    } else {
        types.clear();
    }
    if (merge) {
        std::erase_if(schemas, [&](const auto& schema) { return !RegisterSchemaDefinition(schema, file, true); });
    } else if (!RegisterAll(schemas,
                            [&](const auto& schema) { return RegisterSchemaDefinition(schema, file, false); })) {
        schemas.clear();
    }
    CheckPropertyTypes(schemas, file);
    return definitions;
}

Definitions LoadBuiltIn(std::string_view word) {
    const UTF8String name = UTF8String(word) + "_definitions";
    std::string_view document;
    if (!zephcore::GetBinaryFromModule(zephcore::Module::kOwn, name, "events", document)) {
        return {};
    }
    const UTF16String source = zephcore::UTF8to16(name);
    return Register(ReplayDefinitions(document, source), source, false);
}

void List(const sp<SchemaDefinition>& schema) {
    (schema->mDynamic ? Registry().mDynamicSchemas : Registry().mCommonSchemas).push_back(schema);
}

void LoadStandardSchema(StandardSchema value) {
    const Definitions loaded = LoadBuiltIn(kStandardDocuments[static_cast<std::size_t>(value)]);
    if (loaded.first.size() != 1) {
        return;
    }
    const sp<SchemaDefinition>& schema = loaded.first.front();
    if (Registry().mStandardNamespaces.try_emplace(value, schema->mNamespace).second) {
        schema->mCustom = false;
        List(schema);
    }
}

/// Loads the translations that stand beside a document: "loc/TITLE_LANGUAGE.dat".
void LoadTranslations(const zephcore::Dir& folder, const zephcore::File& document) {
    const UTF16String name = document.GetTitle() + u"_" + zephcore::Locale::ApplicationLangauge() + u".dat";
    const zephcore::File translations(zephcore::Dir(folder, u"loc"), name);
    if (translations.Exists()) {
        zephcore::Localizer::Get().LoadFile(translations.FullPath());
    }
}

/// Calls @p load with the folder and each document of it that counts.
template <typename Load>
void ForCustomDocuments(const UTF16String& path, const Load& load) {
    const zephcore::Dir folder(path);
    for (const zephcore::File& document : folder.Files()) {
        const bool superseded =
            std::find(kSupersededFiles.begin(), kSupersededFiles.end(), document.GetName()) != kSupersededFiles.end();
        if (document.GetExtension(true) == u".xml" && !superseded) {
            load(folder, document);
        }
    }
}

void LoadCustomFolder(const UTF16String& path) {
    ForCustomDocuments(path, [](const zephcore::Dir& folder, const zephcore::File& document) {
        LoadTranslations(folder, document);
        LoadDefinitionsDocument(document.FullPath(), DocumentOrigin::kCustomFolder);
    });
}

/// How many properties the registered schemas of some namespaces had, before a document was registered.
class SchemaSizes {
public:
    explicit SchemaSizes(const std::vector<sp<SchemaDefinition>>& schemas) {
        for (const auto& schema : schemas) {
            if (mSeen.insert(schema->mNamespace).second) {
                mSizes.emplace_back(schema->mNamespace, Size(schema->mNamespace));
            }
        }
    }

    /// The namespaces that have been registered or added to since.
    std::vector<UTF8String> Changed() const {
        std::vector<UTF8String> changed;
        for (const auto& [schemaNamespace, size] : mSizes) {
            if (Size(schemaNamespace) != size) {
                changed.push_back(schemaNamespace);
            }
        }
        return changed;
    }

private:
    /// Absent for a namespace that is not registered: a schema may have no properties.
    static std::optional<std::size_t> Size(const UTF8String& schemaNamespace) {
        const sp<SchemaDefinition> schema = NamespaceDefinition(schemaNamespace);
        return schema ? std::optional(schema->mProperties.size()) : std::nullopt;
    }

    std::set<UTF8String> mSeen;
    std::vector<std::pair<UTF8String, std::optional<std::size_t>>> mSizes;
};

}  // namespace

Definitions ParseBufferAndRegisterDefinitions(const UTF8String& buffer, const UTF16String& file, bool merge) {
    return Register(ParseBufferForDefinitions(buffer, file), file, merge);
}

Definitions ParseDocumentAndRegisterDefinitions(const UTF16String& path, bool merge) {
    return Register(ParseDocumentForDefinitions(path), path, merge);
}

Definitions RegisterDefinitions(const Definitions& parsed, const UTF16String& file, bool merge) {
    return Register(parsed, file, merge);
}

Definitions RegisterPackageDefinitions(const Definitions& parsed, const UTF16String& file) {
    StructureFields addedFields;
    return Register(parsed, file, true, &addedFields);
}

LoadedDocument LoadDefinitionsDocument(const UTF16String& path, DocumentOrigin origin) {
    return LoadDefinitions(ParseDocumentForDefinitions(path), path, origin);
}

LoadedDocument LoadDefinitions(Definitions parsed, const UTF16String& path, DocumentOrigin origin) {
    const bool fromPackage = origin != DocumentOrigin::kCustomFolder;
    const bool isFile = origin != DocumentOrigin::kPackageInMemory;
    const SchemaSizes before(parsed.first);
    LoadedDocument loaded;
    loaded.mRegistered = Register(std::move(parsed), path, fromPackage, fromPackage ? &loaded.mFields : nullptr);
    loaded.mNamespaces = before.Changed();
    for (const auto& schema : loaded.mRegistered.first) {
        List(schema);
        if (isFile) {
            SetFilePathForSchema(path, schema);
        }
        if (schema->mDynamic || fromPackage || schema->mNamespace == DICOMNamespaceURI ||
            schema->mNamespace == SWFNamespaceURI) {
            schema->mCustom = false;
        }
    }
    if (isFile) {
        std::ranges::for_each(loaded.mRegistered.second, [&](const auto& type) { SetFilePathForType(path, type); });
    }
    return loaded;
}

void LoadBuiltInAndCustomDefinitions() {
    for (const std::string_view word : kGeneralDocuments) {
        LoadBuiltIn(word);
    }
    for (std::size_t value = 0; value < kStandardDocuments.size(); ++value) {
        LoadStandardSchema(static_cast<StandardSchema>(value));
    }
    LoadCustomFolder(CustomDefinitionsGlobalDirectory());
    LoadCustomFolder(CustomDefinitionsUserDirectory());
}

void LoadCustomTranslations() {
    ForCustomDocuments(CustomDefinitionsGlobalDirectory(), LoadTranslations);
    ForCustomDocuments(CustomDefinitionsUserDirectory(), LoadTranslations);
}

void ClearDefinitions() {
    Registry() = {};
    ClearFoundSchemas();
    ClearFileAssociations();
}

}  // namespace zephmetadata
