#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_marks.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_shapes.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::size_t kMaxItems = INT32_MAX;  // what the toolkit can number

// Composite items are made from a null value, simple ones from a text.
const char* ItemValue(const UTF8String& text, std::uint32_t options) {
    if ((options & kPropCompositeMask) == 0) {
        return text.c_str();
    }
    if (!text.empty()) {
        ThrowError(XMPErr_BadOptions, "composite item with a value");
    }
    return nullptr;
}

// An item without a language in an alternative of languages makes a packet that cannot be read back.
void CheckTakesItems(const Property& array, const UTF8String& path) {
    if ((array.mOptions & kPropArrayIsAltText) != 0) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is an alternative of languages");
    }
}

bool HasItem(XmpPtr native, const UTF8String& schema, const UTF8String& path, std::size_t index) {
    const ToolkitString unused;
    return xmp_get_array_item(native, schema.c_str(), path.c_str(), static_cast<std::int32_t>(index), unused.Get(),
                              nullptr);
}

}  // namespace

// The toolkit cannot count, but finds an item by its number at once.
std::size_t CountArrayItems(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const std::optional<Property> array = GetProperty(tree, schema, path);
    if (!array) {
        return 0;
    }
    if ((array->mOptions & kPropValueIsArray) == 0) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is no array");
    }
    const QuietToolkit quiet;
    const XmpPtr native = Native(tree);
    std::size_t missing = 1;
    while (missing < kMaxItems / 2 && HasItem(native, schema, path, missing)) {
        missing *= 2;
    }
    std::size_t present = missing / 2;
    while (missing - present > 1) {
        const std::size_t middle = present + (missing - present) / 2;
        (HasItem(native, schema, path, middle) ? present : missing) = middle;
    }
    return present;
}

void SetArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index,
                  std::string_view value, std::uint32_t options) {
    CheckWritable(schema, path);
    const std::optional<Property> present = GetProperty(tree, schema, path);
    const std::size_t count = CountArrayItems(tree, schema, path);
    const bool insert = (options & kInsertBeforeItem) != 0;
    const std::size_t most = insert ? count + 1 : count;
    const bool inRange = index == kLastItem ? count > 0 : index > 0 && static_cast<std::size_t>(index) <= most;
    if (!present || !inRange) {
        ThrowError(XMPErr_BadIndex, "item " + std::to_string(index) + " of \"" + path + "\"");
    }
    const UTF8String array = NormalPath(tree, schema, path);
    const std::size_t number = index == kLastItem ? count : static_cast<std::size_t>(index);
    if (!insert) {
        SetProperty(tree, schema, ItemPath(array, number), value, options);
        return;
    }
    CheckTakesItems(*present, path);
    InsertArrayItem(tree, schema, array, static_cast<int>(number), value, options);
}

void InsertArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index,
                     std::string_view value, std::uint32_t options) {
    const UTF8String text = CheckedValue(value);
    const char* const itemValue = ItemValue(text, options);
    const QuietToolkit quiet;
    if (!xmp_set_array_item(NativeToChange(tree, schema, path), schema.c_str(), path.c_str(), index, itemValue,
                            options | kInsertBeforeItem)) {
        ThrowToolkitError("\"" + path + "\"");
    }
    ClearNative(tree, schema, path);
}

void AppendArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t arrayOptions,
                     std::string_view value, std::uint32_t itemOptions) {
    CheckWritable(schema, path);
    const UTF8String text = CheckedValue(value);
    const char* const itemValue = ItemValue(text, itemOptions);
    const std::optional<Property> present = GetProperty(tree, schema, path);
    if (!present && (arrayOptions & kPropCompositeMask & ~kPropValueIsStruct) == 0) {
        ThrowError(XMPErr_BadOptions, "\"" + path + "\"");
    }
    if (present && (arrayOptions & kPropArrayIsAlternate) == 0) {
        CheckTakesItems(*present, path);
    }
    CountArrayItems(tree, schema, path);  // throws for a property that is no array
    const UTF8String array = NormalPath(tree, schema, path);
    const QuietToolkit quiet;
    if (!xmp_append_array_item(NativeToChange(tree, schema, array), schema.c_str(), array.c_str(), arrayOptions,
                               itemValue, itemOptions)) {
        ThrowToolkitError("\"" + path + "\"");
    }
    ClearNative(tree, schema, array);
}

bool DeleteArrayItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, int index) {
    const std::size_t count = CountArrayItems(tree, schema, path);
    const bool inRange = index == kLastItem ? count > 0 : index > 0 && static_cast<std::size_t>(index) <= count;
    if (!inRange) {
        return false;
    }
    const UTF8String array = NormalPath(tree, schema, path);
    const std::size_t number = index == kLastItem ? count : static_cast<std::size_t>(index);
    return DeleteProperty(tree, schema, ItemPath(array, number));
}

}  // namespace zephmetadata::toolkit
