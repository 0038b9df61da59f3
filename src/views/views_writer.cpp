#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "definitions/entry_index.h"
#include "frame/xml_writer.h"
#include "xmp/core/xmp_paths.h"
#include "zephcore/files.h"
#include "zephcore/text.h"
#include "zephmetadata/views.h"

namespace zephmetadata {

namespace {

using zephcore::UTF16to8;
using Schemas = std::vector<sp<SchemaDefinition>>;

constexpr std::string_view kMultiLineHeight = "3";

/// Namespaces by prefix, in the order in which they are declared.
using Prefixes = std::map<UTF8String, UTF8String>;

/// Whether a document may declare @p prefix; any other would make it ill-formed.
bool IsDeclarable(const UTF8String& prefix) {
    return toolkit::IsNCName(prefix) && prefix != "xml" && prefix != "xmlns";
}

/// Of schemas that share a prefix the first keeps it.
Prefixes PrefixesOf(const Schemas& schemas) {
    Prefixes prefixes;
    for (const auto& schema : schemas) {
        if (schema && IsDeclarable(schema->mPrefix)) {
            prefixes.try_emplace(schema->mPrefix, schema->mNamespace);
        }
    }
    return prefixes;
}

/// The properties of some schemas by name. Of namesakes it knows the first, and the first that differs from that one:
/// whatever differs from a third property is one of them.
class PropertyIndex {
public:
    explicit PropertyIndex(const Schemas& schemas) {
        for (const auto& schema : schemas) {
            if (schema) {
                Add(*schema);
            }
        }
    }

    /// The first of the name that is not the same as @p property; null when there is none.
    sp<PropertyDefinition> FindDifferent(const PropertyDefinition& property) const {
        const auto named = mProperties.find(property.mName);
        if (named == mProperties.end()) {
            return nullptr;
        }
        const auto& [first, second] = named->second;
        return Differ(*first, property) ? first : second;
    }

private:
    static bool Differ(const PropertyDefinition& left, const PropertyDefinition& right) {
        return left.mInternal != right.mInternal || left.mLabelZString != right.mLabelZString ||
               left.mDescriptionZString != right.mDescriptionZString;
    }

    void Add(const SchemaDefinition& schema) {
        for (const auto& property : schema.mProperties) {
            if (!property) {
                continue;
            }
            auto& [first, second] = mProperties[property->mName];
            if (!first) {
                first = property;
            } else if (!second && Differ(*first, *property)) {
                second = property;
            }
        }
    }

    std::unordered_map<UTF8String, std::pair<sp<PropertyDefinition>, sp<PropertyDefinition>>> mProperties;
};

/// Finds the definitions of a registered schema by the names of properties as panels write them: "Name", or
/// "Struct/prefix:field" for a field of a structure.
class RegisteredEntries {
public:
    RegisteredEntries(const sp<SchemaDefinition>& schema, const Prefixes& prefixes)
        : mSchema(schema), mPrefixes(prefixes) {}

    sp<EntryDefinition> Find(const UTF8String& name) const {
        const sp<PropertyDefinition> property = FindEntry(mSchema->mProperties, name);
        return property ? property : FindField(mSchema->mNamespace, name);
    }

private:
    sp<EntryDefinition> FindField(const UTF8String& namespaceURI, const UTF8String& name) const {
        const std::size_t slash = name.find('/');
        const std::size_t colon = slash == UTF8String::npos ? slash : name.find(':', slash);
        if (colon == UTF8String::npos) {
            return nullptr;
        }
        const Path structure = PathForSchemaNameAndPropertyName(namespaceURI, name.substr(0, slash));
        const sp<TypeDefinition> type = TypeEntryDefinition(structure);
        if (!type) {
            return nullptr;
        }
        const UTF8String fieldNamespace = NamespaceOf(name.substr(slash + 1, colon - slash - 1));
        const UTF8String fieldName = name.substr(colon + 1);
        return zephmetadata::FindField(type->mFields, fieldNamespace, fieldName);
    }

    /// As the reader of the view resolves a prefix, else as paths do.
    UTF8String NamespaceOf(const UTF8String& prefix) const {
        const auto declared = mPrefixes.find(prefix);
        return declared == mPrefixes.end() ? NamespaceForPrefix(prefix) : declared->second;
    }

    sp<SchemaDefinition> mSchema;
    const Prefixes& mPrefixes;
};

bool IsChoice(const std::optional<UTF8String>& type) {
    return type == PrimitiveTypeAsPrimitiveTypeId(kPrimitiveType_OpenChoice) ||
           type == PrimitiveTypeAsPrimitiveTypeId(kPrimitiveType_ClosedChoice);
}

/// What of a property differs from its definition.
struct Differences {
    bool mReadOnly = false;
    bool mLabel = false;
    bool mDescription = false;
    bool mChoices = false;  ///< its values became those of a choice
};

Differences TextDifferences(const PropertyDefinition& property, const EntryDefinition& definition) {
    Differences differences;
    differences.mLabel = definition.mLabelZString != property.mLabelZString;
    differences.mDescription = definition.mDescriptionZString != property.mDescriptionZString;
    return differences;
}

class ViewWriter {
public:
    ViewWriter(XMLWriter& document, const Schemas& presented, const Schemas& comparison)
        : mDocument(document), mPresented(presented), mComparison(comparison), mPrefixes(PrefixesOf(presented)) {}

    void Write(const GenericPanelManifestParser::ManifestInfo& info) {
        mDocument.Begin("views");
        mDocument.Attribute("xmlns", UINamespaceURI);
        mDocument.BeginChildren();
        mDocument.Begin("view");
        for (const auto& [prefix, namespaceURI] : mPrefixes) {
            mDocument.Attribute("xmlns:" + prefix, namespaceURI);
        }
        mDocument.Attribute("name", UTF16to8(info.name));
        mDocument.Attribute("label", UTF16to8(info.label));
        mDocument.Attribute("description", UTF16to8(info.description));
        mDocument.BeginChildren();
        for (const auto& schema : mPresented) {
            if (schema) {
                WriteSchema(*schema);
            }
        }
        mDocument.EndChildren("view");
        mDocument.EndChildren("views");
    }

private:
    void WriteSchema(const SchemaDefinition& schema) {
        const bool isSection = !schema.mLabelZString.empty();
        if (isSection) {
            mDocument.Begin("section");
            mDocument.Attribute("label", UTF16to8(schema.mLabelZString));
            mDocument.BeginChildren();
        }
        const sp<SchemaDefinition> registered = NamespaceDefinition(schema.mNamespace);
        const RegisteredEntries entries(registered, mPrefixes);
        for (const auto& property : schema.mProperties) {
            if (property) {
                WriteEntry(schema.mPrefix, *property, registered ? &entries : nullptr);
            }
        }
        if (isSection) {
            mDocument.EndChildren("section");
        }
    }

    /// @p registered is null for a namespace that is not registered.
    void WriteEntry(const UTF8String& prefix, const PropertyDefinition& property, const RegisteredEntries* registered) {
        const std::optional<UIAttributes>& hints = property.mUIAttributes;
        if (!hints || !property.mName.empty()) {
            WriteProperty(prefix, property,
                          registered != nullptr ? FromRegistered(property, *registered) : FromComparison(property));
        }
        if (hints && hints->mSeparator) {
            mDocument.Empty("separator");
        }
    }

    static Differences FromRegistered(const PropertyDefinition& property, const RegisteredEntries& registered) {
        const sp<EntryDefinition> definition = registered.Find(property.mName);
        if (!definition) {
            return {};
        }
        Differences differences = TextDifferences(property, *definition);
        differences.mChoices = property.mType != definition->mType && property.mElementType &&
                               definition->mType == property.mElementType && IsChoice(property.mType);
        return differences;
    }

    Differences FromComparison(const PropertyDefinition& property) const {
        const sp<PropertyDefinition> definition = mComparison.FindDifferent(property);
        if (!definition) {
            return {};
        }
        Differences differences = TextDifferences(property, *definition);
        differences.mReadOnly = property.mInternal && !definition->mInternal;
        return differences;
    }

    void WriteProperty(const UTF8String& prefix, const PropertyDefinition& property, const Differences& differences) {
        mDocument.Begin("property");
        mDocument.Attribute("name", prefix + ":" + property.mName);
        Attribute("readOnly", "true", differences.mReadOnly);
        Attribute("label", UTF16to8(property.mLabelZString), differences.mLabel);
        Attribute("description", UTF16to8(property.mDescriptionZString), differences.mDescription);
        Attribute("widget", "dropdown", differences.mChoices);
        Attribute("openChoice", "true",
                  differences.mChoices && property.mType == PrimitiveTypeAsPrimitiveTypeId(kPrimitiveType_OpenChoice));
        Attribute("multiLines", UTF8String(kMultiLineHeight),
                  property.mUIAttributes && property.mUIAttributes->mMultiLine);
        if (!differences.mChoices) {
            mDocument.EndEmpty();
            return;
        }
        mDocument.BeginChildren();
        for (const auto& choice : property.mChoices) {
            if (!choice) {
                continue;
            }
            mDocument.Begin("choice");
            mDocument.Attribute("label", UTF16to8(choice->mLabelZString));
            mDocument.Attribute("value", choice->mRawValue);
            mDocument.EndEmpty();
        }
        mDocument.EndChildren("property");
    }

    void Attribute(std::string_view name, const UTF8String& value, bool isWritten) {
        if (isWritten) {
            mDocument.Attribute(name, value);
        }
    }

    XMLWriter& mDocument;
    const Schemas& mPresented;
    PropertyIndex mComparison;
    Prefixes mPrefixes;
};

}  // namespace

bool WriteViewDefinitionsFileFromSchema(const Schemas& presented, const Schemas& comparison,
                                        const GenericPanelManifestParser::ManifestInfo& info, const UTF16String& path) {
    const EntryIndexScope indexed;
    XMLWriter document;
    if (!presented.empty()) {
        ViewWriter(document, presented, comparison).Write(info);
    }
    if (!zephcore::FileUtils::EnsureDirectoryExists(zephcore::File(path).Parent().FullPath())) {
        return false;
    }
    static_cast<void>(zephcore::FileUtils::SimpleWriteStringToFile(path, document.Text()));
    return true;
}

}  // namespace zephmetadata
