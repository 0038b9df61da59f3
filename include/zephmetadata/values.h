#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "zephcore/text.h"
#include "zephmetadata/paths.h"

/// Typed reading and writing of the values at a path.
///
/// Nothing is thrown: failures of the toolkit become error records (ErrorReadingXMP, ErrorWritingXMP) and a false
/// result. A null tree reads as having no value. Callers hold the tree through the access objects of providers.h and
/// record there what they changed.
namespace zephmetadata {

class MetaDataProvider;

enum GetValueResult : std::int32_t {
    kGetValueResult_Success = 0,
    kGetValueResult_Mixed = 1,         ///< the merged sources differ; no value was read
    kGetValueResult_NoValue = 2,       ///< nothing there, or it could not be read
    kGetValueResult_NoDefinition = 3,  ///< the path resolves to no definition
};

/// A date and time in UTC; a part that the stored date does not have is 0.
struct ZEPHMETADATA_EXPORT Date {
    std::int32_t year = 0;
    std::int32_t month = 0;
    std::int32_t day = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;

    friend auto operator<=>(const Date&, const Date&) = default;
};

struct Value {
    Path path;
    sp<MetaDataProvider> provider;
};

ZEPHMETADATA_EXPORT bool HasValue(XMPMetaHandle tree, const Path& path);
/// Whether the sources of a merged tree differ at @p path, or at what it is part of; reads answer
/// kGetValueResult_Mixed there.
ZEPHMETADATA_EXPORT bool IsMixed(XMPMetaHandle tree, const Path& path);

enum ValueOrigin : std::int32_t {
    kValueOrigin_None = 0,    ///< there is no value
    kValueOrigin_XMP = 1,     ///< read from an XMP packet, or set by the host
    kValueOrigin_Native = 2,  ///< read from native metadata of the file (Exif, IPTC-IIM, fields of its format)
};

/// Where the property that @p path leads to, or into, was read from. Setting a value that differs makes it one of XMP,
/// until the file is read again.
ZEPHMETADATA_EXPORT ValueOrigin OriginOf(XMPMetaHandle tree, const Path& path);

// Reads. False leaves @p value as it was.

ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, int& value, GetValueResult* result = nullptr);
ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, long long& value,
                                  GetValueResult* result = nullptr);
ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, double& value,
                                  GetValueResult* result = nullptr);
ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, bool& value, GetValueResult* result = nullptr);
/// For paths of type "date" only.
ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, Date& value, GetValueResult* result = nullptr);
/// The display text: arrays joined with "; ", the x-default item of a language alternative, internal values formatted.
/// A value that its type does not allow is returned all the same, with an error record.
ZEPHMETADATA_EXPORT bool GetValue(XMPMetaHandle tree, const Path& path, UTF8String& value,
                                  GetValueResult* result = nullptr);
/// The stored text as it is, up to its first NUL; needs no definition.
ZEPHMETADATA_EXPORT bool GetRawStringValue(XMPMetaHandle tree, const Path& path, UTF8String& value,
                                           GetValueResult* result = nullptr);
/// The display text of an internal property that is absent, made from others.
ZEPHMETADATA_EXPORT bool GetConstructedValue(XMPMetaHandle tree, const Path& path, UTF8String& value,
                                             GetValueResult* result = nullptr);

/// The texts of a language alternative by language, as SetLanguage keeps it, "x-default" among them; empty when there is
/// none.
ZEPHMETADATA_EXPORT std::map<UTF8String, UTF8String> GetLanguages(XMPMetaHandle tree, const Path& path);
/// The stored texts of an array of simple values, in order.
ZEPHMETADATA_EXPORT std::vector<UTF8String> GetItems(XMPMetaHandle tree, const Path& path);

// Writes. True when a write took place: a value that is already there is not written again.

// An item that is one past the end of its array is made, the array with it, and so are missing structures on the way. A
// value of another shape than its definition says is replaced. Refused, with an error record, is what would make a tree
// that no packet can hold, and what would cost other values: a text for structures, a number for an array.

/// Text of an array is split into items at semicolons, items with a semicolon in quotes; of a language alternative it
/// sets the x-default item alone; of a date it must be one (ISO 8601 as XMP has it).
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, const UTF8String& value);
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, const char* value);
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, int value);
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, long long value);
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, double value);
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, bool value);
/// For paths of type "date" only. The parts at the end that are 0 are left out: without hour, minute and second it is a
/// date without a time, else a time in UTC. A stored date that reads as @p value stays as it is.
ZEPHMETADATA_EXPORT bool SetValue(XMPMetaHandle tree, const Path& path, const Date& value);

/// Texts and integers of other types. An integer that long long cannot hold is set as its text.
template <typename T>
concept OtherText = std::same_as<T, std::string_view> ||
    (std::convertible_to<const T&, std::u16string_view> && !std::same_as<T, std::nullptr_t>);
template <typename T>
concept OtherInteger = std::same_as<T, long> || std::same_as<T, unsigned> || std::same_as<T, unsigned long> ||
    std::same_as<T, unsigned long long>;
/// What would turn into a bool.
template <typename T>
concept OtherPointer = std::is_pointer_v<std::decay_t<T>> && !std::convertible_to<T, const char*> &&
                       !std::convertible_to<T, const char16_t*>;

template <OtherText T>
bool SetValue(XMPMetaHandle tree, const Path& path, const T& value) {
    if constexpr (std::same_as<T, std::string_view>) {
        return SetValue(tree, path, UTF8String(value));
    } else if constexpr (std::is_pointer_v<T>) {
        return value != nullptr && SetValue(tree, path, zephcore::UTF16to8(value));
    } else {
        return SetValue(tree, path, zephcore::UTF16to8(value));
    }
}
template <OtherInteger T>
bool SetValue(XMPMetaHandle tree, const Path& path, T value) {
    return std::in_range<long long>(value) ? SetValue(tree, path, static_cast<long long>(value))
                                           : SetValue(tree, path, std::to_string(value));
}
template <OtherPointer T>
bool SetValue(XMPMetaHandle tree, const Path& path, const T& value) = delete;

/// What SetValue takes.
template <typename T>
concept SettableType = requires(XMPMetaHandle tree, const Path& path, const T& value) {
    SetValue(tree, path, value);
};

enum EditResult : std::int32_t {
    kEditResult_Changed = 0,
    kEditResult_Unchanged = 1,  ///< the value was there already, or there was nothing to take away
    kEditResult_Refused = 2,
};

enum EditRefusal : std::int32_t {
    kEditRefusal_None = 0,
    kEditRefusal_NoTree = 1,        ///< there is no metadata to change
    kEditRefusal_NoDefinition = 2,  ///< the path resolves to no definition
    kEditRefusal_NoSuchShape = 3,   ///< a text for a structure, a number for a list, an item of what is no list ...
    kEditRefusal_NotAllowed = 4,    ///< not a value of the type, or one that no packet can hold
};

struct EditOutcome {
    EditResult mResult = kEditResult_Unchanged;
    UTF16String mReason;  ///< of a refusal, localised
    EditRefusal mRefusal = kEditRefusal_None;
};

/// As SetValue, and tells what became of it. What WhyNotAllowed objects to is refused, and so is an empty text; a refusal
/// changes nothing and makes no error record.
ZEPHMETADATA_EXPORT EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, const UTF8String& value);
ZEPHMETADATA_EXPORT EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, long long value);
ZEPHMETADATA_EXPORT EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, double value);
ZEPHMETADATA_EXPORT EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, bool value);
ZEPHMETADATA_EXPORT EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, const Date& value);
/// The same for every other type that SetValue takes. A null pointer is an empty text.
template <SettableType T>
EditOutcome TrySetValue(XMPMetaHandle tree, const Path& path, const T& value) {
    if constexpr (std::integral<T>) {
        return std::in_range<long long>(value) ? TrySetValue(tree, path, static_cast<long long>(value))
                                               : TrySetValue(tree, path, std::to_string(value));
    } else if constexpr (std::floating_point<T>) {
        return TrySetValue(tree, path, static_cast<double>(value));
    } else if constexpr (std::is_pointer_v<T>) {
        using Text = std::basic_string_view<std::remove_cv_t<std::remove_pointer_t<T>>>;
        return TrySetValue(tree, path, value == nullptr ? Text() : Text(value));
    } else if constexpr (std::convertible_to<const T&, std::u16string_view>) {
        return TrySetValue(tree, path, zephcore::UTF16to8(value));
    } else {
        return TrySetValue(tree, path, UTF8String(value));
    }
}
/// Sets the text of one language (an RFC 5646 tag, or "x-default") of an alternative; an empty text removes that language.
/// No other language changes. Tags compare without letter case, here and in paths, and are kept as "zh-hans", "de-AT".
ZEPHMETADATA_EXPORT bool SetLanguage(XMPMetaHandle tree, const Path& path, const UTF8String& language,
                                     const UTF8String& value);
/// Why a text is no value of the type at @p path, localised: no integer, number, boolean or date where one is due, out of bounds, not of the form of its pattern,
/// none of a closed choice, or a structure that has no text at all. Empty when it is one. SetValue itself does not ask.
ZEPHMETADATA_EXPORT UTF16String WhyNotAllowed(const Path& path, const UTF8String& value);
/// Writes a number with 17 significant digits, which read back as the same number, through the value's provider.
ZEPHMETADATA_EXPORT void SetMinimalFloatValue(const Value& value, double number);

// Validation: a whole tree against the registered definitions.

enum ValidationSeverity : std::int32_t {
    kValidationSeverity_Error = 0,    ///< readers that go by the definitions will misread it
    kValidationSeverity_Warning = 1,  ///< legal, but probably not what was meant
};

enum ValidationRule : std::int32_t {
    kValidationRule_UnknownNamespace = 0,  ///< warning, once a namespace: no schema is registered for it
    kValidationRule_UnknownProperty = 1,   ///< warning: the schema has no such property, the structure no such field
    kValidationRule_Shape = 2,             ///< error: a text where a bag is defined, a bag where a seq is, and so on
    kValidationRule_Type = 3,              ///< error: no integer, number, boolean, date, rational, coordinate ...
    kValidationRule_Choice = 4,            ///< error: none of a closed choice
    kValidationRule_Bounds = 5,            ///< error
    kValidationRule_Pattern = 6,           ///< error: not of the form that the property asks for
    kValidationRule_DefaultLanguage = 7,   ///< warning: a language alternative without x-default
    kValidationRule_Deprecated = 8,        ///< warning
};

struct ValidationFinding {
    UTF8String path;  ///< as ExpressionForPath writes it
    ValidationSeverity severity = kValidationSeverity_Error;
    ValidationRule rule = kValidationRule_Shape;
    UTF16String message;  ///< localised
};

/// What does not agree with the definitions, in the order of the tree. Nothing is reported or changed. A null tree has
/// no findings. Empty values are passed over. Choices of whole arrays are not checked: files and definitions have no
/// common form for them. Cost: linear in the tree.
/// What a published standard allows and a narrower definition does not is a warning that names the standard.
ZEPHMETADATA_EXPORT std::vector<ValidationFinding> ValidateXMP(XMPMetaHandle tree);

enum ValidationScope : std::int32_t {
    kValidationScope_All = 0,     ///< every value of the tree
    kValidationScope_Packet = 1,  ///< without what was read from native metadata alone (kValueOrigin_Native)
};
/// The same for a part of the tree.
ZEPHMETADATA_EXPORT std::vector<ValidationFinding> ValidateXMP(XMPMetaHandle tree, ValidationScope scope);
/// The name of a rule for programs, for example "unknown-property".
ZEPHMETADATA_EXPORT UTF8String ValidationRuleName(ValidationRule rule);

/// Removes the value, and the structures that are left empty by it. An item of an external array is emptied, not removed.
ZEPHMETADATA_EXPORT bool DeleteValue(XMPMetaHandle tree, const Path& path);

// Arrays (bags and seqs); indexes count from 0.

/// Inserts an empty item before @p index; -1 is the last item. In a missing array it becomes the only one.
ZEPHMETADATA_EXPORT bool AddArrayItem(XMPMetaHandle tree, const Path& path, int index);
/// False when there is no such item. The last item takes the array with it.
ZEPHMETADATA_EXPORT bool DeleteArrayItem(XMPMetaHandle tree, const Path& path, int index);
ZEPHMETADATA_EXPORT int CountArrayItems(XMPMetaHandle tree, const Path& path);

// Templates: a tree whose properties are merged into another one.

enum TemplateImportOptions : std::int32_t {
    kTemplateImport_ClearAndReplace = 0,  ///< as Replace, and properties that the template lacks are removed
    kTemplateImport_Replace = 1,          ///< the template's properties replace those of the tree, or are added to it
    kTemplateImport_Add = 2,              ///< only properties that the tree lacks are added
};

/// Merges @p templateTree, which is not changed, into @p destination. Top-level properties are taken, or left, as a
/// whole: nothing is merged inside a structure, an array or a language alternative, and an empty value replaces one
/// that is not. Internal properties of both trees are left alone; one that no definition describes is external. Mixed
/// properties of the template are not applied, the destination keeps its own; those of the destination count as
/// present, and are mixed no longer once replaced or removed.
///
/// True when it was applied. False for a null tree, without a record, and when the toolkit refuses, with one
/// (ErrorWritingXMP); the destination may then be changed in part. Cost: linear in both trees.
ZEPHMETADATA_EXPORT bool ApplyTemplate(XMPMetaHandle destination, XMPMetaHandle templateTree,
                                       TemplateImportOptions mode);

}  // namespace zephmetadata
