#include <functional>

#include "values/refusals.h"
#include "values/text_access.h"
#include "values/value_procedures.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmetadata {

namespace {

/// The property that @p path leads into as the only one of a tree, to try an edit on.
XMPMetaPtr PropertyAlone(XMPMetaHandle tree, const Path& path) {
    const UTF8String property = path.mPathDescription.substr(0, path.mPathDescription.find_first_of("/["));
    try {
        XMPMetaPtr alone = toolkit::NewTree();
        if (toolkit::GetProperty(tree, path.mNamespace, property)) {
            toolkit::DuplicateSubtree(tree, alone.get(), path.mNamespace, property);
        }
        return alone;
    } catch (const XMPError&) {
        return nullptr;
    }
}

bool IsSettable(XMPMetaHandle tree, const std::function<bool(XMPMetaHandle)>& set) {
    const ErrorScope scope;
    set(tree);
    return scope.Errors().empty();
}

/// Sets @p text, or what it stands for, with @p set. @p hasPlace is asked when there is a definition.
template <typename Set>
EditOutcome Try(XMPMetaHandle tree, const Path& path, const UTF8String& text, const Set& set,
                bool (*hasPlace)(const Path& path)) {
    ValueEdit edit;
    edit.mPath = path;
    edit.mValue = text;
    const bool isDefined = PathEntryDefinition(path) != nullptr;
    if (const Refusal why = isDefined && !hasPlace(path) ? NoPlace() : Consider(edit); !why.IsNone()) {
        return Refused(why);
    }
    if (tree == nullptr) {
        return Refused(NoTree());
    }
    const XMPMetaPtr alone = PropertyAlone(tree, path);
    if (!alone || !IsSettable(alone.get(), set)) {
        return Refused(Cannot());
    }
    return {set(tree) ? EditResult::kEditResult_Changed : EditResult::kEditResult_Unchanged, {}};
}

bool IsAnything(const Path& /*path*/) {
    return true;
}

bool IsSimple(const Path& path) {
    const auto kind = PrimitiveTypeOfPath(path);
    return kind && !PrimitiveTypeIsArray(*kind);
}

bool IsDateAt(const Path& path) {
    return IsDate(*PathEntryDefinition(path));
}

}  // namespace

EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    return Try(
        tree, path, value, [&](XMPMetaHandle into) { return SetValue(into, path, value); }, IsAnything);
}

EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, long long value) {
    return Try(
        tree, path, std::to_string(value), [&](XMPMetaHandle into) { return SetValue(into, path, value); }, IsSimple);
}

EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, double value) {
    return Try(
        tree, path, toolkit::ConvertFromFloat(value), [&](XMPMetaHandle into) { return SetValue(into, path, value); },
        IsSimple);
}

EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, bool value) {
    return Try(
        tree, path, toolkit::ConvertFromBool(value), [&](XMPMetaHandle into) { return SetValue(into, path, value); },
        IsSimple);
}

EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, const Date& value) {
    return Try(
        tree, path, DateText(value), [&](XMPMetaHandle into) { return SetValue(into, path, value); }, IsDateAt);
}

}  // namespace zephmetadata
