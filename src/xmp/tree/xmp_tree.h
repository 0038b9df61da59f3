#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "xmp/core/toolkit.h"
#include "xmp/tree/place.h"

/// Reading and changing one XMP tree.
///
/// Throughout: @p schema is a namespace URI, @p path an expression relative to it ("title", "dc:title[2]",
/// "CreatorContactInfo/Iptc4xmpCore:CiAdrCity", "title[1]/?xml:lang"), trees are not null. Functions throw XMPError
/// when the toolkit refuses (ill-formed path, composite where a simple value is asked for, text that does not convert);
/// "nothing there" is an empty optional or false. A change of a marked (mixed) path clears its mark and those below it; a
/// change of one item of a marked array leaves the array marked, and setting one language of a marked alternative leaves
/// the other languages marked.
namespace zephmetadata::toolkit {

// Node options, as the XMP toolkits document them.
inline constexpr std::uint32_t kPropIsQualifier = 0x20;
inline constexpr std::uint32_t kPropValueIsStruct = 0x100;
inline constexpr std::uint32_t kPropValueIsArray = 0x200;
inline constexpr std::uint32_t kPropArrayIsOrdered = 0x400;
inline constexpr std::uint32_t kPropArrayIsAlternate = 0x800;
inline constexpr std::uint32_t kPropArrayIsAltText = 0x1000;
inline constexpr std::uint32_t kPropCompositeMask = 0x1F00;
inline constexpr std::uint32_t kInsertBeforeItem = 0x4000;
inline constexpr std::uint32_t kSchemaNode = 0x80000000;
inline constexpr int kLastItem = -1;

// Whole trees.

XMPMetaPtr NewTree();
/// Replaces the tree by what @p packet holds. False, with the tree empty, when it is no XMP; an empty packet is none.
/// Packets nested deeper than kMaxPacketDepth, or larger than 1 GiB, are refused.
inline constexpr std::size_t kMaxPacketDepth = 200;
bool ParsePacket(XMPMetaHandle tree, std::string_view packet);

enum class PacketForm {
    kFull,     ///< with packet wrapper and padding, writeable
    kBareRDF,  ///< the x:xmpmeta element alone and short, for containers: simple properties are attributes
};
/// Leaves the tree as it is (the toolkit itself would drop texts of two-item alternatives).
UTF8String SerializePacket(XMPMetaHandle tree, PacketForm form = PacketForm::kFull);
/// The same in the bare form for one who parses the packet before it is used, so that nothing is checked here. @p isChanged
/// is false when the toolkit is known to change nothing in writing the tree (WrittenProperty::mIsChanged), to spare a walk.
UTF8String SerializeUnchecked(XMPMetaHandle tree, bool isChanged = true);

/// A packet for where there is not room for all of it; both in the bare form.
struct SplitPacket {
    UTF8String mMain;
    UTF8String mExtended;  ///< empty when the whole fits
};
/// When the tree does not fit into @p maxMainBytes, top-level properties move to the extended packet until the rest does:
/// the largest first, those of Dublin Core and of media management last. xmpNote:HasExtendedXMP of the main packet is then
/// what @p identifierOf says of the extended one. Throws XMPError when not even that fits. Both are to be parsed before
/// they are used; @p isChanged as for SerializeUnchecked.
SplitPacket SerializeSplit(XMPMetaHandle tree, std::size_t maxMainBytes,
                           const std::function<UTF8String(std::string_view extended)>& identifierOf,
                           bool isChanged = true);
/// The way back: takes those top-level properties out of @p packets that the tree lacks, and xmpNote:HasExtendedXMP out
/// of the tree. False, with the tree as it was, when one of the packets cannot be read.
bool MergeExtended(XMPMetaHandle tree, const std::vector<std::string>& packets);

/// A tree of its own with the same nodes, rdf:about and marks.
XMPMetaPtr CloneTree(XMPMetaHandle tree);
/// The same with those of the top-level properties alone that are at @p places.
XMPMetaPtr ClonePart(XMPMetaHandle tree, const std::set<Place>& places);
/// Makes a tree be about what another one is about (rdf:about).
void CopyAbout(XMPMetaHandle from, XMPMetaHandle to);
/// True when both are about the same (rdf:about) and hold the same nodes (namespace, path, value and kind), whatever the
/// order of schemas, properties and fields.
bool TreesEqual(XMPMetaHandle left, XMPMetaHandle right);

// Nodes.

struct Node {
    UTF8String mSchema;
    UTF8String mPath;  ///< with prefixes, as in "dc:title[1]"; empty for a schema node
    UTF8String mValue;
    std::uint32_t mOptions = 0;
};

/// What counts of the options in a comparison. Whether an alternative is one of languages follows from its items.
std::uint32_t KindOf(const Node& node);

enum class Walk { kSubtree, kJustChildren };

/// The nodes below @p path (the whole schema when empty, the whole tree when both are empty) in document order: a node before its
/// children; qualifiers included. Empty when there is no such node. The node at @p path itself is not among them; schema nodes are, for a walk over
/// the whole tree.
std::vector<Node> Nodes(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, Walk walk);

/// Whether two nodes are the same; see KindOf.
bool SameNode(const Node& left, const Node& right);

bool PropertyExists(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

struct Property {
    UTF8String mValue;  ///< empty for structures and arrays
    std::uint32_t mOptions = 0;
};
std::optional<Property> GetProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

// Typed reads of a simple property: the text is converted (see ConvertTo... below).
std::optional<std::int64_t> GetPropertyInt64(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
std::optional<int> GetPropertyInt(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
std::optional<double> GetPropertyFloat(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
std::optional<bool> GetPropertyBool(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

/// Missing structures on the way are made; an item of a missing array, and a qualifier of what is missing, are refused. A
/// node of another shape is replaced by one of the shape that @p options tell, qualifiers kept. The item of a language
/// that an alternative lacks is added with its language; without one an alternative of languages takes no item. What is
/// refused, here and below, changes nothing.
void SetProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::string_view value,
                 std::uint32_t options = 0);
/// False when there was nothing to delete. Emptied parents stay.
bool DeleteProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

// Text forms. ConvertTo... throw XMPError for text that is not wholly such a value.

std::int64_t ConvertToInt64(
    std::string_view text);  ///< decimal or 0x hexadecimal; blanks around it are ignored; overflow throws
double ConvertToFloat(std::string_view text);  ///< finite decimal number
bool ConvertToBool(std::string_view text);     ///< true, t, 1, false, f, 0, letter case ignored
UTF8String ConvertFromInt64(std::int64_t value);
UTF8String ConvertFromFloat(
    double
        value);  ///< the shortest text that reads back as the same number, no exponent where the magnitude is in [1e-5, 1e15)
UTF8String ConvertFromBool(bool value);  ///< "True", "False"

// Arrays. Items count from 1; kLastItem is the last.

std::size_t CountArrayItems(XMPMetaHandle tree, const UTF8String& schema,
                            const UTF8String& path);  ///< 0 when missing; throws for a property that is no array
/// With kInsertBeforeItem in @p options the item is inserted (one past the end appends), else replaced. The array must exist; nothing
/// can be inserted into an alternative of languages.
void SetArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index,
                  std::string_view value, std::uint32_t options = 0);
/// Makes the array with @p arrayOptions when it is missing. An alternative of languages only takes items when they say
/// that it is an alternative; the caller sets their language.
void AppendArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t arrayOptions,
                     std::string_view value, std::uint32_t itemOptions = 0);
/// False for an item that is not there.
bool DeleteArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index);

/// The items joined with @p separator (a semicolon and blanks). Items that would not split back as they were are put in quotes:
/// the empty ones and those that begin with a quote, begin or end with a space or hold a semicolon; a quote inside quotes is doubled.
/// Empty optional when there is no such array; throws for arrays of composite items and for properties that are no arrays.
std::optional<UTF8String> CatenateArrayItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                                             std::string_view separator = "; ");
/// Splits @p text at semicolons outside quotes (blanks around items dropped, quotes undone, empty unquoted items dropped) and makes
/// the items the array's own, whose form is @p arrayOptions when it is made anew. Existing items that are kept in place keep their qualifiers.
/// No item left removes the array. A property of another shape, or with items that are no texts, is replaced.
void SeparateArrayItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                        std::uint32_t arrayOptions, std::string_view text);
/// The splitting and the joining alone.
std::vector<UTF8String> SplitItems(std::string_view text);
UTF8String JoinItems(const std::vector<UTF8String>& items, std::string_view separator = "; ");

struct LanguageText {
    UTF8String mLanguage;
    UTF8String mText;
};

// Language alternatives. Languages are tags of RFC 5646, compared without letter case, also in paths; the toolkit keeps
// them in a form of its own ("zh-hans", "de-AT"). "x-default" is the default item.

/// The item of @p specificLanguage, else of @p genericLanguage (empty: none), else x-default, else the first item. Throws
/// for an alternative of structures or arrays.
std::optional<UTF8String> GetLocalizedText(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                                           const UTF8String& genericLanguage, const UTF8String& specificLanguage);
/// All texts with their languages, in order; empty when there is no such property, or it holds no texts.
std::vector<LanguageText> LanguageTexts(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
/// Sets the item of @p specificLanguage alone, making array and item as needed; x-default is always the first item. No other item changes.
/// (A missing x-default is added with the same text when the alternative was empty.) A simple property becomes an
/// alternative of which it is x-default; what else is no alternative is replaced when x-default is set, else refused.
void SetLocalizedText(XMPMetaHandle tree, const UTF8String& givenSchema, const UTF8String& givenPath,
                      const UTF8String& genericLanguage, const UTF8String& specificLanguage, std::string_view value);
/// Removes the item of @p language, and the alternative with its last item. False when there is no such item.
bool DeleteLocalizedText(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                         std::string_view language);

// Between trees.

/// Copies the node at @p path with all below it, marks included, from @p source to @p destination, replacing what is there (same schema and path).
/// False when the source has no such node (the destination is then left alone).
bool DuplicateSubtree(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema,
                      const UTF8String& path);
/// Removes one top-level property, or all of a schema when @p name is empty. (Callers decide about internal properties.)
void RemoveProperties(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& name);

// Mixed marks: paths of a merged tree in which the sources differ. Never serialised.

void MarkMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
/// True for a marked path and for everything below one.
bool IsMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
void ClearMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);  ///< the mark, and those below

// Native marks: top-level properties that were read from native metadata and not from a packet. Any change of one, or of a
// part of it, clears the mark. Never serialised.

/// Marks the top-level property that @p path leads to or into.
void MarkNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);
/// True for a marked property and for everything below it.
bool IsNative(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

}  // namespace zephmetadata::toolkit
