#include "values/text_access.h"

#include "xmp/dates/xmp_dates.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata {

namespace {

constexpr const char* kDefaultLanguage = "x-default";

UTF8String Unchanged(const UTF8String& value) {
    return value;
}

std::optional<UTF8String> GetText(XMPMetaHandle tree, const Path& path) {
    auto property = toolkit::GetProperty(tree, path.mNamespace, path.mPathDescription);
    return property ? std::optional(std::move(property->mValue)) : std::nullopt;
}

void SetText(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    toolkit::SetProperty(tree, path.mNamespace, path.mPathDescription, value);
}

UTF8String CanonicalDate(const UTF8String& value) {
    return toolkit::ConvertFromDate(toolkit::ConvertToDate(value));
}

std::optional<UTF8String> GetDate(XMPMetaHandle tree, const Path& path) {
    auto text = GetText(tree, path);
    return text && !text->empty() ? std::optional(CanonicalDate(*text)) : text;
}

void SetDate(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    SetText(tree, path, CanonicalDate(value));
}

std::optional<UTF8String> GetJoined(XMPMetaHandle tree, const Path& path) {
    return toolkit::CatenateArrayItems(tree, path.mNamespace, path.mPathDescription);
}

template <std::uint32_t ArrayOptions>
void SetSplit(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    toolkit::SeparateArrayItems(tree, path.mNamespace, path.mPathDescription, ArrayOptions, value);
}

std::optional<UTF8String> GetDefaultLanguage(XMPMetaHandle tree, const Path& path) {
    return toolkit::GetLocalizedText(tree, path.mNamespace, path.mPathDescription, {}, kDefaultLanguage);
}

void SetDefaultLanguage(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    toolkit::SetLocalizedText(tree, path.mNamespace, path.mPathDescription, {}, kDefaultLanguage, value);
}

UTF8String CanonicalItems(const UTF8String& value) {
    return toolkit::JoinItems(toolkit::SplitItems(value));
}

constexpr TextAccess kSimple{GetText, SetText, Unchanged};
constexpr TextAccess kDate{GetDate, SetDate, CanonicalDate};
constexpr TextAccess kBag{GetJoined, SetSplit<toolkit::kPropValueIsArray>, CanonicalItems};
constexpr TextAccess kSeq{GetJoined, SetSplit<toolkit::kPropValueIsArray | toolkit::kPropArrayIsOrdered>,
                          CanonicalItems};
constexpr TextAccess kAlternative{GetDefaultLanguage, SetDefaultLanguage, Unchanged};

}  // namespace

const TextAccess& SimpleTextAccess() {
    return kSimple;
}

const TextAccess& DateTextAccess() {
    return kDate;
}

const TextAccess& TextAccessFor(PrimitiveType type) {
    switch (type) {
        case kPrimitiveType_Bag:
            return kBag;
        case kPrimitiveType_Seq:
            return kSeq;
        case kPrimitiveType_Alt:
            return kAlternative;
        default:
            return kSimple;
    }
}

bool IsDate(const EntryDefinition& entry) {
    return entry.mType == "date";
}

bool TakesText(const EntryDefinition& entry) {
    const auto kind = entry.mType ? PrimitiveTypeOf(*entry.mType) : entry.mExtends;
    if (!kind || !PrimitiveTypeIsArray(*kind)) {
        return kind.has_value();
    }
    const std::optional<UTF8String> element = ElementTypeIdOf(entry);
    const sp<TypeDefinition> type = element ? TypeIdDefinition(*element) : nullptr;
    return !type || (!IsStructType(*type) && !IsArrayType(*type));
}

}  // namespace zephmetadata
