#include "views/property_references.h"

#include <utility>

#include "definitions/entry_index.h"
#include "frame/errors.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kInvalidPrefix =
    u"$$$/zephmetadata/view_parser/InvalidPrefixInXMPProperty=invalid prefix in XMP property #{quot}@0#{quot}.";
constexpr std::u16string_view kInvalidProperty =
    u"$$$/zephmetadata/view_parser/InvalidXMPProperty=invalid XMP property #{quot}@0#{quot}.";
constexpr std::u16string_view kInvalidStructure =
    u"$$$/zephmetadata/view_parser/InvalidXMPPropertyInStruct=invalid Structure in XMP property #{quot}@0#{quot}.";
constexpr std::u16string_view kInvalidField =
    u"$$$/zephmetadata/view_parser/InvalidXMPPropertyInStructureField="
    u"invalid Structure Field in XMP property #{quot}@0#{quot}.";

/// The two parts of @p text round its only @p separator; absent unless there are exactly two, both with text in them.
std::optional<std::pair<std::u16string_view, std::u16string_view>> TwoParts(std::u16string_view text,
                                                                            char16_t separator) {
    const std::size_t at = text.find(separator);
    if (at == std::u16string_view::npos || at == 0 || at + 1 == text.size() ||
        text.find(separator, at + 1) != std::u16string_view::npos) {
        return std::nullopt;
    }
    return std::pair(text.substr(0, at), text.substr(at + 1));
}

bool IsValid(const Path& path) {
    return !path.mNamespace.empty() && !path.mPathDescription.empty();
}

}  // namespace

void PropertyReferences::Report(std::u16string_view key, const UTF16String& argument) const {
    SendError(ErrorKind::ViewDefinitionParsingError, zephcore::ZString(key, {argument}), mSourceName);
}

std::optional<QualifiedName> PropertyReferences::Name(std::u16string_view text) const {
    const auto parts = TwoParts(text, u':');
    if (!parts) {
        if (text.find(u':') == std::u16string_view::npos) {
            Report(kInvalidPrefix, UTF16String(text));
        }
        return std::nullopt;
    }
    const auto found = mNamespaces.find(UTF16String(parts->first));
    if (found == mNamespaces.end()) {
        Report(kInvalidPrefix, UTF16String(text));
        return std::nullopt;
    }
    return QualifiedName{zephcore::UTF16to8(found->second), zephcore::UTF16to8(parts->second)};
}

Path PropertyReferences::Field(const UTF16String& value, std::u16string_view structure,
                               std::u16string_view field) const {
    const std::optional<QualifiedName> structureName = Name(structure);
    if (!structureName) {
        return {};
    }
    const Path parent = PathForSchemaNameAndPropertyName(structureName->mURI, structureName->mLocalName);
    if (!IsValid(parent)) {
        Report(kInvalidStructure, value);
        return {};
    }
    const std::optional<QualifiedName> fieldName = Name(field);
    if (!fieldName) {
        return {};
    }
    if (const sp<TypeDefinition> type = TypeEntryDefinition(parent)) {
        if (const auto definition = FindField(type->mFields, fieldName->mURI, fieldName->mLocalName)) {
            return CreatePathFromStructureField(parent, definition);
        }
    }
    Report(kInvalidField, value);
    return {};
}

PropertyReferences::Reference PropertyReferences::Resolve(const UTF16String& value) const {
    if (const auto parts = TwoParts(value, u'/')) {
        return {Field(value, parts->first, parts->second), {}};
    }
    std::optional<QualifiedName> name = Name(value);
    if (!name) {
        return {};
    }
    Path path = PathForSchemaNameAndPropertyName(name->mURI, name->mLocalName);
    if (!IsValid(path)) {
        Report(kInvalidProperty, value);
        return {};
    }
    return {std::move(path), *std::move(name)};
}

}  // namespace zephmetadata
