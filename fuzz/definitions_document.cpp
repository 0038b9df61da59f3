// Definitions documents, from parsing to the paths over what was registered, and written back.
#include "library_session.h"
#include "support.h"
#include "zephmetadata/library.h"
#include "zephmetadata/paths.h"

using namespace zephmetadata;

namespace {

constexpr std::ptrdiff_t kMaxPaths = 100;  // structures that hold themselves have more than one can wait for

void WalkSchema(const sp<SchemaDefinition>& schema) {
    std::ptrdiff_t count = 0;
    for (const Path& path : DescendantLeafPaths(schema)) {
        TypeEntryDefinition(path);
        IsPathAnArray(path, true);
        if (++count == kMaxPaths) {
            return;
        }
    }
}

/// Keeps of @p definitions those that the registry does not have yet.
Definitions Unregistered(Definitions definitions) {
    std::erase_if(definitions.first,
                  [](const auto& schema) { return NamespaceDefinition(schema->mNamespace) != nullptr; });
    std::erase_if(definitions.second, [](const auto& type) { return TypeIdDefinition(type->mName) != nullptr; });
    return definitions;
}

void CheckRegistered(const Definitions& parsed, const Definitions& registered) {
    fuzz::Require(registered.first.empty() || registered.first.size() == parsed.first.size(),
                  "all schemas of a document are registered, or none is returned");
    fuzz::Require(registered.second.empty() || registered.second.size() == parsed.second.size(),
                  "all types of a document are registered, or none is returned");
    for (const auto& type : registered.second) {
        fuzz::Require(TypeIdDefinition(type->mName) == type, "a returned type is registered");
    }
    for (const auto& schema : registered.first) {
        fuzz::Require(NamespaceDefinition(schema->mNamespace) == schema, "a returned schema is registered");
        WalkSchema(schema);
    }
}

std::string Written(const Definitions& definitions) {
    std::string document;
    WriteDefinitionsToBuffer(definitions.first, definitions.second, document);
    return document;
}

/// What the first writing leaves out or fills in is out or in for good.
void CheckWriting(const Definitions& parsed) {
    const Definitions read = ParseBufferForDefinitions(Written(parsed), u"written");
    const std::string again = Written(read);
    fuzz::Require(read.first.size() == parsed.first.size() && read.second.size() == parsed.second.size(),
                  "what is written can be read");
    fuzz::Require(Written(ParseBufferForDefinitions(again, u"again")) == again, "what was read is written as it was");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    const std::string document(fuzz::Text(data, size));
    const Definitions parsed = ParseBufferForDefinitions(document, u"fuzz");
    CheckWriting(parsed);
    const Definitions unregistered = Unregistered(parsed);
    CheckRegistered(parsed, ParseBufferAndRegisterDefinitions(document, u"fuzz", false));
    // The next input meets the registry without the definitions of this one.
    for (const auto& schema : unregistered.first) {
        RemoveSchemaDefinition(schema);
    }
    for (const auto& type : unregistered.second) {
        RemoveTypeDefinition(type);
    }
    return 0;
}
