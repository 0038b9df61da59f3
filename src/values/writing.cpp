#include <algorithm>
#include <array>
#include <charconv>

#include "values/missing_nodes.h"
#include "values/text_access.h"
#include "values/value_procedures.h"
#include "xmp/core/xmp_paths.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

namespace {

/// The setter with everything around it: what is missing on the way is made, and gone again when the value is refused.
template <typename Setter>
auto OnTheWay(XMPMetaHandle tree, const Path& path, const Setter& setter) {
    return [tree, &path, &setter](const auto& value) {
        MissingNodes missing(tree, path);
        missing.MakeItems();
        setter(value);
        missing.Keep();
    };
}

/// Whether a number has a place at @p path. Where nothing is defined, what is there decides.
bool TakesNumber(XMPMetaHandle tree, const Path& path) {
    if (const sp<EntryDefinition> entry = PathEntryDefinition(path)) {
        const auto kind = PrimitiveTypeOfPath(path);
        return kind && !PrimitiveTypeIsArray(*kind);
    }
    try {
        const auto present = toolkit::GetProperty(tree, path.mNamespace, path.mPathDescription);
        return !present || (present->mOptions & toolkit::kPropCompositeMask) == 0;
    } catch (const XMPError&) {
        return false;
    }
}

/// Typed writes share everything but the conversion between value and text.
template <typename Value, typename Get>
bool WriteNumber(XMPMetaHandle tree, const Path& path, Value value, const Get& get, UTF8String (*toText)(Value)) {
    if (tree != nullptr && !TakesNumber(tree, path)) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
    const auto set = [&](Value number) {
        toolkit::SetProperty(tree, path.mNamespace, path.mPathDescription, toText(number));
    };
    return WriteValue(
        tree, path, value, [&] { return get(tree, path.mNamespace, path.mPathDescription); },
        OnTheWay(tree, path, set));
}

UTF8String TextOf(std::int64_t value) {
    return toolkit::ConvertFromInt64(value);
}

/// The canonical form where the text has one; any other text is left for the setter to refuse.
UTF8String CanonicalOr(const TextAccess& access, const UTF8String& value) {
    try {
        return access.mCanonical(value);
    } catch (const XMPError&) {
        return value;
    }
}

UTF8String MinimalFloatText(double number) {
    constexpr int kDigitsThatReadBack = 17;
    std::array<char, 64> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                            std::chars_format::general, kDigitsThatReadBack);
    return error == std::errc() ? UTF8String(buffer.data(), end) : UTF8String();
}

/// Letters, digits and hyphens: anything else would be taken for a part of the path.
bool IsLanguageTag(const UTF8String& text) {
    const auto isTagCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-';
    };
    return !text.empty() && std::all_of(text.begin(), text.end(), isTagCharacter);
}

bool DeleteLanguage(XMPMetaHandle tree, const Path& path, const UTF8String& language) {
    try {
        return toolkit::DeleteLocalizedText(tree, path.mNamespace, path.mPathDescription, language);
    } catch (const XMPError&) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
}

/// The alternative that an item told by its language is one of.
std::optional<Path> AlternativeOf(const Path& path) {
    if (!toolkit::LanguageItemAt(path.mPathDescription)) {
        return std::nullopt;
    }
    const Path alternative = PathForExpression(toolkit::LanguageItemAt(ExpressionForPath(path))->mArray);
    return PrimitiveTypeOfPath(alternative) == kPrimitiveType_Alt ? std::optional(alternative) : std::nullopt;
}

std::optional<UTF8String> LanguageText(XMPMetaHandle tree, const Path& path, const UTF8String& language) {
    for (toolkit::LanguageText& text : toolkit::LanguageTexts(tree, path.mNamespace, path.mPathDescription)) {
        if (toolkit::SameLanguage(text.mLanguage, language)) {
            return std::move(text.mText);
        }
    }
    return std::nullopt;
}

}  // namespace

bool SetValue(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    const auto kind = PrimitiveTypeOfPath(path);
    if (tree == nullptr || !entry || !kind) {
        return false;
    }
    if (!TakesText(*entry)) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
    // Adds the language where it is missing, and the alternative.
    if (const std::optional<Path> alternative = AlternativeOf(path); alternative && !value.empty()) {
        return SetLanguage(tree, *alternative, toolkit::LanguageItemAt(path.mPathDescription)->mLanguage, value);
    }
    const TextAccess& access = IsDate(*entry) ? DateTextAccess() : TextAccessFor(*kind);
    const auto set = [&](const UTF8String& text) { access.mSet(tree, path, text); };
    return WriteValue(
        tree, path, CanonicalOr(access, value), [&] { return access.mGet(tree, path); }, OnTheWay(tree, path, set));
}

bool SetValue(XMPMetaHandle tree, const Path& path, const char* value) {
    return value != nullptr && SetValue(tree, path, UTF8String(value));
}

bool SetLanguage(XMPMetaHandle tree, const Path& path, const UTF8String& language, const UTF8String& value) {
    const bool isTag = IsLanguageTag(language) || (value.empty() && !language.empty());  // what is there can go
    if (tree == nullptr || !isTag || PrimitiveTypeOfPath(path) != kPrimitiveType_Alt) {
        return false;
    }
    if (!TakesText(*PathEntryDefinition(path))) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
    if (value.empty()) {
        return DeleteLanguage(tree, path, language);
    }
    const auto set = [&](const UTF8String& text) {
        toolkit::SetLocalizedText(tree, path.mNamespace, path.mPathDescription, {}, language, text);
    };
    return WriteValue(
        tree, path, value, [&] { return LanguageText(tree, path, language); }, OnTheWay(tree, path, set));
}

bool SetValue(XMPMetaHandle tree, const Path& path, int value) {
    return SetValue(tree, path, static_cast<long long>(value));
}

bool SetValue(XMPMetaHandle tree, const Path& path, long long value) {
    return WriteNumber<std::int64_t>(tree, path, value, toolkit::GetPropertyInt64, TextOf);
}

bool SetValue(XMPMetaHandle tree, const Path& path, double value) {
    return WriteNumber<double>(tree, path, value, toolkit::GetPropertyFloat, toolkit::ConvertFromFloat);
}

bool SetValue(XMPMetaHandle tree, const Path& path, bool value) {
    return WriteNumber<bool>(tree, path, value, toolkit::GetPropertyBool, toolkit::ConvertFromBool);
}

UTF8String DateText(const Date& date) {
    const auto padded = [](std::int32_t number, std::size_t digits) {
        const UTF8String text = std::to_string(number);
        return UTF8String(digits - std::min(digits, text.size()), '0') + text;
    };
    const bool hasTime = date.hour != 0 || date.minute != 0 || date.second != 0;
    if ((date.day == 0 && hasTime) || (date.month == 0 && date.day != 0) || date == Date{}) {
        return {};
    }
    UTF8String text = padded(date.year, 4);
    text += date.month == 0 ? "" : "-" + padded(date.month, 2);
    text += date.day == 0 ? "" : "-" + padded(date.day, 2);
    return !hasTime
               ? text
               : text + "T" + padded(date.hour, 2) + ":" + padded(date.minute, 2) + ":" + padded(date.second, 2) + "Z";
}

bool SetValue(XMPMetaHandle tree, const Path& path, const Date& value) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (tree == nullptr || !entry) {
        return false;
    }
    if (!IsDate(*entry)) {
        ReportInvalidData(ErrorKind::ErrorWritingXMP, path);
        return false;
    }
    Date current;
    const bool isThere = [&] {
        const ErrorScope ofWhatIsReplaced;
        return GetValue(tree, path, current) && current == value;
    }();
    return !isThere && SetValue(tree, path, DateText(value));
}

void SetMinimalFloatValue(const Value& value, double number) {
    MetaDataUpdateAccess access(value.provider);
    const bool written = WriteNumber<double>(*access, value.path, number, toolkit::GetPropertyFloat, MinimalFloatText);
    if (written) {
        access.AddChange(value.path);
    }
}

}  // namespace zephmetadata
