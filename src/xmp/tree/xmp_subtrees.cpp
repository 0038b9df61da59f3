#include <string>

#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/node_copy.h"
#include "xmp/tree/xmp_marks.h"
#include "xmp/tree/xmp_shapes.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

// An item that is to be replaced: a new one is made before it and the old one is deleted.
void ReplaceItem(XMPMetaHandle destination, const Node& root, const UTF8String& path) {
    const std::size_t bracket = path.rfind('[');
    const UTF8String array = path.substr(0, bracket);
    const int index = std::stoi(path.substr(bracket + 1));
    const std::uint32_t options = root.mOptions & (kPropCompositeMask | XMP_PROP_VALUE_IS_URI);
    InsertArrayItem(destination, root.mSchema, array, index, root.mValue, options);
    DeleteArrayItem(destination, root.mSchema, array, index + 1);
}

bool EndsWithNumber(const UTF8String& path) {
    const std::size_t bracket = path.rfind('[');
    return path.ends_with(']') && path.find_first_not_of("0123456789", bracket + 1) == path.size() - 1;
}

// The array must be there before its first item is.
void MakeArrayOf(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema, const UTF8String& path) {
    const UTF8String array = path.substr(0, path.rfind('['));
    const std::optional<Property> sourceArray = GetProperty(source, schema, array);
    if (sourceArray && !PropertyExists(destination, schema, array)) {
        SetProperty(destination, schema, array, {}, sourceArray->mOptions & kPropCompositeMask);
    }
}

}  // namespace

bool DuplicateSubtree(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema,
                      const UTF8String& path) {
    const std::optional<Property> property = GetProperty(source, schema, path);
    if (!property || source == destination) {
        return property.has_value();
    }
    CheckWritable(schema, path);
    const UTF8String sourcePath = NormalPath(source, schema, path);
    const UTF8String target = NormalPath(destination, schema, path);
    const Node root{schema, target, property->mValue, property->mOptions};
    if (EndsWithNumber(target)) {
        MakeArrayOf(source, destination, schema, target);
        ReplaceItem(destination, root, target);
    } else {
        DeleteProperty(destination, schema, target);
        CopyNode(destination, root, target);
    }
    for (const Node& node : Nodes(source, schema, sourcePath, Walk::kSubtree)) {
        CopyNode(destination, node, target + node.mPath.substr(sourcePath.size()));
    }
    ClearMixed(destination, schema, target);
    ClearNative(destination, schema, target);
    CopyMarks(source, destination, schema, target);
    return true;
}

void RemoveProperties(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& name) {
    if (!name.empty()) {
        DeleteProperty(tree, schema, name);
        return;
    }
    for (const Node& node : Nodes(tree, schema, {}, Walk::kJustChildren)) {
        DeleteProperty(tree, schema, node.mPath);
    }
}

}  // namespace zephmetadata::toolkit
