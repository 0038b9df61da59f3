#pragma once

#include <optional>
#include <string_view>

#include "xmp/core/toolkit.h"
#include "xmp/tree/place.h"

/// Checks of names, texts and path expressions before they reach the toolkit, which accepts what it cannot write back,
/// and leaves a half-made node behind where it refuses.
namespace zephmetadata::toolkit {

inline constexpr std::string_view kRDFNamespace = "http://www.w3.org/1999/02/22-rdf-syntax-ns#";
inline constexpr std::string_view kXMLNamespace = "http://www.w3.org/XML/1998/namespace";

/// Steps and indices of a path that is written: deeper trees make packets that exceed kMaxPacketDepth.
inline constexpr std::size_t kMaxPathSteps = 60;

/// True for a name without colon that may stand in XML (names beyond ASCII are taken as good when they are UTF-8).
bool IsNCName(std::string_view name);

/// @p text up to its first NUL byte. Throws XMPError for text that is no UTF-8 or holds characters that XML cannot
/// carry.
UTF8String CheckedValue(std::string_view text);

/// Throws XMPError for an empty path and for a schema that is not registered; the prefix of the schema.
UTF8String CheckedSchema(const UTF8String& schema, const UTF8String& path);

/// Throws XMPError when writing at @p path would make a packet that cannot be read back.
void CheckWritable(const UTF8String& schema, const UTF8String& path);

/// The path as the toolkit's walks return it: with the prefix of the first step and with numbers for "[last()]" and for
/// languages that are there, whatever their letter case (RFC 4647).
UTF8String NormalPath(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

/// Where @p path leads. Some names stand for properties of other schemas (tiff:Artist for the first dc:creator); those
/// that stand for the x-default item of an alternative (tiff:ImageDescription) lead to the whole of it.
Place NormalPlace(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path);

/// The same of the top-level property @p name, without prefix, as a whole. For names of the library's own tables, all of
/// which are remembered.
const Place& TopLevelPlace(const UTF8String& schema, const UTF8String& name);

/// True when @p path is @p parent or lies below it, by whole steps.
bool IsAtOrBelow(std::string_view path, std::string_view parent);

/// @p arrayPath "[" @p index "]"
UTF8String ItemPath(const UTF8String& arrayPath, std::size_t index);
inline UTF8String LanguagePath(const UTF8String& itemPath) {
    return itemPath + "/?xml:lang";
}

/// The array and the language of an item that is told by its language: dc:title[?xml:lang="de"].
struct LanguageItem {
    UTF8String mArray;
    UTF8String mLanguage;
};
/// What @p path ends with, when it is such an item.
std::optional<LanguageItem> LanguageItemAt(const UTF8String& path);

/// Throws XMPError for what cannot be a language tag (RFC 5646): the toolkit would write it as it stands.
void CheckLanguage(std::string_view language);

/// ASCII letter case ignored, as in language tags.
bool SameLanguage(std::string_view left, std::string_view right);
/// The same text for all tags that SameLanguage takes for one.
UTF8String LanguageKey(std::string_view language);

}  // namespace zephmetadata::toolkit
