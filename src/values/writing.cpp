#include <algorithm>
#include <array>
#include <charconv>

#include "values/text_access.h"
#include "values/value_procedures.h"
#include "xmp/core/xmp_paths.h"
#include "zephmetadata/providers.h"

namespace zephmetadata {

namespace {

/// Typed writes share everything but the conversion between value and text.
template <typename Value, typename Get>
bool WriteNumber(XMPMetaHandle tree, const Path& path, Value value, const Get& get, UTF8String (*toText)(Value)) {
    return WriteValue(
        tree, path, value, [&] { return get(tree, path.mNamespace, path.mPathDescription); },
        [&](Value number) { toolkit::SetProperty(tree, path.mNamespace, path.mPathDescription, toText(number)); });
}

UTF8String TextOf(std::int64_t value) {
    return toolkit::ConvertFromInt64(value);
}

/// Whether the value is one that is written at all: what will be refused must not leave items behind.
bool IsWritable(const TextAccess& access, const UTF8String& value) {
    try {
        toolkit::CheckedValue(access.mCanonical(value));
        return IsWorthWriting(value);
    } catch (const XMPError&) {
        return false;
    }
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

/// Makes the items on the way to @p path that are one past the end of their arrays: writing below a missing item is
/// refused by the toolkit. Anything further away stays missing and is refused.
void MakeMissingItems(XMPMetaHandle tree, const Path& path) {
    const UTF8String expression = ExpressionForPath(path);
    for (std::size_t open = expression.find('['); open != UTF8String::npos; open = expression.find('[', open + 1)) {
        const Path array = PathForExpression(expression.substr(0, open));
        const UTF8String next = UTF8String("[").append(std::to_string(CountArrayItems(tree, array) + 1)).append("]");
        if (expression.compare(open, next.size(), next) == 0) {
            AddArrayItem(tree, array, CountArrayItems(tree, array));
        }
    }
}

}  // namespace

bool SetValue(XMPMetaHandle tree, const Path& path, const UTF8String& value) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        return false;
    }
    const auto kind = PrimitiveTypeOfPath(path);
    if (!IsDate(*entry) && !kind) {
        return false;
    }
    const TextAccess& access = IsDate(*entry) ? DateTextAccess() : TextAccessFor(*kind);
    if (tree != nullptr && IsWritable(access, value)) {
        MakeMissingItems(tree, path);
    }
    return WriteValue(
        tree, path, CanonicalOr(access, value), [&] { return access.mGet(tree, path); },
        [&](const UTF8String& text) { access.mSet(tree, path, text); });
}

bool SetValue(XMPMetaHandle tree, const Path& path, const char* value) {
    return value != nullptr && SetValue(tree, path, UTF8String(value));
}

bool SetLanguage(XMPMetaHandle tree, const Path& path, const UTF8String& language, const UTF8String& value) {
    if (!IsLanguageTag(language) || PrimitiveTypeOfPath(path) != kPrimitiveType_Alt) {
        return false;
    }
    const auto get = [&]() -> std::optional<UTF8String> {
        const auto languages = GetLanguages(tree, path);
        const auto found = languages.find(language);
        return found == languages.end() ? std::nullopt : std::optional(found->second);
    };
    if (value.empty()) {
        return tree != nullptr && DeleteLanguage(tree, path, language);
    }
    return WriteValue(tree, path, value, get, [&](const UTF8String& text) {
        toolkit::SetLocalizedText(tree, path.mNamespace, path.mPathDescription, {}, language, text);
    });
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

void SetMinimalFloatValue(const Value& value, double number) {
    MetaDataUpdateAccess access(value.provider);
    const XMPMetaHandle tree = *access;
    const Path& path = value.path;
    const bool written = WriteValue(
        tree, path, number, [&] { return toolkit::GetPropertyFloat(tree, path.mNamespace, path.mPathDescription); },
        [&](double wanted) { SimpleTextAccess().mSet(tree, path, MinimalFloatText(wanted)); });
    if (written) {
        access.AddChange(path);
    }
}

}  // namespace zephmetadata
