#include "definitions/entry_index.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace zephmetadata {

namespace {

/// Below this an index costs more than it saves.
constexpr std::size_t kFewEntries = 32;

struct Key {
    UTF8String mName;
    std::optional<UTF8String> mNamespace;  ///< absent: any

    friend bool operator<(const Key& left, const Key& right) {
        return std::tie(left.mName, left.mNamespace) < std::tie(right.mName, right.mNamespace);
    }
};

/// Where the first entry of each key stands among the first entries of a list.
struct EntryIndex {
    std::map<Key, std::size_t> mPositions;
    std::size_t mEntries = 0;
};

using Indexes = std::unordered_map<const void*, EntryIndex>;

std::optional<Indexes>& IndexesOfThread() {
    thread_local std::optional<Indexes> indexes;
    return indexes;
}

bool Matches(const EntryDefinition& entry, const Key& key) {
    return entry.mName == key.mName;
}

bool Matches(const FieldDefinition& field, const Key& key) {
    return field.mName == key.mName && (!key.mNamespace || field.mNamespace == *key.mNamespace);
}

void Take(EntryIndex& index, const PropertyDefinition& property) {
    index.mPositions.try_emplace({property.mName, std::nullopt}, index.mEntries);
}

void Take(EntryIndex& index, const FieldDefinition& field) {
    index.mPositions.try_emplace({field.mName, std::nullopt}, index.mEntries);
    index.mPositions.try_emplace({field.mName, field.mNamespace}, index.mEntries);
}

template <typename Entry>
sp<Entry> FindByIndex(EntryIndex& index, const std::vector<sp<Entry>>& entries, const Key& key) {
    if (entries.size() < index.mEntries) {
        index = {};
    }
    for (; index.mEntries < entries.size(); ++index.mEntries) {
        if (const sp<Entry>& entry = entries[index.mEntries]) {
            Take(index, *entry);
        }
    }
    const auto found = index.mPositions.find(key);
    return found == index.mPositions.end() ? nullptr : entries[found->second];
}

template <typename Entry>
sp<Entry> Find(const std::vector<sp<Entry>>& entries, const Key& key) {
    auto& indexes = IndexesOfThread();
    if (indexes && entries.size() > kFewEntries) {
        return FindByIndex((*indexes)[&entries], entries, key);
    }
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const sp<Entry>& entry) { return entry && Matches(*entry, key); });
    return found == entries.end() ? nullptr : *found;
}

}  // namespace

EntryIndexScope::EntryIndexScope() : mIsOutermost(!IndexesOfThread()) {
    if (mIsOutermost) {
        IndexesOfThread().emplace();
    }
}

EntryIndexScope::~EntryIndexScope() {
    if (mIsOutermost) {
        IndexesOfThread().reset();
    }
}

sp<PropertyDefinition> FindEntry(const std::vector<sp<PropertyDefinition>>& properties, const UTF8String& name) {
    return Find(properties, {name, std::nullopt});
}

sp<FieldDefinition> FindEntry(const std::vector<sp<FieldDefinition>>& fields, const UTF8String& name) {
    return Find(fields, {name, std::nullopt});
}

sp<FieldDefinition> FindField(const std::vector<sp<FieldDefinition>>& fields, const UTF8String& namespaceURI,
                              const UTF8String& name) {
    return Find(fields, {name, namespaceURI});
}

}  // namespace zephmetadata
