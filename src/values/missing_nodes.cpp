#include "values/missing_nodes.h"

#include <algorithm>

#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {

namespace {

/// Item options of an array's items, by what its definition says they are.
std::uint32_t ItemOptions(const Path& path) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const sp<TypeDefinition> type = entry ? PropertyTypeOf(*entry) : nullptr;
    return type && IsStructType(*type) ? toolkit::kPropValueIsStruct : 0;
}

/// Where the step after the one at @p step begins.
std::size_t NextStep(const UTF8String& path, std::size_t step) {
    return std::min(path.find_first_of("/[", step + 1), path.size());
}

}  // namespace

void InsertEmptyItem(XMPMetaHandle tree, const Path& path, int index) {
    const std::uint32_t itemOptions = ItemOptions(path);
    if (toolkit::CountArrayItems(tree, path.mNamespace, path.mPathDescription) > 0) {
        const int item = index == -1 ? toolkit::kLastItem : index + 1;
        toolkit::SetArrayItem(tree, path.mNamespace, path.mPathDescription, item, {},
                              itemOptions | toolkit::kInsertBeforeItem);
        return;
    }
    const bool isSeq = PrimitiveTypeOfPath(path) == kPrimitiveType_Seq;
    const std::uint32_t form = toolkit::kPropValueIsArray | (isSeq ? toolkit::kPropArrayIsOrdered : std::uint32_t{0});
    toolkit::AppendArrayItem(tree, path.mNamespace, path.mPathDescription, form, {}, itemOptions);
}

MissingNodes::MissingNodes(XMPMetaHandle tree, const Path& path)
    : mTree(tree), mPath(path), mWasNative(toolkit::IsNative(tree, path.mNamespace, path.mPathDescription)) {
    const UTF8String& whole = path.mPathDescription;
    if (toolkit::PropertyExists(tree, path.mNamespace, whole)) {
        return;
    }
    std::size_t end = NextStep(whole, 0);
    while (end < whole.size() && toolkit::PropertyExists(tree, path.mNamespace, whole.substr(0, end))) {
        end = NextStep(whole, end);
    }
    mTop = whole.substr(0, end);
}

MissingNodes::~MissingNodes() {
    if (mTop.empty()) {
        return;
    }
    try {
        toolkit::DeleteProperty(mTree, mPath.mNamespace, mTop);
        if (mWasNative) {
            toolkit::MarkNative(mTree, mPath.mNamespace, mPath.mPathDescription);
        }
    } catch (const XMPError&) {
        // What cannot be named was not made.
    }
}

void MissingNodes::MakeItems() {
    if (mTop.empty()) {
        return;
    }
    const UTF8String expression = ExpressionForPath(mPath);
    for (std::size_t open = expression.find('['); open != UTF8String::npos; open = expression.find('[', open + 1)) {
        const Path array = PathForExpression(expression.substr(0, open));
        if (!IsPathAnArray(array, true)) {
            continue;
        }
        const std::size_t count = toolkit::CountArrayItems(mTree, array.mNamespace, array.mPathDescription);
        const UTF8String next = UTF8String("[").append(std::to_string(count + 1)).append("]");
        if (expression.compare(open, next.size(), next) == 0) {
            InsertEmptyItem(mTree, array, static_cast<int>(count));
        }
    }
}

}  // namespace zephmetadata
