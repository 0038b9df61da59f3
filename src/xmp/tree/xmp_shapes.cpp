#include "xmp/tree/xmp_shapes.h"

#include <utility>

#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_meta_handle.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::uint32_t kShape = kPropCompositeMask & ~kPropArrayIsAltText;

void ReplaceItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t options) {
    const std::size_t bracket = path.rfind('[');
    if (path.find_first_not_of("0123456789", bracket + 1) != path.size() - 1) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is of another kind");
    }
    const UTF8String array = path.substr(0, bracket);
    const int index = std::stoi(path.substr(bracket + 1));
    InsertArrayItem(tree, schema, array, index, {}, options);
    DeleteArrayItem(tree, schema, array, index + 1);
}

}  // namespace

TreeUndo::~TreeUndo() {
    if (mBefore) {
        mTree->mTree = std::move(mBefore->mTree);
        mTree->mMixed = std::move(mBefore->mMixed);
        mTree->mNative = std::move(mBefore->mNative);
    }
}

bool HasShape(std::uint32_t present, std::uint32_t wanted) {
    return (present & kShape) == (wanted & kShape);
}

void Reshape(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::uint32_t options) {
    if (NormalPlace(tree, schema, path).mSchema != schema) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" stands for a property of another kind");
    }
    TreeUndo undo(tree);
    if (path.ends_with(']')) {
        ReplaceItem(tree, schema, path, options);
    } else {
        DeleteProperty(tree, schema, path);
        SetProperty(tree, schema, path, {}, options);
    }
    for (const Node& node : Nodes(undo.Before(), schema, path, Walk::kJustChildren)) {
        if ((node.mOptions & kPropIsQualifier) != 0) {
            DuplicateSubtree(undo.Before(), tree, schema, node.mPath);
        }
    }
    undo.Keep();
}

}  // namespace zephmetadata::toolkit
