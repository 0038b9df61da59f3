#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "zephcore/base.h"

namespace zephcore {

/// Bounds on a document; a document beyond one of them is refused as not well formed.
inline constexpr std::size_t kMaxElementDepth = 1000;
inline constexpr std::size_t kMaxTokenBytes = 16U << 20U;  ///< one tag or comment as it stands; a text run as UTF-8
inline constexpr std::size_t kMaxAttributes = 10000;       ///< attributes of one element
inline constexpr std::size_t kMaxNodes = 1000000;          ///< elements and attributes of a document, taken together
inline constexpr std::size_t kMaxNamespaceBytes = 512;     ///< one namespace URI, as it is repeated with every name

/// One attribute as it stands in the document; namespace declarations are no attributes.
struct Attribute {
    UTF16String mName;          ///< as written, prefix included
    UTF16String mNamespaceURI;  ///< empty for a name without prefix
    UTF16String mLocalName;
    UTF16String mValue;  ///< with references resolved by the parser
};

using AttributeList = std::vector<Attribute>;
using AttributeMap = std::map<UTF16String, UTF16String>;  ///< name as written to value

/// Receives the events of one document, in document order. Every default does nothing, but for
/// StartElementWithNamespace and EndElementWithNamespace, which pass on to StartElement and EndElement.
///
/// The text between two other events comes in one piece; so does that of a CDATA section. EndDocument comes only when
/// the whole document was well formed. An exception thrown by a callback ends the parse and leaves the parser's Parse
/// unchanged.
class AbstractParseHandler {
public:
    AbstractParseHandler() = default;
    AbstractParseHandler(const AbstractParseHandler&) = delete;
    AbstractParseHandler& operator=(const AbstractParseHandler&) = delete;
    virtual ~AbstractParseHandler() = default;

    virtual void StartDocument() {}
    virtual void StartElement(const UTF16String& name, const AttributeMap& attributes);
    virtual void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                           const UTF16String& localName, const AttributeList& attributes);
    virtual void EndElement(const UTF16String& name);
    virtual void EndElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                         const UTF16String& localName);
    virtual void StartCDATA() {}
    virtual void EndCDATA() {}
    virtual void Characters(const UTF16String& text);
    virtual void Comment(const UTF16String& text);
    virtual void EndDocument() {}
    virtual void StartPrefixMapping(const UTF16String& prefix, const UTF16String& namespaceURI);
    virtual void EndPrefixMapping(const UTF16String& prefix);
};

/// Parses documents into the events of the handler it owns. Encodings: UTF-8, UTF-16, ISO-8859-1 and US-ASCII.
/// Nothing outside the document is read, and nothing in it is multiplied: a document that declares an entity or a
/// default for an attribute, or refers to an entity that is not predefined, counts as not well formed.
class AbstractDocParser {
public:
    AbstractDocParser() = default;
    AbstractDocParser(const AbstractDocParser&) = delete;
    AbstractDocParser& operator=(const AbstractDocParser&) = delete;
    virtual ~AbstractDocParser() = default;

    /// 0 when the file at @p path was read to its end as a well-formed document, else another number.
    virtual int ParseFile(const UTF16String& path) = 0;
    /// The same for a document in memory.
    virtual int ParseBuffer(const UTF8String& buffer) = 0;
    /// The 1-based line at which the last parse failed; 0 when it did not, or when the file could not be opened.
    virtual std::size_t ErrorLine() const = 0;
};

/// The 1-based line that this thread is reading of a document, for messages about it; 0 where none is read.
std::size_t CurrentDocumentLine();

/// Makes @p line the current one for its life: for messages about a parse that is over.
class DocumentLineScope {
public:
    explicit DocumentLineScope(std::size_t line);
    ~DocumentLineScope();
    DocumentLineScope(const DocumentLineScope&) = delete;
    DocumentLineScope& operator=(const DocumentLineScope&) = delete;

private:
    std::size_t mBefore;
};

/// A parser that delivers its events to @p handler.
std::unique_ptr<AbstractDocParser> GetParser(std::unique_ptr<AbstractParseHandler> handler);

/// @p text with the five predefined references and all numeric character references replaced by what they stand for;
/// anything else that begins with an ampersand stays as written.
UTF16String DecodeReservedCharacters(const UTF16String& text);

/// UTF-8 @p text escaped for XML text and attribute values: the five reserved characters, and tab, line feed and
/// carriage return as numeric references, so that attribute values come back as they were. Characters that XML 1.0
/// cannot carry, and bytes that are no UTF-8, are left out.
UTF8String EncodeReservedCharacters(const UTF8String& text);

}  // namespace zephcore
