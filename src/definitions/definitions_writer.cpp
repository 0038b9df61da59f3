#include <cmath>
#include <string_view>

#include "frame/xml_writer.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {

namespace {

using zephcore::UTF16to8;
using zephcore::UTF8to16;

/// @p value as an attribute holds it. Readers decode references once more after the XML parser did: a text that would
/// come back as another one for that is escaped twice.
UTF8String Escaped(const UTF8String& value) {
    const UTF8String escaped = zephcore::EncodeReservedCharacters(value);
    const bool holdsReference =
        value.find('&') != UTF8String::npos && UTF16to8(zephcore::DecodeReservedCharacters(UTF8to16(value))) != value;
    return holdsReference ? zephcore::EncodeReservedCharacters(escaped) : escaped;
}

/// The text of a bound; empty for one that is no finite number, which has no decimal text and bounds nothing.
UTF8String NumberText(const std::optional<double>& number) {
    constexpr int kFractionDigits = 2;
    return number && std::isfinite(*number) ? UTF16to8(zephcore::NumberToString(*number, 1, kFractionDigits))
                                            : UTF8String();
}

UTF8String LabelText(const UTF16String& zString, const UTF16String& text) {
    return UTF16to8(zString.empty() ? text : zString);
}

class DefinitionsWriter {
public:
    explicit DefinitionsWriter(XMLWriter& document) : mDocument(document) {}

    template <typename Schemas, typename Types>
    void Document(const Schemas& schemas, const Types& types) {
        if (boost::empty(schemas) && boost::empty(types)) {
            return;
        }
        mDocument.Begin("xmp_definitions");
        mDocument.BeginChildren();
        WriteAll(schemas);
        WriteAll(types);
        mDocument.EndChildren("xmp_definitions");
    }

private:
    template <typename Range>
    void WriteAll(const Range& definitions) {
        for (const auto& definition : definitions) {
            if (definition) {
                Write(*definition);
            }
        }
    }

    void Write(const SchemaDefinition& schema) {
        mDocument.Begin("xmp_schema");
        NamespaceAttributes(schema.mNamespace, schema.mPrefix);
        TextAttributes(schema);
        mDocument.BeginChildren();
        WriteAll(schema.mProperties);
        mDocument.EndChildren("xmp_schema");
    }

    void Write(const PropertyDefinition& property) {
        mDocument.Begin("xmp_property");
        Attribute("category", property.mInternal ? "internal" : "external");
        EntryAttributes(property);
        FinishEntry("xmp_property", property);
    }

    void Write(const TypeDefinition& type) {
        mDocument.Begin("xmp_type");
        EntryAttributes(type);
        if (type.mFields.empty()) {
            FinishEntry("xmp_type", type);
            return;
        }
        mDocument.BeginChildren();
        WriteAll(type.mFields);
        mDocument.EndChildren("xmp_type");
    }

    void Write(const FieldDefinition& field) { WriteNamespaced("xmp_field", field); }
    void Write(const QualifierDefinition& qualifier) { WriteNamespaced("xmp_qualifier", qualifier); }

    template <typename Entry>
    void WriteNamespaced(std::string_view element, const Entry& entry) {
        mDocument.Begin(element);
        NamespaceAttributes(entry.mNamespace, entry.mPrefix);
        EntryAttributes(entry);
        FinishEntry(element, entry);
    }

    void Write(const ChoiceDefinition& choice) {
        mDocument.Begin("xmp_choice");
        Attribute("raw_value", choice.mRawValue);
        Attribute("label", LabelText(choice.mLabelZString, choice.mLabel));
        mDocument.EndEmpty();
    }

    void NamespaceAttributes(const UTF8String& namespaceURI, const UTF8String& prefix) {
        Attribute("namespace", namespaceURI);
        Attribute("prefix", prefix);
    }

    void TextAttributes(const LocalizedTexts& texts) {
        Attribute("label", LabelText(texts.mLabelZString, texts.mLabel));
        Attribute("description", LabelText(texts.mDescriptionZString, texts.mDescription));
    }

    void EntryAttributes(const EntryDefinition& entry) {
        Attribute("name", entry.mName);
        Attribute("type", entry.mType.value_or(UTF8String()));
        Attribute("extends", entry.mExtends ? PrimitiveTypeAsPrimitiveTypeId(*entry.mExtends) : UTF8String());
        TextAttributes(entry);
        Attribute("element_type", entry.mElementType.value_or(UTF8String()));
        Attribute("pattern", entry.mPattern.value_or(UTF8String()));
        Attribute("max", NumberText(entry.mMax));
        Attribute("min", NumberText(entry.mMin));
        Attribute("deprecated", entry.mDeprecated.value_or(false) ? "true" : "");
    }

    /// Ends the start tag of an entry and writes what is inside it.
    void FinishEntry(std::string_view element, const EntryDefinition& entry) {
        if (entry.mChoices.empty() && entry.mQualifiers.empty()) {
            mDocument.EndEmpty();
            return;
        }
        if (!entry.mChoices.empty() && !entry.mElementType) {
            Attribute("element_type", kTypeText);
        }
        mDocument.BeginChildren();
        WriteAll(entry.mChoices);
        WriteAll(entry.mQualifiers);
        mDocument.EndChildren(element);
    }

    void Attribute(std::string_view name, const UTF8String& value) { mDocument.EncodedAttribute(name, Escaped(value)); }

    XMLWriter& mDocument;
};

}  // namespace

void WriteDefinitionsToBuffer(const PolyRange<sp<SchemaDefinition>>& schemas,
                              const PolyRange<sp<TypeDefinition>>& types, UTF8String& output) {
    XMLWriter document;
    DefinitionsWriter(document).Document(schemas, types);
    output = document.Text();
}

}  // namespace zephmetadata
