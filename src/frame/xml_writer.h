#pragma once

#include <string_view>

#include "zephmetadata/types.h"

namespace zephmetadata {

/// Builds a document in memory as all documents of this library are laid out: the declaration, then one element a line,
/// indented by one tab a level. Calls have to nest as elements do.
class XMLWriter {
public:
    XMLWriter();

    /// Begins a start tag; attributes may follow.
    void Begin(std::string_view element);
    /// Nothing for an empty value: readers take a missing attribute for an empty one.
    void Attribute(std::string_view name, const UTF8String& value);
    /// The same for a value that is encoded already.
    void EncodedAttribute(std::string_view name, const UTF8String& value);
    /// Ends the start tag of an element with content.
    void BeginChildren();
    /// Ends the start tag of an element without content.
    void EndEmpty();
    void EndChildren(std::string_view element);
    /// A whole element without attributes and content.
    void Empty(std::string_view element);

    const UTF8String& Text() const { return mText; }

private:
    UTF8String mText;
    std::size_t mLevel = 0;
};

}  // namespace zephmetadata
