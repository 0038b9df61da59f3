#pragma once

#include <string_view>

#include "zephcore/xml.h"
#include "zephmetadata/definitions.h"

namespace zephmetadata {

/// The XML handler that turns one definitions document into definitions. Nesting is not tracked: an element attaches to
/// the list that an element of the right kind made current last.
class DefinitionsParser : public zephcore::AbstractParseHandler {
public:
    /// @p result is filled and has to outlive the parse; @p sourceFile is the context of error records.
    DefinitionsParser(Definitions& result, UTF16String sourceFile);
    ~DefinitionsParser() override;

    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const zephcore::AttributeList& attributes) override;

private:
    class Reader;

    void StartSchema(const Reader& reader);
    void StartProperty(const Reader& reader);
    void StartType(const Reader& reader);
    void StartField(const Reader& reader);
    void StartChoice(const Reader& reader);
    void StartQualifier(const Reader& reader);
    void MarkSeparator(const Reader& reader);

    /// The others; each that is left out is reported.
    zephcore::AttributeList WithoutLongIdentifiers(zephcore::AttributeList attributes) const;
    static void ReadEntry(const Reader& reader, EntryDefinition& entry);
    void Report(std::u16string_view key, const UTF16String& argument = {}) const;

    Definitions& mResult;
    std::vector<sp<PropertyDefinition>>* mCurrentProperties = nullptr;
    std::vector<sp<FieldDefinition>>* mCurrentFields = nullptr;
    std::vector<sp<ChoiceDefinition>>* mCurrentChoices = nullptr;
    std::vector<sp<QualifierDefinition>>* mCurrentQualifiers = nullptr;
    UTF16String mSourceFile;
};

/// What a document of this library defines, from its events (zephcore::ReplayDocument); registered nowhere.
Definitions ReplayDefinitions(std::string_view events, const UTF16String& sourceFile);

}  // namespace zephmetadata
