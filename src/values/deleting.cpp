#include "frame/errors.h"
#include "values/text_access.h"
#include "values/value_procedures.h"

namespace zephmetadata {

namespace {

/// @p description without its last "/field" step; empty at a top-level property.
UTF8String ParentStructure(const UTF8String& description) {
    const std::size_t slash = description.rfind('/');
    return slash == UTF8String::npos ? UTF8String() : description.substr(0, slash);
}

/// Deletes the structures above a deleted field that are left empty, the deepest first. An item of an array stays, and
/// so does everything above it.
void RemoveEmptiedParents(XMPMetaHandle tree, const Path& path) {
    UTF8String parent = ParentStructure(path.mPathDescription);
    while (!parent.empty() && !parent.ends_with(']') && toolkit::PropertyExists(tree, path.mNamespace, parent) &&
           toolkit::Nodes(tree, path.mNamespace, parent, toolkit::Walk::kJustChildren).empty()) {
        toolkit::DeleteProperty(tree, path.mNamespace, parent);
        parent = ParentStructure(parent);
    }
}

bool EmptyItem(XMPMetaHandle tree, const Path& path) {
    const TextAccess& access = SimpleTextAccess();
    return WriteValue(
        tree, path, UTF8String(), [&] { return access.mGet(tree, path); },
        [&](const UTF8String& text) { access.mSet(tree, path, text); });
}

}  // namespace

bool DeleteValue(XMPMetaHandle tree, const Path& path) {
    if (tree == nullptr || !HasValue(tree, path)) {
        return false;
    }
    try {
        const sp<TypeDefinition> parentType = TypeIdDefinition(path.mParentId);
        if (parentType && IsArrayType(*parentType)) {
            return EmptyItem(tree, path);
        }
        toolkit::DeleteProperty(tree, path.mNamespace, path.mPathDescription);
        if (parentType && IsStructType(*parentType)) {
            RemoveEmptiedParents(tree, path);
        }
        return true;
    } catch (...) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
}

}  // namespace zephmetadata
