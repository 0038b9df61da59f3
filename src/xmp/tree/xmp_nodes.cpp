#include <algorithm>
#include <limits>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_marks.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_shapes.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

template <typename Convert>
auto Converted(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, Convert convert)
    -> std::optional<decltype(convert(std::string_view()))> {
    const std::optional<Property> property = GetProperty(tree, schema, path);
    if (!property) {
        return std::nullopt;
    }
    if ((property->mOptions & kPropCompositeMask) != 0) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is no simple property");
    }
    return convert(property->mValue);
}

int ToInt(std::string_view text) {
    const std::int64_t value = ConvertToInt64(text);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
        ThrowError(XMPErr_BadValue, "integer out of range");
    }
    return static_cast<int>(value);
}

bool IsLanguageAlternative(XMPMetaHandle tree, const Place& place) {
    const std::optional<Property> property = GetProperty(tree, place.mSchema, place.mPath);
    return property && (property->mOptions & kPropArrayIsAltText) != 0;
}

bool IsOtherName(const Place& place, const UTF8String& schema) {
    return place.mSchema != schema;
}

bool IsLanguage(std::string_view path) {
    return path.ends_with(LanguagePath({}));
}

// That of the item that the name stands for, x-default as a rule: neither to be changed nor to be deleted.
bool IsLanguageOfOtherName(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return IsLanguage(path) && IsOtherName(NormalPlace(tree, schema, path), schema);
}

// What the toolkit would make, and then write as a packet that cannot be read back or reads as something else.
void CheckCanBeMade(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const std::size_t qualifier = path.rfind("/?");
    const bool isOrphan = qualifier != UTF8String::npos && path.find('/', qualifier + 1) == UTF8String::npos &&
                          !PropertyExists(tree, schema, path.substr(0, qualifier));
    const bool isBelowOtherName =
        path.find_first_of("/[") != UTF8String::npos && IsOtherName(NormalPlace(tree, schema, path), schema);
    if (isOrphan || isBelowOtherName) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" belongs to nothing");
    }
    for (std::size_t open = path.find('['); open != UTF8String::npos; open = path.find('[', open + 1)) {
        const UTF8String item = path.substr(0, std::min(path.find(']', open), path.size() - 1) + 1);
        if (IsLanguageAlternative(tree, {schema, path.substr(0, open)}) && !PropertyExists(tree, schema, item)) {
            ThrowError(XMPErr_BadXPath, "\"" + item + "\" has no language");
        }
    }
}

}  // namespace

std::vector<Node> Nodes(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, Walk walk) {
    const XmpPtr native = Native(tree);
    std::vector<Node> nodes;
    const bool wholeTree = schema.empty() && path.empty();
    if (!wholeTree && !PrefixOf(schema)) {
        return nodes;
    }
    const QuietToolkit quiet;
    const bool subtree = walk == Walk::kSubtree;
    const UTF8String root = path.empty() ? path : NormalPath(tree, schema, path);
    const IteratorHandle iterator(
        xmp_iterator_new(native, schema.c_str(), root.c_str(), subtree ? XMP_ITER_PROPERTIES : XMP_ITER_JUSTCHILDREN));
    if (!iterator) {
        ThrowToolkitError("\"" + path + "\"");
    }
    const ToolkitString nodeSchema;
    const ToolkitString nodePath;
    const ToolkitString nodeValue;
    std::uint32_t options = 0;
    bool isRoot = subtree && !wholeTree;
    while (xmp_iterator_next(iterator.get(), nodeSchema.Get(), nodePath.Get(), nodeValue.Get(), &options)) {
        if (!isRoot) {
            nodes.push_back({nodeSchema.Text(), nodePath.Text(), nodeValue.Text(), options});
        }
        isRoot = false;
    }
    return nodes;
}

bool PropertyExists(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return GetProperty(tree, schema, path).has_value();
}

std::optional<Property> GetProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const XmpPtr native = Native(tree);
    // The toolkit refuses what CheckedSchema would, and this is the call that every value is read with.
    const bool isByQualifier = path.find("[?") != UTF8String::npos;
    const UTF8String numbered = isByQualifier ? NormalPath(tree, schema, path) : UTF8String();
    const QuietToolkit quiet;
    const ToolkitString value;
    std::uint32_t options = 0;
    if (xmp_get_property(native, schema.c_str(), (isByQualifier ? numbered : path).c_str(), value.Get(), &options)) {
        return Property{value.Text(), options};
    }
    if (xmp_get_error() != 0) {
        ThrowToolkitError("\"" + path + "\"");
    }
    return std::nullopt;
}

std::optional<std::int64_t> GetPropertyInt64(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return Converted(tree, schema, path, ConvertToInt64);
}

std::optional<int> GetPropertyInt(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return Converted(tree, schema, path, ToInt);
}

std::optional<double> GetPropertyFloat(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return Converted(tree, schema, path, ConvertToFloat);
}

std::optional<bool> GetPropertyBool(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    return Converted(tree, schema, path, ConvertToBool);
}

void SetProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::string_view value,
                 std::uint32_t options) {
    CheckWritable(schema, path);
    const UTF8String text = CheckedValue(value);
    if (IsLanguage(path)) {
        CheckLanguage(text);
    }
    if ((options & kPropCompositeMask) != 0 && !text.empty()) {
        ThrowError(XMPErr_BadOptions, "\"" + path + "\"");
    }
    const UTF8String normal = NormalPath(tree, schema, path);
    const std::optional<LanguageItem> missing = LanguageItemAt(normal);
    if (missing && (options & kPropCompositeMask) == 0 && IsLanguageAlternative(tree, {schema, missing->mArray})) {
        SetLocalizedText(tree, schema, missing->mArray, {}, missing->mLanguage, text);
        return;
    }
    const std::optional<Property> present = GetProperty(tree, schema, normal);
    if (IsLanguageOfOtherName(tree, schema, normal)) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is the language of another property");
    }
    if (!present) {
        CheckCanBeMade(tree, schema, normal);
    }
    // Where the toolkit refuses a change of kind it has already changed the node.
    if (present && !HasShape(present->mOptions, options)) {
        Reshape(tree, schema, normal, options);
    }
    const QuietToolkit quiet;
    const bool isThere = present && (options & kPropCompositeMask) != 0;
    if (!isThere && !xmp_set_property(NativeToChange(tree, schema, normal), schema.c_str(), normal.c_str(),
                                      text.c_str(), options)) {
        ThrowToolkitError("\"" + path + "\"");
    }
    ClearMixed(tree, schema, normal);
    ClearNative(tree, schema, normal);
}

bool DeleteProperty(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (!PropertyExists(tree, schema, path)) {
        return false;
    }
    const UTF8String normal = NormalPath(tree, schema, path);
    const Place place = NormalPlace(tree, schema, path);
    if (place.mSchema != schema && IsLanguageAlternative(tree, place)) {
        return DeleteLocalizedText(tree, place.mSchema, place.mPath, kDefaultLanguage);
    }
    if (normal.ends_with(LanguagePath("]")) || IsLanguageOfOtherName(tree, schema, normal)) {
        // An item of an alternative without its language makes a packet that cannot be read back.
        ThrowError(XMPErr_BadOptions, "\"" + path + "\" cannot be deleted; delete the item");
    }
    const QuietToolkit quiet;
    if (!xmp_delete_property(NativeToChange(tree, schema, normal), schema.c_str(), normal.c_str())) {
        ThrowToolkitError("\"" + path + "\"");
    }
    ClearMixed(tree, schema, normal);
    ClearNative(tree, schema, normal);
    return true;
}

}  // namespace zephmetadata::toolkit
