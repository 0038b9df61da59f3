#include <iterator>
#include <string>

#include "frame/toolkit/node_copy.h"
#include "frame/toolkit/xmp_meta_handle.h"
#include "frame/toolkit/xmp_paths.h"
#include "frame/toolkit/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

// The marks at and below @p path; they stand together, but for those of siblings whose names begin with the same text.
void EraseMarks(std::set<Place>& marks, const UTF8String& schema, const UTF8String& path) {
    for (auto mark = marks.lower_bound({schema, path});
         mark != marks.end() && mark->mSchema == schema && mark->mPath.starts_with(path);) {
        mark = IsAtOrBelow(mark->mPath, path) ? marks.erase(mark) : std::next(mark);
    }
}

// An item that is to be replaced: a new one is made before it and the old one is deleted.
void ReplaceItem(XMPMetaHandle destination, const Node& root, const UTF8String& path) {
    const std::size_t bracket = path.rfind('[');
    const UTF8String array = path.substr(0, bracket);
    const int index = std::stoi(path.substr(bracket + 1));
    const std::uint32_t options = root.mOptions & (kPropCompositeMask | XMP_PROP_VALUE_IS_URI);
    SetArrayItem(destination, root.mSchema, array, index, root.mValue, options | kInsertBeforeItem);
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

/// The marks at and below a path, and that of what the path is part of.
void CopyMarks(XMPMetaHandle source, XMPMetaHandle destination, const UTF8String& schema, const UTF8String& path) {
    if (IsMixed(source, schema, path)) {
        MarkMixed(destination, schema, path);
    }
    const Place place = NormalPlace(source, schema, path);
    for (auto mark = source->mMixed.lower_bound(place);
         mark != source->mMixed.end() && mark->mSchema == place.mSchema && mark->mPath.starts_with(place.mPath);
         ++mark) {
        if (IsAtOrBelow(mark->mPath, place.mPath)) {
            destination->mMixed.insert(*mark);
        }
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

void MarkMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    tree->mMixed.insert(NormalPlace(tree, schema, path));
}

bool IsMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (tree->mMixed.empty() || path.empty() || !PrefixOf(schema)) {
        return false;
    }
    Place place = NormalPlace(tree, schema, path);
    while (!tree->mMixed.contains(place)) {
        const std::size_t step = place.mPath.find_last_of("/[");
        if (step == UTF8String::npos || step == 0) {
            return false;
        }
        place.mPath.resize(step);
    }
    return true;
}

void ClearMixed(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    if (!tree->mMixed.empty() && !path.empty() && PrefixOf(schema)) {
        const Place place = NormalPlace(tree, schema, path);
        EraseMarks(tree->mMixed, place.mSchema, place.mPath);
    }
}

}  // namespace zephmetadata::toolkit
