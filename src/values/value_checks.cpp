#include <algorithm>
#include <string_view>

#include "frame/toolkit/utf8.h"
#include "frame/toolkit/xmp_dates.h"
#include "frame/toolkit/xmp_tree.h"
#include "values/text_access.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kNoDefinition = u"$$$/zephmetadata/value/NoDefinition=no definition describes it";
constexpr std::u16string_view kStructure = u"$$$/zephmetadata/value/Structure=it is a structure; set its fields";
constexpr std::u16string_view kStructures =
    u"$$$/zephmetadata/value/Structures=its items are structures; set their fields";
constexpr std::u16string_view kNoInteger = u"$$$/zephmetadata/value/NoInteger=#{quot}@0#{quot} is not an integer";
constexpr std::u16string_view kNoNumber = u"$$$/zephmetadata/value/NoNumber=#{quot}@0#{quot} is not a number";
constexpr std::u16string_view kNoBoolean =
    u"$$$/zephmetadata/value/NoBoolean=#{quot}@0#{quot} is neither True nor False";
constexpr std::u16string_view kNoDate =
    u"$$$/zephmetadata/value/NoDate=#{quot}@0#{quot} is not a date such as 2024-05-17 or 2024-05-17T09:30:00+02:00";
constexpr std::u16string_view kNoChoice = u"$$$/zephmetadata/value/NoChoice=#{quot}@0#{quot} is none of: @1";
constexpr std::u16string_view kNoText =
    u"$$$/zephmetadata/value/NoText=it holds control characters or bytes that are no UTF-8";
constexpr std::u16string_view kNoMatch = u"$$$/zephmetadata/value/NoMatch=#{quot}@0#{quot} has not the form @1";
constexpr std::u16string_view kTooSmall = u"$$$/zephmetadata/value/TooSmall=#{quot}@0#{quot} is less than @1";
constexpr std::u16string_view kTooLarge = u"$$$/zephmetadata/value/TooLarge=#{quot}@0#{quot} is more than @1";

UTF16String Reason(std::u16string_view key, const UTF8String& value, const UTF16String& detail = {}) {
    return zephcore::ZString(key, {zephcore::UTF8to16(value), detail});
}

/// Whether @p convert takes the text.
template <typename Convert>
bool Converts(const UTF8String& value, const Convert& convert) {
    try {
        static_cast<void>(convert(value));
        return true;
    } catch (const XMPError&) {
        return false;
    }
}

UTF16String CheckBounds(const EntryDefinition& entry, const UTF8String& value) {
    constexpr int kDigits = 6;
    const double number = toolkit::ConvertToFloat(value);
    if (entry.mMin && number < *entry.mMin) {
        return Reason(kTooSmall, value, zephcore::NumberToString(*entry.mMin, 1, kDigits));
    }
    if (entry.mMax && number > *entry.mMax) {
        return Reason(kTooLarge, value, zephcore::NumberToString(*entry.mMax, 1, kDigits));
    }
    return {};
}

UTF16String CheckChoice(const EntryDefinition& entry, const UTF8String& value) {
    const auto& choices = entry.mChoices;
    const bool isOne =
        std::any_of(choices.begin(), choices.end(), [&](const auto& choice) { return choice->mRawValue == value; });
    if (isOne || choices.empty()) {
        return {};
    }
    UTF8String allowed;
    for (const auto& choice : choices) {
        allowed += (allowed.empty() ? "" : ", ") + (choice->mRawValue.empty() ? "\"\"" : choice->mRawValue);
    }
    return Reason(kNoChoice, value, zephcore::UTF8to16(allowed));
}

UTF16String CheckKind(const EntryDefinition& entry, PrimitiveType kind, const UTF8String& value) {
    switch (kind) {
        case kPrimitiveType_Integer:
            return Converts(value, toolkit::ConvertToInt64) ? CheckBounds(entry, value) : Reason(kNoInteger, value);
        case kPrimitiveType_Real:
            return Converts(value, toolkit::ConvertToFloat) ? CheckBounds(entry, value) : Reason(kNoNumber, value);
        case kPrimitiveType_Boolean:
            return Converts(value, toolkit::ConvertToBool) ? UTF16String() : Reason(kNoBoolean, value);
        case kPrimitiveType_ClosedChoice:
            return CheckChoice(entry, value);
        default:
            return {};
    }
}

UTF16String CheckForm(const EntryDefinition& entry, const UTF8String& typeId, const UTF8String& value) {
    const sp<TypeDefinition> type = TypeIdDefinition(typeId);
    for (const auto& pattern : {entry.mPattern, type ? type->mPattern : std::nullopt}) {
        if (pattern && !zephcore::MatchesPattern(*pattern, value)) {
            return Reason(kNoMatch, value, zephcore::UTF8to16(*pattern));
        }
    }
    return {};
}

UTF16String CheckType(const UTF8String& typeId, const EntryDefinition& entry, const UTF8String& value) {
    if (typeId == "date") {
        return Converts(value, toolkit::ConvertToDate) ? UTF16String() : Reason(kNoDate, value);
    }
    const auto kind = PrimitiveTypeOf(typeId);
    if (!kind) {
        return Reason(kStructure, value);
    }
    UTF16String reason = CheckKind(entry, *kind, value);
    return reason.empty() ? CheckForm(entry, typeId, value) : reason;
}

/// Each item of a joined text against the type of the items.
UTF16String CheckItems(const EntryDefinition& entry, const UTF8String& value) {
    const UTF8String elementType = ElementTypeIdOf(entry).value_or(kTypeText);
    const sp<TypeDefinition> type = TypeIdDefinition(elementType);
    if (IsStructType(elementType)) {
        return Reason(kStructures, value);
    }
    for (const UTF8String& item : toolkit::SplitItems(value)) {
        UTF16String reason = CheckType(elementType, type ? *type : entry, item);
        if (!reason.empty()) {
            return reason;
        }
    }
    return {};
}

}  // namespace

UTF16String WhyNotAllowed(const Path& path, const UTF8String& value) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        return Reason(kNoDefinition, value);
    }
    if (!toolkit::IsXMLText(value)) {
        return Reason(kNoText, value);
    }
    const auto kind = PrimitiveTypeOfPath(path);
    if (kind == kPrimitiveType_Bag || kind == kPrimitiveType_Seq) {
        return CheckItems(*entry, value);
    }
    return CheckType(entry->mType.value_or(kTypeText), *entry, value);
}

}  // namespace zephmetadata
