#pragma once

#include <set>

#include "zephmetadata/definitions.h"

/// Metadata paths: one node of an XMP tree together with the definition that describes it.
///
/// The functions hold no state; every resolution asks the registry anew. A range re-resolves at each step.
namespace zephmetadata {

struct ZEPHMETADATA_EXPORT Path {
    bool mInternal = false;       ///< the flag of the top-level property it starts from
    UTF8String mNamespace;        ///< of the schema of the top-level property
    UTF8String mPathDescription;  ///< the XMP path expression relative to that schema, as in "title" or "dc:title[1]"
    UTF8String mEntryName;        ///< the name of the definition: of a property, field or qualifier, or a type id
    UTF8String mParentId;         ///< where that name is looked up: a namespace URI or a type id

    /// Namespace, then expression, byte by byte; the other members play no part.
    friend bool operator<(const Path& left, const Path& right) {
        const int order = left.mNamespace.compare(right.mNamespace);
        return order != 0 ? order < 0 : left.mPathDescription < right.mPathDescription;
    }
    friend bool operator==(const Path& left, const Path& right) {
        return left.mNamespace == right.mNamespace && left.mPathDescription == right.mPathDescription;
    }
};

struct QualifiedName {
    UTF8String mURI;
    UTF8String mLocalName;
};

// Building. Each returns the empty path when the definitions do not allow the wanted one. The four that compose an
// expression need the namespaces concerned to be registered; of these, all but CreatePathFromStructureField throw XMPError when the toolkit refuses (an unregistered
// namespace, an index of 0 or below -1).

ZEPHMETADATA_EXPORT Path CreatePathFromSchemaProperty(const sp<SchemaDefinition>& schema,
                                                      const sp<PropertyDefinition>& property);
/// A field of the structure at @p parent.
ZEPHMETADATA_EXPORT Path CreatePathFromStructureField(const Path& parent, const sp<FieldDefinition>& field);
/// A field of the structures that the array at @p parent holds: it stands for that field in every item.
ZEPHMETADATA_EXPORT Path CreatePathFromArrayedStructureField(const Path& parent, const sp<FieldDefinition>& field);
/// Items count from 1; -1 is the last.
ZEPHMETADATA_EXPORT Path CreatePathFromArrayItem(const Path& parent, int index);
/// A qualifier without a namespace takes that of the parent.
ZEPHMETADATA_EXPORT Path CreatePathFromQualifier(const Path& parent, const sp<QualifierDefinition>& qualifier);
/// The same node, described by the element type of the array.
ZEPHMETADATA_EXPORT Path CreatePathFromElementType(const Path& path, const sp<EntryDefinition>& entry,
                                                   const sp<TypeDefinition>& type);
ZEPHMETADATA_EXPORT Path PathForSchemaNameAndPropertyName(UTF8String namespaceURI, UTF8String propertyName);
ZEPHMETADATA_EXPORT Path PathForSchemaNameAndPropertyName(UTF16String namespaceURI, UTF16String propertyName);

/// The path of a node as the XMP toolkit writes it, with prefixes: "dc:title", "dc:creator[2]", "dc:title[1]/?xml:lang",
/// "Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity". Steps that no definition describes are taken as they are,
/// and the path then resolves to no definition. The empty path for an unknown prefix and for anything else that is no
/// such expression.
ZEPHMETADATA_EXPORT Path PathForExpression(const UTF8String& expression);
/// The reverse: the expression with the prefix of its namespace in front.
ZEPHMETADATA_EXPORT UTF8String ExpressionForPath(const Path& path);

// Resolving.

/// The definition that describes the node, or null. For a dynamic schema a fresh text property at each call.
ZEPHMETADATA_EXPORT sp<EntryDefinition> PathEntryDefinition(const Path& path);
/// The type of the node; for an internal bag or seq the type of its items.
ZEPHMETADATA_EXPORT sp<TypeDefinition> TypeEntryDefinition(const Path& path);
ZEPHMETADATA_EXPORT std::optional<PrimitiveType> PrimitiveTypeOfPath(const Path& path);
/// Whether the node is a bag or seq, external ones only when @p includeExternal is true. Alternatives never are.
ZEPHMETADATA_EXPORT bool IsPathAnArray(const Path& path, bool includeExternal);

// Enumerating, lazily and forward only, depth first, in the order of the definitions. Qualifiers are not enumerated.

ZEPHMETADATA_EXPORT PolyRange<Path> ChildPaths(const Path& path);
ZEPHMETADATA_EXPORT PolyRange<Path> ChildPaths(const sp<SchemaDefinition>& schema);
/// The paths below that have no children. A walk throws nothing and ends: a structure is not entered again below itself
/// nor deeper than 32, and no structure after 20,000 nodes of structures.
ZEPHMETADATA_EXPORT PolyRange<Path> DescendantLeafPaths(const Path& path);
ZEPHMETADATA_EXPORT PolyRange<Path> DescendantLeafPaths(const sp<SchemaDefinition>& schema);

// Sets of leaf paths as a small XML document, for the preferences of hosts. Nothing is thrown or reported.

/// Replaces @p document by that of @p paths: UTF-8, one element for each path, in the order of the set.
ZEPHMETADATA_EXPORT void IncludedLeafPathsAsXMLString(const std::set<Path>& paths, UTF8String& document);
/// What is wrong with a path of a document, or with the document.
enum class LeafPathProblem : std::int32_t {
    kUndefined,  ///< no definition describes it
    kNotALeaf,   ///< it has paths below it
    kRepeated,   ///< the document has it before
    kInvalidXML,
};
struct LeafPathFinding {
    LeafPathProblem mProblem = LeafPathProblem::kUndefined;
    Path mPath;             ///< empty for kInvalidXML
    std::size_t mLine = 0;  ///< where its element ends, counted from 1; 0 for a file that cannot be read
};

/// Replaces @p paths by those of the document that have a definition today and are leaves; others are dropped, and of
/// equal paths the first is kept. False, with @p paths as it was, when the document is not well-formed.
ZEPHMETADATA_EXPORT bool ReadIncludedLeafPathsAsXMLString(std::set<Path>& paths, const UTF8String& document);
/// The same for the document in a file; false also when the file cannot be read.
ZEPHMETADATA_EXPORT bool ReadIncludedLeafPathsAsXMLFile(std::set<Path>& paths, const UTF16String& file);
/// Why reading that file would not give all of its paths; empty when it would.
ZEPHMETADATA_EXPORT std::vector<LeafPathFinding> CheckIncludedLeafPathsFile(const UTF16String& file);

}  // namespace zephmetadata
