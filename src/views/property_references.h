#pragma once

#include <map>
#include <string_view>

#include "zephmetadata/paths.h"

namespace zephmetadata {

/// The properties that a views document refers to as "prefix:name" or "prefix:structure/prefix:field", by the prefixes
/// that the document declares.
class PropertyReferences {
public:
    explicit PropertyReferences(UTF16String sourceName) : mSourceName(std::move(sourceName)) {}

    /// Prefixes make one flat map, as documents declare them on the root: the end of an inner declaration takes the
    /// prefix away.
    void Declare(const UTF16String& prefix, const UTF16String& namespaceURI) { mNamespaces[prefix] = namespaceURI; }
    void Undeclare(const UTF16String& prefix) { mNamespaces.erase(prefix); }

    struct Reference {
        Path mPath;           ///< empty for one that was reported
        QualifiedName mName;  ///< of a top-level property alone
    };
    Reference Resolve(const UTF16String& value) const;

    void Report(std::u16string_view key, const UTF16String& argument = {}) const;

private:
    std::optional<QualifiedName> Name(std::u16string_view text) const;
    Path Field(const UTF16String& value, std::u16string_view structure, std::u16string_view field) const;

    UTF16String mSourceName;
    std::map<UTF16String, UTF16String> mNamespaces;
};

}  // namespace zephmetadata
