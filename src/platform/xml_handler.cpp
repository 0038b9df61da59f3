#include "zephcore/xml.h"

namespace zephcore {

void AbstractParseHandler::StartElement(const UTF16String& /*name*/, const AttributeMap& /*attributes*/) {}

void AbstractParseHandler::StartElementWithNamespace(const UTF16String& name, const UTF16String& /*namespaceURI*/,
                                                     const UTF16String& /*localName*/,
                                                     const AttributeList& attributes) {
    AttributeMap values;
    for (const Attribute& attribute : attributes) {
        values.emplace(attribute.mName, attribute.mValue);
    }
    StartElement(name, values);
}

void AbstractParseHandler::EndElement(const UTF16String& /*name*/) {}

void AbstractParseHandler::EndElementWithNamespace(const UTF16String& name, const UTF16String& /*namespaceURI*/,
                                                   const UTF16String& /*localName*/) {
    EndElement(name);
}

void AbstractParseHandler::Characters(const UTF16String& /*text*/) {}

void AbstractParseHandler::Comment(const UTF16String& /*text*/) {}

void AbstractParseHandler::StartPrefixMapping(const UTF16String& /*prefix*/, const UTF16String& /*namespaceURI*/) {}

void AbstractParseHandler::EndPrefixMapping(const UTF16String& /*prefix*/) {}

}  // namespace zephcore
