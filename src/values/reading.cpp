#include <algorithm>

#include "values/constructed_values.h"
#include "values/text_access.h"
#include "values/value_procedures.h"
#include "xmp/dates/xmp_dates.h"
#include "zephmetadata/formatting.h"

namespace zephmetadata {

namespace {

/// Moves what was read into the caller's variable; whether there was anything.
template <typename Read, typename Value>
bool Deliver(Read&& read, Value& value) {
    if (!read) {
        return false;
    }
    value = static_cast<Value>(*std::forward<Read>(read));
    return true;
}

UTF8String Lowered(UTF8String text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c; });
    return text;
}

/// What is shown of @p stored: internal values in a form for people, unless they are to be edited. What the host's
/// formatter throws is reported, and the value shown as it is stored.
UTF8String ShownText(XMPMetaHandle tree, const Path& path, const UTF8String& stored) {
    if (!path.mInternal || IsAllMetadataForcedWritable()) {
        return stored;
    }
    try {
        UTF8String shown = FormatValue(tree, path, stored);
        return shown.empty() ? stored : shown;
    } catch (...) {
        ReportInvalidData(ErrorKind::ErrorReadingXMP, path);
        return stored;
    }
}

/// Whether @p text, shown for @p stored, is a form of its kind that every reader understands; throws XMPError where the
/// stored text is none at all.
bool IsCanonical(const EntryDefinition& entry, PrimitiveType kind, const UTF8String& stored, const UTF8String& text) {
    if (kind == kPrimitiveType_Integer) {
        return toolkit::ConvertFromInt64(toolkit::ConvertToInt64(stored)) == text;
    }
    if (kind == kPrimitiveType_Boolean) {
        const UTF8String lowered = Lowered(text);
        return toolkit::ConvertToBool(stored) ? lowered == "1" || lowered == "true"
                                              : lowered == "0" || lowered == "false";
    }
    if (kind == kPrimitiveType_ClosedChoice) {
        return std::any_of(entry.mChoices.begin(), entry.mChoices.end(),
                           [&](const auto& choice) { return choice->mRawValue == text; });
    }
    return true;
}

void CheckText(const Path& path, const EntryDefinition& entry, PrimitiveType kind, const UTF8String& stored,
               const UTF8String& text) {
    bool canonical = false;
    try {
        canonical = IsCanonical(entry, kind, stored, text);
    } catch (const XMPError&) {
        // reported below, as what it is: data that is not of its kind
    }
    if (!canonical) {
        ReportInvalidData(ErrorKind::ErrorReadingXMP, path);
    }
}

std::optional<UTF8String> ReadText(XMPMetaHandle tree, const Path& path, GetValueResult* result,
                                   const TextAccess& access) {
    return ReadValue(tree, path, result, [&] { return access.mGet(tree, path); });
}

Date ToDate(const UTF8String& text) {
    const toolkit::DateTime utc = toolkit::ConvertToUTCTime(toolkit::ConvertToDate(text));
    Date date;
    if (utc.mHasDate) {
        date.year = utc.mYear;
        date.month = utc.mMonth;
        date.day = utc.mDay;
    }
    if (utc.mHasTime) {
        date.hour = utc.mHour;
        date.minute = utc.mMinute;
        date.second = utc.mSecond;
    }
    return date;
}

}  // namespace

bool HasValue(XMPMetaHandle tree, const Path& path) {
    if (tree == nullptr) {
        return false;
    }
    try {
        return toolkit::PropertyExists(tree, path.mNamespace, path.mPathDescription);
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorReadingXMP, path);
        return false;
    }
}

ValueOrigin OriginOf(XMPMetaHandle tree, const Path& path) {
    if (!HasValue(tree, path)) {
        return ValueOrigin::kValueOrigin_None;
    }
    const bool isNative = toolkit::IsNative(tree, path.mNamespace, path.mPathDescription);
    return isNative ? ValueOrigin::kValueOrigin_Native : ValueOrigin::kValueOrigin_XMP;
}

bool IsMixed(XMPMetaHandle tree, const Path& path) {
    try {
        return tree != nullptr && toolkit::IsMixed(tree, path.mNamespace, path.mPathDescription);
    } catch (const XMPError&) {
        return false;
    }
}

bool GetValue(XMPMetaHandle tree, const Path& path, int& value, GetValueResult* result) {
    const auto get = [&] { return toolkit::GetPropertyInt(tree, path.mNamespace, path.mPathDescription); };
    return Deliver(ReadValue(tree, path, result, get), value);
}

bool GetValue(XMPMetaHandle tree, const Path& path, long long& value, GetValueResult* result) {
    const auto get = [&] { return toolkit::GetPropertyInt64(tree, path.mNamespace, path.mPathDescription); };
    return Deliver(ReadValue(tree, path, result, get), value);
}

bool GetValue(XMPMetaHandle tree, const Path& path, double& value, GetValueResult* result) {
    const auto get = [&] { return toolkit::GetPropertyFloat(tree, path.mNamespace, path.mPathDescription); };
    return Deliver(ReadValue(tree, path, result, get), value);
}

bool GetValue(XMPMetaHandle tree, const Path& path, bool& value, GetValueResult* result) {
    const auto get = [&] { return toolkit::GetPropertyBool(tree, path.mNamespace, path.mPathDescription); };
    return Deliver(ReadValue(tree, path, result, get), value);
}

bool GetValue(XMPMetaHandle tree, const Path& path, Date& value, GetValueResult* result) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        SetResult(result, kGetValueResult_NoDefinition);
        return false;
    }
    if (!IsDate(*entry)) {
        return false;
    }
    return Deliver(ReadValue(tree, path, result,
                             [&]() -> std::optional<Date> {
                                 const auto text = SimpleTextAccess().mGet(tree, path);
                                 if (!text) {
                                     return std::nullopt;
                                 }
                                 return text->empty() ? value : ToDate(*text);
                             }),
                   value);
}

bool GetValue(XMPMetaHandle tree, const Path& path, UTF8String& value, GetValueResult* result) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        SetResult(result, kGetValueResult_NoDefinition);
        return false;
    }
    const auto kind = entry->mType ? PrimitiveTypeOf(*entry->mType) : entry->mExtends;
    std::optional<UTF8String> text;
    if (IsDate(*entry)) {
        text = ReadText(tree, path, result, DateTextAccess());
    }
    if (!text && kind) {  // also for a malformed date, which then reads as stored
        text = ReadText(tree, path, result, TextAccessFor(*kind));
    }
    if (!text) {
        // Where the sources differ, nothing stands in for their values.
        return path.mInternal && !IsMixed(tree, path) && GetConstructedValue(tree, path, value, result);
    }
    value = ShownText(tree, path, *text);
    if (!value.empty() && kind) {
        CheckText(path, *entry, *kind, *text, value);
    }
    return true;
}

bool GetRawStringValue(XMPMetaHandle tree, const Path& path, UTF8String& value, GetValueResult* result) {
    return Deliver(ReadText(tree, path, result, SimpleTextAccess()), value);
}

std::map<UTF8String, UTF8String> GetLanguages(XMPMetaHandle tree, const Path& path) {
    const auto read = [&]() -> std::optional<std::map<UTF8String, UTF8String>> {
        std::map<UTF8String, UTF8String> languages;
        for (toolkit::LanguageText& text : toolkit::LanguageTexts(tree, path.mNamespace, path.mPathDescription)) {
            languages.emplace(std::move(text.mLanguage), std::move(text.mText));
        }
        return languages;
    };
    return ReadValue(tree, path, nullptr, read).value_or(std::map<UTF8String, UTF8String>());
}

std::vector<UTF8String> GetItems(XMPMetaHandle tree, const Path& path) {
    const auto read = [&]() -> std::optional<std::vector<UTF8String>> {
        std::vector<UTF8String> items;
        for (toolkit::Node& node :
             toolkit::Nodes(tree, path.mNamespace, path.mPathDescription, toolkit::Walk::kJustChildren)) {
            if ((node.mOptions & (toolkit::kPropIsQualifier | toolkit::kPropCompositeMask)) == 0) {
                items.push_back(std::move(node.mValue));
            }
        }
        return items;
    };
    return ReadValue(tree, path, nullptr, read).value_or(std::vector<UTF8String>());
}

}  // namespace zephmetadata
