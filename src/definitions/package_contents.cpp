#include "definitions/package_contents.h"

#include <algorithm>
#include <utility>

#include "definitions/registry.h"
#include "definitions/schema_files.h"

namespace zephmetadata {

namespace {

/// Takes @p own out of what is registered under @p key, and that itself when a package brought it and nothing is left.
/// Then it keeps its entries, as a host may still hold it, and is returned; null otherwise.
template <typename Owner, typename Entry>
sp<Owner> TakeOutOf(std::map<UTF8String, sp<Owner>>& registered, const UTF8String& key, std::set<sp<Owner>>& ofPackages,
                    std::vector<sp<Entry>> Owner::*entries, const std::set<sp<Entry>>& own) {
    const auto found = registered.find(key);
    if (found == registered.end() || !found->second) {
        return nullptr;
    }
    sp<Owner> owner = found->second;
    auto& list = (*owner).*entries;
    const auto isOwn = [&](const sp<Entry>& entry) { return own.contains(entry); };
    if (!ofPackages.contains(owner) || !std::all_of(list.begin(), list.end(), isOwn)) {
        std::erase_if(list, isOwn);
        return nullptr;
    }
    ofPackages.erase(owner);
    registered.erase(found);
    ForgetFile(owner);
    return owner;
}

}  // namespace

void PackageContents::Add(const sp<SchemaDefinition>& schema) {
    Registry().mPackageSchemas.insert(schema);
    mProperties[schema->mNamespace].insert(schema->mProperties.begin(), schema->mProperties.end());
}

void PackageContents::Add(const sp<TypeDefinition>& type) {
    Registry().mPackageTypes.insert(type);
    mFields[type->mName].insert(type->mFields.begin(), type->mFields.end());
}

void PackageContents::Add(const UTF8String& namespaceURI, const sp<PropertyDefinition>& property) {
    mProperties[namespaceURI].insert(property);
}

void PackageContents::Add(const UTF8String& typeId, const sp<FieldDefinition>& field) {
    mFields[typeId].insert(field);
}

void PackageContents::Add(const sp<PropertyDefinition>& property, const sp<ChoiceDefinition>& choice) {
    mChoices.emplace_back(property, choice);
}

void PackageContents::TakeOut() {
    for (const auto& [property, choice] : mChoices) {
        std::erase(property->mChoices, choice);
    }
    std::set<sp<SchemaDefinition>> gone;
    for (const auto& [namespaceURI, own] : mProperties) {
        gone.insert(TakeOutOf(Registry().mSchemas, namespaceURI, Registry().mPackageSchemas,
                              &SchemaDefinition::mProperties, own));
    }
    for (auto* const listed : {&Registry().mCommonSchemas, &Registry().mDynamicSchemas}) {
        std::erase_if(*listed, [&](const sp<SchemaDefinition>& schema) { return gone.contains(schema); });
    }
    for (const auto& [typeId, own] : mFields) {
        TakeOutOf(Registry().mTypes, typeId, Registry().mPackageTypes, &TypeDefinition::mFields, own);
    }
    *this = {};
}

PackageRecording::PackageRecording(PackageContents& contents) : mOuter(std::exchange(Current(), &contents)) {}

PackageRecording::~PackageRecording() {
    Current() = mOuter;
}

PackageContents*& PackageRecording::Current() {
    static PackageContents* contents = nullptr;
    return contents;
}

}  // namespace zephmetadata
