#include "xmp/core/xmp_paths.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "xmp/core/exempi_handles.h"
#include "xmp/packet/utf8.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

constexpr bool IsNameStart(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c >= 0x80;
}

constexpr bool IsNameByte(unsigned char c) {
    return IsNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

constexpr char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::size_t FirstStepLength(std::string_view path) {
    return std::min(path.find_first_of("/["), path.size());
}

// RDF's own names (li, about, Description...) are syntax, not properties; rdf:type is the one that stands for itself.
bool HoldsReservedName(std::string_view path) {
    constexpr std::string_view kPrefix = "rdf:";
    constexpr std::string_view kType = "rdf:type";
    for (std::size_t at = path.find(kPrefix); at != std::string_view::npos; at = path.find(kPrefix, at + 1)) {
        const bool beginsStep = at == 0 || path[at - 1] == '/' || path[at - 1] == '?';
        const std::string_view rest = path.substr(at);
        const bool isType = rest.starts_with(kType) && (rest.size() == kType.size() || rest[kType.size()] == '/');
        if (beginsStep && !isType) {
            return true;
        }
    }
    return false;
}

constexpr std::string_view kLanguageStart = "[?xml:lang=\"";
constexpr std::string_view kLanguageEnd = "\"]";

/// The number of the item in that language; 0 for none, and for what is no array.
std::size_t NumberOfLanguage(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& array,
                             std::string_view language) {
    const std::optional<Property> property = GetProperty(tree, schema, array);
    if (!property || (property->mOptions & kPropValueIsArray) == 0) {
        return 0;
    }
    const std::size_t count = CountArrayItems(tree, schema, array);
    for (std::size_t item = 1; item <= count; ++item) {
        const std::optional<Property> own = GetProperty(tree, schema, LanguagePath(ItemPath(array, item)));
        if (own && SameLanguage(own->mValue, language)) {
            return item;
        }
    }
    return 0;
}

/// The number of the item that @p selector, "[last()]" or one of a language, names in the array; 0 for none, and for any
/// other selector.
std::size_t NumberOf(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& array, std::string_view selector) {
    if (selector == "[last()]") {
        return CountArrayItems(tree, schema, array);
    }
    const std::optional<LanguageItem> item = LanguageItemAt(UTF8String(selector));
    return item ? NumberOfLanguage(tree, schema, array, item->mLanguage) : 0;
}

/// Where the toolkit keeps the top-level property @p name, which it writes there when it is asked to; the same place but
/// for the names that stand for other properties. The whole of an alternative stands for its x-default item.
Place KeptPlace(const UTF8String& schema, const UTF8String& name) {
    const XMPMetaPtr scratch = NewTree();
    const QuietToolkit quiet;
    if (!xmp_set_property(Native(scratch.get()), schema.c_str(), name.c_str(), "x", 0)) {
        return {schema, name};
    }
    Place place;
    for (const Node& node : Nodes(scratch.get(), {}, {}, Walk::kSubtree)) {
        const bool isItem = node.mPath.ends_with(']');
        if (place.mPath.empty()) {
            place = {node.mSchema, node.mPath};
        } else if (isItem) {
            place.mPath = node.mPath;
        } else if ((node.mOptions & kPropIsQualifier) != 0) {
            place.mPath.resize(place.mPath.find('['));
        }
    }
    return place;
}

/// The same, remembered: paths are resolved again and again.
const Place& RememberedPlace(const UTF8String& schema, const UTF8String& name) {
    constexpr std::size_t kMostNames = 4096;  // files may hold any number of them
    thread_local std::map<Place, Place> places;
    const Place asked{schema, name};
    if (const auto known = places.find(asked); known != places.end()) {
        return known->second;
    }
    if (places.size() >= kMostNames) {
        places.clear();
    }
    return places.emplace(asked, KeptPlace(schema, name)).first->second;
}

}  // namespace

bool IsNCName(std::string_view name) {
    return !name.empty() && IsNameStart(static_cast<unsigned char>(name.front())) && IsUTF8(name) &&
           std::all_of(name.begin(), name.end(), [](char c) { return IsNameByte(static_cast<unsigned char>(c)); });
}

UTF8String CheckedValue(std::string_view text) {
    const std::string_view value = text.substr(0, text.find('\0'));
    if (!IsXMLText(value)) {
        ThrowError(XMPErr_BadUnicode, "value");
    }
    return UTF8String(value);
}

UTF8String CheckedSchema(const UTF8String& schema, const UTF8String& path) {
    std::optional<UTF8String> prefix = PrefixOf(schema);
    if (!prefix) {
        ThrowError(XMPErr_BadSchema, "\"" + schema + "\"");
    }
    if (path.empty()) {
        ThrowError(XMPErr_BadXPath, "empty property name");
    }
    return std::move(*prefix);
}

void CheckWritable(const UTF8String& schema, const UTF8String& path) {
    const auto isStep = [](char c) { return c == '/' || c == '['; };
    if (static_cast<std::size_t>(std::count_if(path.begin(), path.end(), isStep)) > kMaxPathSteps) {
        ThrowError(XMPErr_BadXPath, "path of too many steps");
    }
    const std::string_view firstStep = std::string_view(path).substr(0, FirstStepLength(path));
    if (HoldsReservedName(path) || (schema == kRDFNamespace && firstStep != "type" && firstStep != "rdf:type")) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is a name of RDF");
    }
}

UTF8String NormalPath(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const UTF8String prefix = CheckedSchema(schema, path);
    const bool hasPrefix = path.find(':') < FirstStepLength(path);
    UTF8String normal = hasPrefix ? path : prefix + ":" + path;
    // From the front and no further than to what is not there: each array that is asked for has its numbers already.
    for (std::size_t open = normal.find('['); open != UTF8String::npos; open = normal.find('[', open + 1)) {
        const std::size_t size = std::min(normal.find(']', open), normal.size() - 1) + 1 - open;
        const std::string_view selector = std::string_view(normal).substr(open, size);
        if (selector.find_first_not_of("[0123456789]") == std::string_view::npos) {
            continue;
        }
        const std::size_t number = NumberOf(tree, schema, normal.substr(0, open), selector);
        if (number == 0) {
            break;
        }
        normal.replace(open, size, ItemPath({}, number));
    }
    return normal;
}

std::optional<LanguageItem> LanguageItemAt(const UTF8String& path) {
    const std::size_t at = path.rfind('[');
    if (at == UTF8String::npos || path.compare(at, kLanguageStart.size(), kLanguageStart) != 0 ||
        !path.ends_with(kLanguageEnd)) {
        return std::nullopt;
    }
    const std::size_t begin = at + kLanguageStart.size();
    return LanguageItem{path.substr(0, at), path.substr(begin, path.size() - kLanguageEnd.size() - begin)};
}

Place NormalPlace(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    UTF8String normal = NormalPath(tree, schema, path);
    const std::size_t length = FirstStepLength(normal);
    const Place& kept = RememberedPlace(schema, normal.substr(0, length));
    return {kept.mSchema, normal.replace(0, length, kept.mPath)};
}

const Place& TopLevelPlace(const UTF8String& schema, const UTF8String& name) {
    using Names = std::pair<UTF8String, UTF8String>;  // the property's first: many share a namespace
    thread_local std::map<Names, Place> places;
    thread_local std::size_t phase = 0;
    if (phase != Phase()) {
        places.clear();
        phase = Phase();
    }
    Names names(name, schema);
    if (const auto known = places.find(names); known != places.end()) {
        return known->second;
    }
    Place place = RememberedPlace(schema, CheckedSchema(schema, name) + ":" + name);
    place.mPath.resize(FirstStepLength(place.mPath));
    return places.emplace(std::move(names), std::move(place)).first->second;
}

bool IsAtOrBelow(std::string_view path, std::string_view parent) {
    if (!path.starts_with(parent)) {
        return false;
    }
    return path.size() == parent.size() || path[parent.size()] == '/' || path[parent.size()] == '[';
}

UTF8String ItemPath(const UTF8String& arrayPath, std::size_t index) {
    return arrayPath + "[" + std::to_string(index) + "]";
}

void CheckLanguage(std::string_view language) {
    const auto isTagCharacter = [](char c) {
        const char lower = ToLower(c);
        return (lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || c == '-';
    };
    if (language.empty() || !std::all_of(language.begin(), language.end(), isTagCharacter)) {
        ThrowError(XMPErr_BadValue, "language tag");
    }
}

bool SameLanguage(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char l, char r) { return ToLower(l) == ToLower(r); });
}

UTF8String LanguageKey(std::string_view language) {
    UTF8String key(language);
    std::transform(key.begin(), key.end(), key.begin(), ToLower);
    return key;
}

}  // namespace zephmetadata::toolkit
