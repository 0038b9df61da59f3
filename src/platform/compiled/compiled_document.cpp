#include "platform/compiled/compiled_document.h"

#include <cstddef>
#include <vector>

namespace zephcore {

namespace {

class CompiledReader {
public:
    explicit CompiledReader(std::string_view bytes) : mRest(bytes) {}

    std::size_t Number() {
        std::size_t number = 0;
        for (unsigned shift = 0;; shift += 7) {
            const auto byte = static_cast<unsigned char>(mRest.front());
            mRest.remove_prefix(1);
            number |= static_cast<std::size_t>(byte & 0x7FU) << shift;
            if (byte < 0x80) {
                return number;
            }
        }
    }

    /// Into a text that exists, whose memory is used again.
    void Text(UTF16String& text) {
        const std::size_t head = Number();
        const std::size_t length = head / 2;
        const bool isWide = head % 2 != 0;
        text.resize(length);
        for (std::size_t i = 0; i < length; ++i) {
            text[i] =
                isWide ? static_cast<char16_t>(Byte(2 * i) | Byte(2 * i + 1) << 8U) : static_cast<char16_t>(Byte(i));
        }
        mRest.remove_prefix(isWide ? 2 * length : length);
    }

private:
    unsigned Byte(std::size_t at) const { return static_cast<unsigned char>(mRest[at]); }

    std::string_view mRest;
};

struct Name {
    UTF16String mAsWritten;
    UTF16String mNamespaceURI;
    UTF16String mLocalName;
};

class Replay {
public:
    Replay(std::string_view document, AbstractParseHandler& handler) : mReader(document), mHandler(handler) {
        mNames.resize(mReader.Number());
        for (Name& name : mNames) {
            mReader.Text(name.mAsWritten);
            mReader.Text(name.mNamespaceURI);
            mReader.Text(name.mLocalName);
        }
    }

    /// One event; false at the end.
    bool Next() {
        const auto event = static_cast<CompiledEvent>(mReader.Number());
        if (event == CompiledEvent::kEnd) {
            return false;
        }
        mLine += mReader.Number();
        const DocumentLineScope line(mLine);
        switch (event) {
            case CompiledEvent::kStartElement:
                StartElement();
                break;
            case CompiledEvent::kEndElement:
                EndElement();
                break;
            case CompiledEvent::kText:
                mReader.Text(mText);
                mHandler.Characters(mText);
                break;
            case CompiledEvent::kStartMapping:
                mReader.Text(mPrefix);
                mReader.Text(mText);
                mHandler.StartPrefixMapping(mPrefix, mText);
                break;
            case CompiledEvent::kEndMapping:
                mReader.Text(mPrefix);
                mHandler.EndPrefixMapping(mPrefix);
                break;
            case CompiledEvent::kEnd:
                break;
        }
        return true;
    }

private:
    void StartElement() {
        const Name& element = mNames[mReader.Number()];
        mAttributes.resize(mReader.Number());
        for (Attribute& attribute : mAttributes) {
            const Name& name = mNames[mReader.Number()];
            attribute.mName = name.mAsWritten;
            attribute.mNamespaceURI = name.mNamespaceURI;
            attribute.mLocalName = name.mLocalName;
            mReader.Text(attribute.mValue);
        }
        mOpen.push_back(&element);
        mHandler.StartElementWithNamespace(element.mAsWritten, element.mNamespaceURI, element.mLocalName, mAttributes);
    }

    void EndElement() {
        const Name& element = *mOpen.back();
        mOpen.pop_back();
        mHandler.EndElementWithNamespace(element.mAsWritten, element.mNamespaceURI, element.mLocalName);
    }

    CompiledReader mReader;
    AbstractParseHandler& mHandler;
    std::vector<Name> mNames;
    std::vector<const Name*> mOpen;
    AttributeList mAttributes;
    UTF16String mPrefix;
    UTF16String mText;
    std::size_t mLine = 0;
};

}  // namespace

void ReplayDocument(std::string_view document, AbstractParseHandler& handler) {
    Replay replay(document, handler);
    handler.StartDocument();
    while (replay.Next()) {
    }
    handler.EndDocument();
}

}  // namespace zephcore
