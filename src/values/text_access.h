#pragma once

#include "zephmetadata/values.h"

/// How the text of a value is read and written, by what its definition says it is.
namespace zephmetadata {

struct TextAccess {
    std::optional<UTF8String> (*mGet)(XMPMetaHandle tree, const Path& path);
    void (*mSet)(XMPMetaHandle tree, const Path& path, const UTF8String& value);
    /// The text as it would read after it was set; throws XMPError for a text that cannot be set.
    UTF8String (*mCanonical)(const UTF8String& value);
};

/// The stored text of a simple value.
const TextAccess& SimpleTextAccess();
/// Dates in the canonical form of ISO 8601.
const TextAccess& DateTextAccess();
/// By kind: bags and seqs as joined items, alternatives by their x-default item, everything else as stored.
const TextAccess& TextAccessFor(PrimitiveType type);

bool IsDate(const EntryDefinition& entry);
/// Whether the values that @p entry describes can be set as one text: simple ones, and arrays and alternatives of such.
bool TakesText(const EntryDefinition& entry);

}  // namespace zephmetadata
