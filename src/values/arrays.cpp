#include "values/missing_nodes.h"
#include "values/value_procedures.h"

namespace zephmetadata {

namespace {

bool IsArray(XMPMetaHandle tree, const Path& path) {
    return tree != nullptr && IsPathAnArray(path, true);
}

}  // namespace

int CountArrayItems(XMPMetaHandle tree, const Path& path) {
    if (!IsArray(tree, path)) {
        return 0;
    }
    try {
        return static_cast<int>(toolkit::CountArrayItems(tree, path.mNamespace, path.mPathDescription));
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorReadingXMP, path);
        return 0;
    }
}

bool AddArrayItem(XMPMetaHandle tree, const Path& path, int index) {
    if (!IsArray(tree, path)) {
        return false;
    }
    try {
        InsertEmptyItem(tree, path, index);
        return true;
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
}

bool DeleteArrayItem(XMPMetaHandle tree, const Path& path, int index) {
    if (!IsArray(tree, path)) {
        return false;
    }
    try {
        if (index < 0 || !toolkit::DeleteArrayItem(tree, path.mNamespace, path.mPathDescription, index + 1)) {
            ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
            return false;
        }
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
    // Of a merged tree, whose array is that of one source, the others may hold more.
    if (CountArrayItems(tree, path) == 0 && !toolkit::IsMixed(tree, path.mNamespace, path.mPathDescription)) {
        DeleteValue(tree, path);
    }
    return true;
}

}  // namespace zephmetadata
