#pragma once

#include <vector>

#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// While one lives, this thread finds the entries of large schemas and structures by an index, so that a document may
/// name any number of them in a time that is linear in the document. Meanwhile entries may be appended; nothing else may
/// be done to the lists. Scopes nest: the outermost one keeps the index.
class EntryIndexScope {
public:
    EntryIndexScope();
    ~EntryIndexScope();
    EntryIndexScope(const EntryIndexScope&) = delete;
    EntryIndexScope& operator=(const EntryIndexScope&) = delete;

private:
    bool mIsOutermost;
};

/// The first entry of that name, or null. Cost: outside of an EntryIndexScope linear in the entries.
sp<PropertyDefinition> FindEntry(const std::vector<sp<PropertyDefinition>>& properties, const UTF8String& name);
sp<FieldDefinition> FindEntry(const std::vector<sp<FieldDefinition>>& fields, const UTF8String& name);
/// The first field of that name and namespace.
sp<FieldDefinition> FindField(const std::vector<sp<FieldDefinition>>& fields, const UTF8String& namespaceURI,
                              const UTF8String& name);

}  // namespace zephmetadata
