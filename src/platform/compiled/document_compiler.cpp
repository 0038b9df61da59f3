#include "platform/compiled/document_compiler.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "platform/compiled/compiled_document.h"

namespace zephcore {

namespace {

/// Writes the events that it hears of.
class DocumentCompiler : public AbstractParseHandler {
public:
    explicit DocumentCompiler(std::string& document) : mDocument(document) {}

    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const AttributeList& attributes) override {
        PutEvent(CompiledEvent::kStartElement);
        PutName(name, namespaceURI, localName);
        PutNumber(mEvents, attributes.size());
        for (const Attribute& attribute : attributes) {
            PutName(attribute.mName, attribute.mNamespaceURI, attribute.mLocalName);
            PutText(mEvents, attribute.mValue);
        }
    }
    void EndElementWithNamespace(const UTF16String& /*name*/, const UTF16String& /*namespaceURI*/,
                                 const UTF16String& /*localName*/) override {
        PutEvent(CompiledEvent::kEndElement);
    }
    void Characters(const UTF16String& text) override {
        if (text.find_first_not_of(u" \t\r\n") != UTF16String::npos) {
            PutEvent(CompiledEvent::kText);
            PutText(mEvents, text);
        }
    }
    void StartPrefixMapping(const UTF16String& prefix, const UTF16String& namespaceURI) override {
        PutEvent(CompiledEvent::kStartMapping);
        PutText(mEvents, prefix);
        PutText(mEvents, namespaceURI);
    }
    void EndPrefixMapping(const UTF16String& prefix) override {
        PutEvent(CompiledEvent::kEndMapping);
        PutText(mEvents, prefix);
    }
    void EndDocument() override {
        PutNumber(mDocument, mNumbers.size());
        mDocument += mNames;
        mDocument += mEvents;
        mDocument += static_cast<char>(CompiledEvent::kEnd);
    }

private:
    static void PutNumber(std::string& bytes, std::size_t number) {
        for (; number >= 0x80; number >>= 7U) {
            bytes += static_cast<char>(0x80U | (number & 0x7FU));
        }
        bytes += static_cast<char>(number);
    }

    static void PutText(std::string& bytes, const UTF16String& text) {
        const bool isWide = std::any_of(text.begin(), text.end(), [](char16_t unit) { return unit > 0xFF; });
        PutNumber(bytes, 2 * text.size() + (isWide ? 1 : 0));
        for (const char16_t unit : text) {
            bytes += static_cast<char>(unit & 0xFFU);
            if (isWide) {
                bytes += static_cast<char>(unit >> 8U);
            }
        }
    }

    void PutEvent(CompiledEvent event) {
        mEvents += static_cast<char>(event);
        // A text run is told of once it is over, with the line it began in: never one before that of the last event.
        PutNumber(mEvents, CurrentDocumentLine() - mLine);
        mLine = CurrentDocumentLine();
    }

    void PutName(const UTF16String& name, const UTF16String& namespaceURI, const UTF16String& localName) {
        const auto [found, isNew] = mNumbers.try_emplace({name, namespaceURI, localName}, mNumbers.size());
        if (isNew) {
            PutText(mNames, name);
            PutText(mNames, namespaceURI);
            PutText(mNames, localName);
        }
        PutNumber(mEvents, found->second);
    }

    std::string& mDocument;
    std::map<std::tuple<UTF16String, UTF16String, UTF16String>, std::size_t> mNumbers;
    std::string mNames;
    std::string mEvents;
    std::size_t mLine = 0;
};

}  // namespace

std::optional<std::string> CompileDocument(const UTF8String& document) {
    std::string compiled;
    const auto parser = GetParser(std::make_unique<DocumentCompiler>(compiled));
    return parser->ParseBuffer(document) == 0 ? std::optional(compiled) : std::nullopt;
}

}  // namespace zephcore
