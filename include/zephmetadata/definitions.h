#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "zephcore/files.h"
#include "zephmetadata/types.h"

/// Which properties exist, of which type: the definition model, documents that declare it, and the registry.
///
/// Definitions are shared between parse results, the registry and every caller, and registration changes them in place,
/// so that all holders see the same object. Threads: any may look up, none while another registers or removes (docs/threads.md).
namespace zephmetadata {

// Type ids name a primitive kind or a registered type; they are compared exactly.

extern ZEPHMETADATA_EXPORT const UTF8String kTypeText;
extern ZEPHMETADATA_EXPORT const UTF8String kTypeInteger;
extern ZEPHMETADATA_EXPORT const UTF8String kTypeReal;

enum PrimitiveType : std::int32_t {
    kPrimitiveType_Integer = 0,
    kPrimitiveType_Real = 1,
    kPrimitiveType_Text = 2,
    kPrimitiveType_Boolean = 3,
    kPrimitiveType_OpenChoice = 4,
    kPrimitiveType_ClosedChoice = 5,
    kPrimitiveType_Bag = 6,
    kPrimitiveType_Seq = 7,
    kPrimitiveType_Alt = 8,
};

/// What every definition carries. The z-strings are the texts as the document wrote them, usually a localisation key
/// with default text; the others are for display.
struct LocalizedTexts {
    UTF16String mLabel;
    UTF16String mDescription;
    UTF16String mLabelZString;
    UTF16String mDescriptionZString;
    std::size_t mLine = 0;  ///< where it begins in the document that it was read from; 0 when it was made otherwise
};

/// One value of a choice.
struct ChoiceDefinition {
    UTF8String mRawValue;  ///< as stored in XMP
    UTF16String mLabel;
    UTF16String mLabelZString;
};

struct QualifierDefinition;

/// What properties, structure fields, qualifiers and types have in common.
struct EntryDefinition : LocalizedTexts {
    std::optional<UTF8String> mElementType;  ///< of an array's items or a choice's values
    std::optional<UTF8String> mPattern;
    std::optional<double> mMin;
    std::optional<double> mMax;
    std::optional<bool> mDeprecated;
    std::vector<sp<ChoiceDefinition>> mChoices;
    std::vector<sp<QualifierDefinition>> mQualifiers;
    UTF8String mName;                 ///< the local XMP name; for a type its id
    std::optional<UTF8String> mType;  ///< always present once registered
    std::optional<PrimitiveType> mExtends;
};

struct QualifierDefinition : EntryDefinition {
    UTF8String mNamespace;
    UTF8String mPrefix;
};

/// A structure's field; its namespace may differ from that of the schema.
struct FieldDefinition : EntryDefinition {
    UTF8String mNamespace;
    UTF8String mPrefix;
};

struct UIAttributes {
    bool mSeparator = false;  ///< a separator follows the property
    bool mMultiLine = false;  ///< wants a multi-line editing field
};

struct PropertyDefinition : EntryDefinition {
    bool mInternal = false;  ///< kept by applications rather than edited by people
    bool mReserved = true;
    std::optional<UIAttributes> mUIAttributes;
};

/// A named value type; with fields it is a structure, without it is built on its mExtends kind.
struct TypeDefinition : EntryDefinition {
    std::vector<sp<FieldDefinition>> mFields;
};

/// The properties of one namespace.
struct SchemaDefinition : LocalizedTexts {
    UTF8String mNamespace;
    UTF8String mPrefix;
    std::vector<sp<PropertyDefinition>> mProperties;
    bool mCustom = true;    ///< made by the host or read from a custom definitions folder
    bool mDynamic = false;  ///< its properties are discovered in the metadata, not listed
};

using Definitions = std::pair<std::vector<sp<SchemaDefinition>>, std::vector<sp<TypeDefinition>>>;
/// Fields that were added to registered structures, each with the id of its structure.
using StructureFields = std::vector<std::pair<UTF8String, sp<FieldDefinition>>>;

// Namespaces of the library's own formats and schemas.

extern ZEPHMETADATA_EXPORT const UTF8String UINamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String ExtensionNamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String QuilletNamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String QuilletUINamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String DynamicNamespaceBase;
extern ZEPHMETADATA_EXPORT const UTF8String AggregateNamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String DICOMNamespaceURI;
extern ZEPHMETADATA_EXPORT const UTF8String SWFNamespaceURI;

// Type queries. None reports errors; ids that name no type yield absent, false or null, as everything does while the
// library is not initialised. Cost: at most one ordered-map lookup a step.

/// The id of a kind, for example "closedchoice"; empty for a value out of range.
ZEPHMETADATA_EXPORT UTF8String PrimitiveTypeAsPrimitiveTypeId(PrimitiveType type);
ZEPHMETADATA_EXPORT std::optional<PrimitiveType> PrimitiveTypeIdAsPrimitiveType(const UTF8String& id);
ZEPHMETADATA_EXPORT bool PrimitiveTypeIsSimple(PrimitiveType type);
ZEPHMETADATA_EXPORT bool PrimitiveTypeIsChoice(PrimitiveType type);
ZEPHMETADATA_EXPORT bool PrimitiveTypeIsArray(PrimitiveType type);

/// The kind that a type is, or is built on; absent for structures and unknown ids.
ZEPHMETADATA_EXPORT std::optional<PrimitiveType> PrimitiveTypeOf(const UTF8String& typeId);
ZEPHMETADATA_EXPORT std::optional<PrimitiveType> PrimitiveTypeOf(const EntryDefinition& entry);
ZEPHMETADATA_EXPORT std::optional<PrimitiveType> PrimitiveTypeOf(const TypeDefinition& type);

/// Whether values are single texts: a simple kind, or a choice of such. Choices of choices are followed 100 deep.
ZEPHMETADATA_EXPORT bool IsSimpleType(const UTF8String& typeId);
ZEPHMETADATA_EXPORT bool IsSimpleType(const TypeDefinition& type);
ZEPHMETADATA_EXPORT bool IsArrayType(const UTF8String& typeId);
ZEPHMETADATA_EXPORT bool IsArrayType(const TypeDefinition& type);
/// By id, also true for an id that names no type.
ZEPHMETADATA_EXPORT bool IsStructType(const UTF8String& typeId);
ZEPHMETADATA_EXPORT bool IsStructType(const TypeDefinition& type);

/// The type id of an array's items or a choice's values, the entry's own first, else its type's.
ZEPHMETADATA_EXPORT std::optional<UTF8String> ElementTypeIdOf(const EntryDefinition& entry);
ZEPHMETADATA_EXPORT std::optional<UTF8String> ElementTypeIdOf(const TypeDefinition& type);
ZEPHMETADATA_EXPORT std::optional<UTF8String> ElementTypeIdOf(const UTF8String& typeId);
/// The registered type of an entry's items, when it has such, else of the entry itself.
ZEPHMETADATA_EXPORT sp<TypeDefinition> PropertyTypeOf(const EntryDefinition& entry);

// Parsing definitions documents. Nothing is registered; each problem becomes an error record (library.h bounds their
// number), and what could be read is returned in document order. An id, name, namespace or prefix of more than 512 bytes
// is reported and counts as missing.

/// @p sourceFile is only the context of error records.
ZEPHMETADATA_EXPORT Definitions ParseBufferForDefinitions(const UTF8String& buffer, const UTF16String& sourceFile);
ZEPHMETADATA_EXPORT Definitions ParseDocumentForDefinitions(const UTF16String& path);
/// Appends to @p definitions; true when the document is well-formed.
ZEPHMETADATA_EXPORT bool ParseDocumentForDefinitions(const UTF16String& path, Definitions& definitions);

// The registry.

/// The schemas with a built-in document.
enum StandardSchema : std::int32_t {
    kStandardSchema_DC = 0,
    kStandardSchema_XMP,
    kStandardSchema_XMPRights,
    kStandardSchema_XMPMM,
    kStandardSchema_XMPBJ,
    kStandardSchema_XMPTPg,
    kStandardSchema_XMPDM,
    kStandardSchema_XMPPMAssign,
    kStandardSchema_XMPPMMemo,
    kStandardSchema_PDF,
    kStandardSchema_Tessera,
    kStandardSchema_KVS,
    kStandardSchema_EXIF,
    kStandardSchema_EXIFEX,
    kStandardSchema_TIFF,
    kStandardSchema_XMPCA,
    kStandardSchema_XMPScript,
    kStandardSchema_BEXT,
    kStandardSchema_IPTCCore,
    kStandardSchema_IPTCExtension,
    kStandardSchema_DICOM,
    kStandardSchema_PLUS,
    kStandardSchema_Mobile,
    kStandardSchema_AS11Core,
    kStandardSchema_AS11UKDPP,
    kStandardSchema_AS11Structural,
    kStandardSchema_IXML = 26,
};

/// Registers a schema under its namespace and makes it consistent: missing types become "text", with an error record.
///
/// With @p merge, a schema for a namespace that has one adds its new properties to that one and is itself not registered.
/// @p file is the context of error records. True when this very schema was registered. Null entries are taken out of the
/// lists of what is registered, here and below.
ZEPHMETADATA_EXPORT bool RegisterSchemaDefinition(const sp<SchemaDefinition>& schema, const UTF16String& file,
                                                  bool merge);
/// Registers a type under its name; refused for a name that is taken and for a field namespace that the XMP toolkit
/// refuses.
ZEPHMETADATA_EXPORT bool RegisterTypeDefinition(const sp<TypeDefinition>& type, const UTF16String& file);
/// True when an entry of that namespace (name) was removed; it need not be the same object.
ZEPHMETADATA_EXPORT bool RemoveSchemaDefinition(const sp<SchemaDefinition>& schema);
ZEPHMETADATA_EXPORT bool RemoveTypeDefinition(const sp<TypeDefinition>& type);
ZEPHMETADATA_EXPORT bool IsSchemaDefinitionAlreadyRegistered(const sp<SchemaDefinition>& schema);

/// The schema registered under @p namespaceURI, or null. Cost: one ordered-map lookup.
ZEPHMETADATA_EXPORT sp<SchemaDefinition> NamespaceDefinition(const UTF8String& namespaceURI);
/// The type registered under @p typeId, or null. Cost: one ordered-map lookup.
ZEPHMETADATA_EXPORT sp<TypeDefinition> TypeIdDefinition(const UTF8String& typeId);
/// The schemas of built-in documents, custom folders and extension packages, dynamic ones excepted, in load order.
ZEPHMETADATA_EXPORT PolyRange<sp<SchemaDefinition>> CommonSchemaDefinitions();
/// All registered schemas, ordered by prefix; those of the library's own that belong to no list above are among them.
ZEPHMETADATA_EXPORT std::vector<sp<SchemaDefinition>> RegisteredSchemaDefinitions();
/// All registered types, ordered by name.
ZEPHMETADATA_EXPORT std::vector<sp<TypeDefinition>> RegisteredTypeDefinitions();
/// The namespace URI of a standard schema; empty when there is none.
ZEPHMETADATA_EXPORT UTF8String StandardSchemaNamespace(StandardSchema schema);
/// The namespace URI to which the XMP toolkit binds @p prefix (given without a colon), whether a schema is registered
/// for it or not; empty when there is none.
ZEPHMETADATA_EXPORT UTF8String NamespaceForPrefix(const UTF8String& prefix);

/// Report properties (fields) whose type or element type names no registered type. Always true.
ZEPHMETADATA_EXPORT bool CheckPropertyTypes(const std::vector<sp<SchemaDefinition>>& schemas, const UTF16String& file);
ZEPHMETADATA_EXPORT bool CheckFieldTypes(const std::vector<sp<TypeDefinition>>& types, const UTF16String& file);

/// Parse and register, types before schemas; what became registered. When one of a kind is refused the returned list of
/// that kind is empty (with @p merge, only the schemas concerned are left out). @p merge is about schemas: a type that
/// exists is refused either way.
ZEPHMETADATA_EXPORT Definitions ParseBufferAndRegisterDefinitions(const UTF8String& buffer, const UTF16String& file,
                                                                  bool merge);
ZEPHMETADATA_EXPORT Definitions ParseDocumentAndRegisterDefinitions(const UTF16String& path, bool merge);
/// The same for what was parsed already.
ZEPHMETADATA_EXPORT Definitions RegisterDefinitions(const Definitions& parsed, const UTF16String& file, bool merge);
/// The same for a document of an extension package, as LoadAllViewDefinitions does it: schemas are merged, and a structure
/// type that exists takes up the fields of one that lists nothing but fields that it does not have.
ZEPHMETADATA_EXPORT Definitions RegisterPackageDefinitions(const Definitions& parsed, const UTF16String& file);

// Dynamic schemas: their properties are not listed anywhere but found in the metadata. Documents declare some
// (dynamic="true"); others are namespaces that a host makes from a name, which need no declaration.

/// The dynamic schemas of built-in documents, custom folders and extension packages, in load order.
ZEPHMETADATA_EXPORT PolyRange<sp<SchemaDefinition>> DynamicSchemaDefinitions();
/// The namespace URI for @p name, which loses one slash at either end and is otherwise taken as it is.
ZEPHMETADATA_EXPORT UTF8String MakeDynamicSchemaNamespace(const UTF8String& name);
/// Whether a URI was made by MakeDynamicSchemaNamespace, or holds such a one.
ZEPHMETADATA_EXPORT bool IsDynamicNamespace(const UTF8String& namespaceURI);

// Making definitions, and writing them to the files they belong to.
//
// A host that edits custom schemas makes one with CreateNewSchema, appends properties to it, registers it, names its
// file with SetFilePathForSchema and has it written by RewriteSchemaFile; later it changes the registered objects in
// place and calls RewriteSchemaFile again. Schemas and types read from a custom definitions folder or an extension
// package belong to the file they came from. What belongs to a file is kept alive until the last Terminate, registered
// or not. Nothing here reports errors.

/// A schema without properties, neither registered nor belonging to a file.
ZEPHMETADATA_EXPORT sp<SchemaDefinition> CreateNewSchema(const UTF8String& namespaceURI, const UTF8String& prefix,
                                                         const UTF16String& labelZString, const UTF16String& label,
                                                         const UTF16String& descriptionZString,
                                                         const UTF16String& description);
/// A property as a host makes one; it belongs to no schema until the host appends it to one.
ZEPHMETADATA_EXPORT sp<PropertyDefinition> CreateNewProperty(PrimitiveType type, const UTF8String& name,
                                                             const UTF16String& labelZString, const UTF16String& label,
                                                             const UTF16String& descriptionZString,
                                                             const UTF16String& description);

/// Replaces @p output by the definitions document of @p schemas, then @p types, each in its order; null ones are left
/// out. UTF-8, a tab for each level, attributes without a value left out. Of no definitions at all it is the XML
/// declaration alone, which cannot be read back.
///
/// The document does not carry: mCustom, mDynamic and the user-interface hints; choices and qualifiers of a structure
/// type; qualifiers of qualifiers as such (they read back as qualifiers of the entry); more than two digits of a bound's
/// fraction; the difference between absent and empty (false for mDeprecated). Labels are written in their z-string form
/// where there is one, so that translations stay.
ZEPHMETADATA_EXPORT void WriteDefinitionsToBuffer(const PolyRange<sp<SchemaDefinition>>& schemas,
                                                  const PolyRange<sp<TypeDefinition>>& types, UTF8String& output);
/// Replaces the file by the document, whole or not at all; missing folders are made. False when its folder cannot be
/// made; true says nothing about the file itself.
ZEPHMETADATA_EXPORT bool WriteSchemaFile(const Definitions& definitions, const zephcore::File& file);
/// Replaces the file of @p schema by a document of all schemas and types that belong to that file, in an order that may
/// differ from run to run. What the file held beyond those is lost, for example what was refused when it was read.
/// Nothing happens for a schema without a file.
ZEPHMETADATA_EXPORT void RewriteSchemaFile(const sp<SchemaDefinition>& schema);
/// Has @p schema belong to the file at @p path, and no longer to another. The file itself is not touched.
ZEPHMETADATA_EXPORT void SetFilePathForSchema(const UTF16String& path, const sp<SchemaDefinition>& schema);
/// The file to which this very object belongs; empty when it belongs to none.
ZEPHMETADATA_EXPORT UTF16String filePathForSchema(const sp<SchemaDefinition>& schema);
/// What belongs to the file at @p path, which is compared exactly, in the order that RewriteSchemaFile writes.
/// Cost: linear in all that belong to any file.
ZEPHMETADATA_EXPORT std::vector<sp<SchemaDefinition>> allSchemasFromSourceFile(const UTF16String& path);
ZEPHMETADATA_EXPORT std::vector<sp<TypeDefinition>> allTypesFromSourceFile(const UTF16String& path);

}  // namespace zephmetadata
