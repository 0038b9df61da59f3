#include "definitions/definitions_parser.h"

#include <algorithm>
#include <array>

#include "frame/errors.h"
#include "platform/compiled/compiled_document.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

using zephcore::Attribute;
using zephcore::AttributeList;
using zephcore::UTF16to8;
using zephcore::UTF8to16;

constexpr std::u16string_view kInvalidXML = u"$$$/zephmetadata/DefinitionsParser/InvalidXML=invalid XML.";
constexpr std::u16string_view kInvalidProperty =
    u"$$$/zephmetadata/DefinitionsParser/InvalidPropertyTag=invalid property tag #{quot}@0#{quot}.";
constexpr std::u16string_view kInvalidField =
    u"$$$/zephmetadata/DefinitionsParser/InvalidFieldTag=invalid field tag #{quot}@0#{quot}.";
constexpr std::u16string_view kInvalidChoice =
    u"$$$/zephmetadata/DefinitionsParser/InvalidChoiceTag=invalid choice tag.";
constexpr std::u16string_view kInvalidQualifier =
    u"$$$/zephmetadata/DefinitionsParser/InvalidQualifierTag=invalid qualifier tag.";
constexpr std::u16string_view kInvalidElement =
    u"$$$/zephmetadata/DefinitionsParser/InvalidDefinitionsTag=invalid definitions tag #{quot}@0#{quot}.";
constexpr std::u16string_view kTooLong =
    u"$$$/zephmetadata/DefinitionsParser/TooLong=attribute #{quot}@0#{quot} is too long; it counts as missing.";
constexpr std::u16string_view kInvalidExtends =
    u"$$$/zephmetadata/ParseEntryDefinition/InvalidExtendType=Entry must extend valid primitive type";

/// The attributes whose values stand for something wherever it is meant, in paths, records and written documents: one that
/// is long would be multiplied.
constexpr auto kIdentifiers =
    std::to_array<std::u16string_view>({u"namespace", u"prefix", u"name", u"type", u"element_type"});

bool IsTooLong(const Attribute& attribute) {
    return attribute.mValue.size() > zephcore::kMaxNamespaceBytes &&
           std::find(kIdentifiers.begin(), kIdentifiers.end(), attribute.mLocalName) != kIdentifiers.end();
}

/// The namespace of the user-interface hints in UTF-16, converted once.
const UTF16String& HintsNamespace() {
    static const UTF16String uri = UTF8to16(QuilletUINamespaceURI);
    return uri;
}

}  // namespace

/// Values of the attributes without a namespace, by name; a missing attribute reads as the empty text.
class DefinitionsParser::Reader {
public:
    explicit Reader(const AttributeList& attributes) : mAttributes(attributes) {}

    UTF16String Text(std::u16string_view name) const { return zephcore::DecodeReservedCharacters(Raw(name)); }
    UTF8String UTF8(std::u16string_view name) const { return UTF16to8(Text(name)); }
    UTF16String Localised(std::u16string_view name) const {
        return zephcore::DecodeReservedCharacters(zephcore::Localizer::Get().Translate(Raw(name)));
    }
    /// Absent when the attribute is missing or empty.
    std::optional<UTF8String> Optional(std::u16string_view name) const {
        UTF8String value = UTF8(name);
        return value.empty() ? std::nullopt : std::optional(std::move(value));
    }
    std::optional<double> Number(std::u16string_view name) const {
        const UTF16String value = Text(name);
        return value.empty() ? std::nullopt : std::optional(zephcore::StringToNumber(value));
    }
    /// The texts of @p texts; an empty label is replaced by @p defaultLabel.
    void Texts(LocalizedTexts& texts, const UTF16String& defaultLabel) const {
        texts.mLabelZString = Text(u"label");
        texts.mLabel = Localised(u"label");
        texts.mDescriptionZString = Text(u"description");
        texts.mDescription = Localised(u"description");
        if (texts.mLabel.empty()) {
            texts.mLabel = defaultLabel;
        }
    }

    /// Whether a user-interface hint is set.
    bool Hint(std::u16string_view name) const {
        return zephcore::DecodeReservedCharacters(Raw(name, HintsNamespace())) == u"true";
    }

private:
    const UTF16String& Raw(std::u16string_view name, const UTF16String& namespaceURI = {}) const {
        static const UTF16String empty;
        const auto found = std::find_if(mAttributes.begin(), mAttributes.end(), [&](const Attribute& attribute) {
            return attribute.mLocalName == name && attribute.mNamespaceURI == namespaceURI;
        });
        return found == mAttributes.end() ? empty : found->mValue;
    }

    const AttributeList& mAttributes;
};

DefinitionsParser::DefinitionsParser(Definitions& result, UTF16String sourceFile)
    : mResult(result), mSourceFile(std::move(sourceFile)) {}

DefinitionsParser::~DefinitionsParser() = default;

void DefinitionsParser::Report(std::u16string_view key, const UTF16String& argument) const {
    SendError(ErrorKind::DefinitionParsingError, zephcore::ZString(key, {argument}), mSourceFile);
}

void DefinitionsParser::StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                                  const UTF16String& localName, const AttributeList& attributes) {
    struct ElementRow {
        std::u16string_view mName;
        void (DefinitionsParser::*mStart)(const Reader&);
    };
    static constexpr auto kElements = std::to_array<ElementRow>({
        {u"xmp_property", &DefinitionsParser::StartProperty},
        {u"xmp_choice", &DefinitionsParser::StartChoice},
        {u"xmp_field", &DefinitionsParser::StartField},
        {u"xmp_type", &DefinitionsParser::StartType},
        {u"xmp_qualifier", &DefinitionsParser::StartQualifier},
        {u"xmp_schema", &DefinitionsParser::StartSchema},
    });
    if (std::any_of(attributes.begin(), attributes.end(), IsTooLong)) {
        StartElementWithNamespace(name, namespaceURI, localName, WithoutLongIdentifiers(attributes));
        return;
    }
    const Reader reader(attributes);
    if (namespaceURI == HintsNamespace()) {
        if (localName == u"separator") {
            MarkSeparator(reader);
        }
        return;
    }
    // A default namespace makes no difference but for properties, which are told from elements of other vocabularies.
    const auto* row = std::find_if(kElements.begin(), kElements.end(), [&](const ElementRow& candidate) {
        return candidate.mName == name && (namespaceURI.empty() || name != u"xmp_property");
    });
    if (row != kElements.end()) {
        (this->*row->mStart)(reader);
    } else if (name != u"xmp_definitions") {
        Report(kInvalidElement, name);
    }
}

AttributeList DefinitionsParser::WithoutLongIdentifiers(AttributeList attributes) const {
    std::erase_if(attributes, [this](const Attribute& attribute) {
        if (IsTooLong(attribute)) {
            Report(kTooLong, attribute.mName);
        }
        return IsTooLong(attribute);
    });
    return attributes;
}

void DefinitionsParser::StartSchema(const Reader& reader) {
    const auto schema = std::make_shared<SchemaDefinition>();
    schema->mLine = zephcore::CurrentDocumentLine();
    schema->mNamespace = reader.UTF8(u"namespace");
    schema->mPrefix = reader.UTF8(u"prefix");
    reader.Texts(*schema, UTF8to16(schema->mPrefix));
    schema->mDynamic = reader.Text(u"dynamic") == u"true";
    mCurrentProperties = &schema->mProperties;
    mResult.first.push_back(schema);
}

void DefinitionsParser::StartProperty(const Reader& reader) {
    if (mCurrentProperties == nullptr) {
        Report(kInvalidProperty, reader.Text(u"name"));
        return;
    }
    const auto property = std::make_shared<PropertyDefinition>();
    property->mInternal = reader.Text(u"category") == u"internal";
    ReadEntry(reader, *property);
    if (reader.Hint(u"multiLine")) {
        property->mUIAttributes = UIAttributes{.mSeparator = false, .mMultiLine = true};
    }
    mCurrentChoices = &property->mChoices;
    mCurrentQualifiers = &property->mQualifiers;
    mCurrentProperties->push_back(property);
}

void DefinitionsParser::MarkSeparator(const Reader& reader) {
    if (mCurrentProperties == nullptr) {
        Report(kInvalidProperty, reader.Text(u"name"));
        return;
    }
    if (mCurrentProperties->empty()) {
        return;
    }
    std::optional<UIAttributes>& hints = mCurrentProperties->back()->mUIAttributes;
    hints = hints.value_or(UIAttributes());
    hints->mSeparator = true;
}

void DefinitionsParser::StartType(const Reader& reader) {
    const auto type = std::make_shared<TypeDefinition>();
    ReadEntry(reader, *type);
    mCurrentFields = &type->mFields;
    mCurrentChoices = &type->mChoices;
    mCurrentQualifiers = &type->mQualifiers;
    mResult.second.push_back(type);
}

void DefinitionsParser::StartField(const Reader& reader) {
    if (mCurrentFields == nullptr) {
        Report(kInvalidField, reader.Text(u"name"));
        return;
    }
    const auto field = std::make_shared<FieldDefinition>();
    field->mNamespace = reader.UTF8(u"namespace");
    field->mPrefix = reader.UTF8(u"prefix");
    ReadEntry(reader, *field);
    mCurrentChoices = &field->mChoices;
    mCurrentQualifiers = &field->mQualifiers;
    mCurrentFields->push_back(field);
}

void DefinitionsParser::StartChoice(const Reader& reader) {
    if (mCurrentChoices == nullptr) {
        Report(kInvalidChoice);
        return;
    }
    const auto choice = std::make_shared<ChoiceDefinition>();
    choice->mRawValue = reader.UTF8(u"raw_value");
    choice->mLabelZString = reader.Text(u"label");
    choice->mLabel = reader.Localised(u"label");
    if (choice->mLabel.empty()) {
        choice->mLabel = UTF8to16(choice->mRawValue);
    }
    mCurrentChoices->push_back(choice);
}

void DefinitionsParser::StartQualifier(const Reader& reader) {
    if (mCurrentQualifiers == nullptr) {
        Report(kInvalidQualifier);
        return;
    }
    const auto qualifier = std::make_shared<QualifierDefinition>();
    qualifier->mNamespace = reader.UTF8(u"namespace");
    qualifier->mPrefix = reader.UTF8(u"prefix");
    ReadEntry(reader, *qualifier);
    mCurrentChoices = &qualifier->mChoices;
    mCurrentQualifiers->push_back(qualifier);
}

void DefinitionsParser::ReadEntry(const Reader& reader, EntryDefinition& entry) {
    entry.mLine = zephcore::CurrentDocumentLine();
    entry.mType = reader.Optional(u"type");
    entry.mName = reader.UTF8(u"name");
    if (const auto extends = reader.Optional(u"extends")) {
        entry.mExtends = PrimitiveTypeIdAsPrimitiveType(*extends);
        if (!entry.mExtends) {
            // Without a context: this rule is about the entry, wherever it came from.
            SendError(ErrorKind::DefinitionParsingError, zephcore::ZString(kInvalidExtends), {});
        }
    }
    entry.mElementType = reader.Optional(u"element_type");
    entry.mPattern = reader.Optional(u"pattern");
    entry.mMax = reader.Number(u"max");
    entry.mMin = reader.Number(u"min");
    if (const auto deprecated = reader.Optional(u"deprecated")) {
        entry.mDeprecated = *deprecated == "true";
    }
    reader.Texts(entry, reader.Text(u"name"));
}

namespace {

/// Runs one parse over @p result; true when the document is well-formed.
template <typename Parse>
bool RunParser(Definitions& result, const UTF16String& sourceFile, const Parse& parse) {
    const RecordLimit limit;
    const auto parser = zephcore::GetParser(std::make_unique<DefinitionsParser>(result, sourceFile));
    if (parse(*parser) == 0) {
        return true;
    }
    const zephcore::DocumentLineScope line(parser->ErrorLine());
    SendError(ErrorKind::DefinitionParsingError, zephcore::ZString(kInvalidXML), sourceFile);
    return false;
}

}  // namespace

Definitions ParseBufferForDefinitions(const UTF8String& buffer, const UTF16String& sourceFile) {
    Definitions result;
    RunParser(result, sourceFile, [&](zephcore::AbstractDocParser& parser) { return parser.ParseBuffer(buffer); });
    return result;
}

Definitions ReplayDefinitions(std::string_view events, const UTF16String& sourceFile) {
    const RecordLimit limit;
    Definitions result;
    DefinitionsParser handler(result, sourceFile);
    zephcore::ReplayDocument(events, handler);
    return result;
}

Definitions ParseDocumentForDefinitions(const UTF16String& path) {
    Definitions result;
    ParseDocumentForDefinitions(path, result);
    return result;
}

bool ParseDocumentForDefinitions(const UTF16String& path, Definitions& definitions) {
    return RunParser(definitions, path, [&](zephcore::AbstractDocParser& parser) { return parser.ParseFile(path); });
}

}  // namespace zephmetadata
