#pragma once

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// What a package added to the registry, so that it can be taken out again.
class PackageContents {
public:
    void Add(const sp<SchemaDefinition>& schema);
    void Add(const sp<TypeDefinition>& type);
    void Add(const UTF8String& namespaceURI, const sp<PropertyDefinition>& property);
    void Add(const UTF8String& typeId, const sp<FieldDefinition>& field);
    void Add(const sp<PropertyDefinition>& property, const sp<ChoiceDefinition>& choice);

    /// Takes all of it out. What others added meanwhile to a schema or structure of the package stays, and that with it.
    void TakeOut();

private:
    std::map<UTF8String, std::set<sp<PropertyDefinition>>> mProperties;  // by the namespace of the schema
    std::map<UTF8String, std::set<sp<FieldDefinition>>> mFields;         // by the name of the structure
    std::vector<std::pair<sp<PropertyDefinition>, sp<ChoiceDefinition>>> mChoices;
};

/// While it lives, what is registered is added to @p contents. Recordings may be nested: a callback may load a package while
/// another one is loaded.
class PackageRecording {
public:
    explicit PackageRecording(PackageContents& contents);
    ~PackageRecording();
    PackageRecording(const PackageRecording&) = delete;
    PackageRecording& operator=(const PackageRecording&) = delete;

    /// Adds to what is being recorded, if anything is.
    template <typename... Added>
    static void Add(const Added&... added) {
        if (PackageContents* const contents = Current()) {
            contents->Add(added...);
        }
    }

private:
    static PackageContents*& Current();

    PackageContents* mOuter;
};

}  // namespace zephmetadata
