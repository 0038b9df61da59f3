#include <cmath>
#include <string_view>

#include "zephcore/text.h"
#include "zephcore/xml.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {

namespace {

using zephcore::UTF16to8;
using zephcore::UTF8to16;

constexpr std::string_view kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n";

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
    explicit DefinitionsWriter(UTF8String& text) : mText(text) {}

    template <typename Schemas, typename Types>
    void Document(const Schemas& schemas, const Types& types) {
        mText += kDeclaration;
        if (boost::empty(schemas) && boost::empty(types)) {
            return;
        }
        Begin("xmp_definitions");
        BeginChildren();
        WriteAll(schemas);
        WriteAll(types);
        EndChildren("xmp_definitions");
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
        Begin("xmp_schema");
        NamespaceAttributes(schema.mNamespace, schema.mPrefix);
        TextAttributes(schema);
        BeginChildren();
        WriteAll(schema.mProperties);
        EndChildren("xmp_schema");
    }

    void Write(const PropertyDefinition& property) {
        Begin("xmp_property");
        Attribute("category", property.mInternal ? "internal" : "external");
        EntryAttributes(property);
        FinishEntry("xmp_property", property);
    }

    void Write(const TypeDefinition& type) {
        Begin("xmp_type");
        EntryAttributes(type);
        if (type.mFields.empty()) {
            FinishEntry("xmp_type", type);
            return;
        }
        BeginChildren();
        WriteAll(type.mFields);
        EndChildren("xmp_type");
    }

    void Write(const FieldDefinition& field) { WriteNamespaced("xmp_field", field); }
    void Write(const QualifierDefinition& qualifier) { WriteNamespaced("xmp_qualifier", qualifier); }

    template <typename Entry>
    void WriteNamespaced(std::string_view element, const Entry& entry) {
        Begin(element);
        NamespaceAttributes(entry.mNamespace, entry.mPrefix);
        EntryAttributes(entry);
        FinishEntry(element, entry);
    }

    void Write(const ChoiceDefinition& choice) {
        Begin("xmp_choice");
        Attribute("raw_value", choice.mRawValue);
        Attribute("label", LabelText(choice.mLabelZString, choice.mLabel));
        mText += " />\n";
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
            mText += " />\n";
            return;
        }
        if (!entry.mChoices.empty() && !entry.mElementType) {
            Attribute("element_type", kTypeText);
        }
        BeginChildren();
        WriteAll(entry.mChoices);
        WriteAll(entry.mQualifiers);
        EndChildren(element);
    }

    void Begin(std::string_view element) {
        mText.append(mLevel, '\t');
        mText += '<';
        mText += element;
    }

    /// Nothing for an empty value: readers take a missing attribute for an empty one.
    void Attribute(std::string_view name, const UTF8String& value) {
        const UTF8String escaped = Escaped(value);
        if (escaped.empty()) {
            return;
        }
        mText += ' ';
        mText += name;
        mText += "=\"";
        mText += escaped;
        mText += '"';
    }

    void BeginChildren() {
        mText += ">\n";
        ++mLevel;
    }

    void EndChildren(std::string_view element) {
        --mLevel;
        mText.append(mLevel, '\t');
        mText += "</";
        mText += element;
        mText += ">\n";
    }

    UTF8String& mText;
    std::size_t mLevel = 0;
};

}  // namespace

void WriteDefinitionsToBuffer(const PolyRange<sp<SchemaDefinition>>& schemas,
                              const PolyRange<sp<TypeDefinition>>& types, UTF8String& output) {
    UTF8String text;
    DefinitionsWriter(text).Document(schemas, types);
    output = std::move(text);
}

}  // namespace zephmetadata
