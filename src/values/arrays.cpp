#include "values/value_procedures.h"

namespace zephmetadata {

namespace {

/// Item options of an array's items, by what its definition says they are.
std::uint32_t ItemOptions(const Path& path) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const sp<TypeDefinition> type = entry ? PropertyTypeOf(*entry) : nullptr;
    return type && IsStructType(*type) ? toolkit::kPropValueIsStruct : 0;
}

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
    const std::uint32_t itemOptions = ItemOptions(path);
    try {
        if (CountArrayItems(tree, path) > 0) {
            const int item = index == -1 ? toolkit::kLastItem : index + 1;
            toolkit::SetArrayItem(tree, path.mNamespace, path.mPathDescription, item, {},
                                  itemOptions | toolkit::kInsertBeforeItem);
        } else {
            const bool isSeq = PrimitiveTypeOfPath(path) == kPrimitiveType_Seq;
            const std::uint32_t form =
                toolkit::kPropValueIsArray | (isSeq ? toolkit::kPropArrayIsOrdered : std::uint32_t{0});
            toolkit::AppendArrayItem(tree, path.mNamespace, path.mPathDescription, form, {}, itemOptions);
        }
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
