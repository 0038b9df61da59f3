#include "definitions/schema_files.h"

#include <map>

#include "zephcore/files.h"

namespace zephmetadata {

namespace {

/// The file of each definition, by the identity of the object: two that look alike are two.
template <typename Definition>
using FilePaths = std::map<sp<Definition>, UTF16String>;

struct FileAssociations {
    FilePaths<SchemaDefinition> mSchemas;
    FilePaths<TypeDefinition> mTypes;
};

FileAssociations& Associations() {
    static FileAssociations associations;
    return associations;
}

template <typename Definition>
void SetFilePath(FilePaths<Definition>& paths, const UTF16String& path, const sp<Definition>& definition) {
    if (definition) {
        paths[definition] = path;
    }
}

template <typename Definition>
std::vector<sp<Definition>> DefinitionsOfFile(const FilePaths<Definition>& paths, const UTF16String& path) {
    std::vector<sp<Definition>> definitions;
    for (const auto& [definition, itsPath] : paths) {
        if (itsPath == path) {
            definitions.push_back(definition);
        }
    }
    return definitions;
}

void SetTexts(LocalizedTexts& texts, const UTF16String& labelZString, const UTF16String& label,
              const UTF16String& descriptionZString, const UTF16String& description) {
    texts.mLabelZString = labelZString;
    texts.mLabel = label;
    texts.mDescriptionZString = descriptionZString;
    texts.mDescription = description;
}

}  // namespace

bool WriteSchemaFile(const Definitions& definitions, const zephcore::File& file) {
    UTF8String document;
    WriteDefinitionsToBuffer(definitions.first, definitions.second, document);
    if (!zephcore::FileUtils::EnsureDirectoryExists(file.Parent().FullPath())) {
        return false;
    }
    zephcore::FileUtils::SimpleWriteStringToFile(file.FullPath(), document);
    return true;
}

void RewriteSchemaFile(const sp<SchemaDefinition>& schema) {
    const UTF16String path = filePathForSchema(schema);
    if (!path.empty()) {
        WriteSchemaFile({allSchemasFromSourceFile(path), allTypesFromSourceFile(path)}, zephcore::File(path));
    }
}

void SetFilePathForSchema(const UTF16String& path, const sp<SchemaDefinition>& schema) {
    SetFilePath(Associations().mSchemas, path, schema);
}

void SetFilePathForType(const UTF16String& path, const sp<TypeDefinition>& type) {
    SetFilePath(Associations().mTypes, path, type);
}

UTF16String filePathForSchema(const sp<SchemaDefinition>& schema) {
    const auto found = Associations().mSchemas.find(schema);
    return found == Associations().mSchemas.end() ? UTF16String() : found->second;
}

std::vector<sp<SchemaDefinition>> allSchemasFromSourceFile(const UTF16String& path) {
    return DefinitionsOfFile(Associations().mSchemas, path);
}

std::vector<sp<TypeDefinition>> allTypesFromSourceFile(const UTF16String& path) {
    return DefinitionsOfFile(Associations().mTypes, path);
}

void ForgetFile(const sp<SchemaDefinition>& schema) {
    Associations().mSchemas.erase(schema);
}

void ForgetFile(const sp<TypeDefinition>& type) {
    Associations().mTypes.erase(type);
}

void ClearFileAssociations() {
    Associations() = {};
}

sp<SchemaDefinition> CreateNewSchema(const UTF8String& namespaceURI, const UTF8String& prefix,
                                     const UTF16String& labelZString, const UTF16String& label,
                                     const UTF16String& descriptionZString, const UTF16String& description) {
    auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = namespaceURI;
    schema->mPrefix = prefix;
    SetTexts(*schema, labelZString, label, descriptionZString, description);
    return schema;
}

sp<PropertyDefinition> CreateNewProperty(PrimitiveType type, const UTF8String& name, const UTF16String& labelZString,
                                         const UTF16String& label, const UTF16String& descriptionZString,
                                         const UTF16String& description) {
    auto property = std::make_shared<PropertyDefinition>();
    property->mType = PrimitiveTypeAsPrimitiveTypeId(type);
    property->mName = name;
    SetTexts(*property, labelZString, label, descriptionZString, description);
    return property;
}

}  // namespace zephmetadata
