#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "values/formatting/rationals.h"
#include "values/text_access.h"
#include "values/value_checks.h"
#include "xmp/dates/xmp_dates.h"
#include "xmp/packet/utf8.h"
#include "xmp/tree/xmp_tree.h"
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
constexpr std::u16string_view kNoMatch =
    u"$$$/zephmetadata/value/NoMatch=#{quot}@0#{quot} does not have the form of @1";
constexpr std::u16string_view kNoMatchExample =
    u"$$$/zephmetadata/value/NoMatchExample=#{quot}@0#{quot} does not have the form of @1, for example @2";
constexpr std::u16string_view kTooSmall = u"$$$/zephmetadata/value/TooSmall=#{quot}@0#{quot} is less than @1";
constexpr std::u16string_view kTooLarge = u"$$$/zephmetadata/value/TooLarge=#{quot}@0#{quot} is more than @1";

using Problem = std::optional<ValueProblem>;

Problem Reason(ValidationRule rule, std::u16string_view key, const UTF8String& value, const UTF16String& detail = {}) {
    return ValueProblem{rule, zephcore::ZString(key, {zephcore::UTF8to16(value), detail})};
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

Problem CheckBounds(const EntryDefinition& entry, const UTF8String& value, double number) {
    constexpr int kDigits = 6;
    if (entry.mMin && number < *entry.mMin) {
        return Reason(ValidationRule::kValidationRule_Bounds, kTooSmall, value,
                      zephcore::NumberToString(*entry.mMin, 1, kDigits));
    }
    if (entry.mMax && number > *entry.mMax) {
        return Reason(ValidationRule::kValidationRule_Bounds, kTooLarge, value,
                      zephcore::NumberToString(*entry.mMax, 1, kDigits));
    }
    return std::nullopt;
}

Problem CheckChoice(const EntryDefinition& entry, const UTF8String& value) {
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
    return Reason(ValidationRule::kValidationRule_Choice, kNoChoice, value, zephcore::UTF8to16(allowed));
}

Problem CheckKind(const EntryDefinition& entry, PrimitiveType kind, const UTF8String& value) {
    switch (kind) {
        case kPrimitiveType_Integer:
            return Converts(value, toolkit::ConvertToInt64)
                       ? Problem()
                       : Reason(ValidationRule::kValidationRule_Type, kNoInteger, value);
        case kPrimitiveType_Real:
            return Converts(value, toolkit::ConvertToFloat)
                       ? Problem()
                       : Reason(ValidationRule::kValidationRule_Type, kNoNumber, value);
        case kPrimitiveType_Boolean:
            return Converts(value, toolkit::ConvertToBool)
                       ? Problem()
                       : Reason(ValidationRule::kValidationRule_Type, kNoBoolean, value);
        case kPrimitiveType_ClosedChoice:
            return CheckChoice(entry, value);
        default:
            return {};
    }
}

/// A value of each form that the built-in definitions ask for.
constexpr auto kExamples = std::to_array<std::pair<std::string_view, std::u16string_view>>({
    {"-?[0-9]+/-?[0-9]+", u"1/250"},
    {R"([0-9]{1,3},[0-9]{1,2}(\.[0-9]+|,[0-9]{1,2}(\.[0-9]+)?)?[NSEW])", u"58,58.198N"},
    {".+[NS]", u"58,58.198N"},
    {".+[EW]", u"5,43.987E"},
    {R"([0-9]{1,3}(\.[0-9]{1,3}){3})", u"2.3.0.0"},
    {"[0-9]{6}", u"011100"},
    {"[0-9]{8}", u"15054000"},
    {"[0-9]{8}|[0-9]{12,14}", u"4006381333931"},
    {"[A-Za-z]{2,3}", u"NO"},
    {R"([A-Za-z]{1,8}([\-_][A-Za-z0-9]{1,8})*)", u"en-GB"},
    {R"([^\s/;]+/[^\s/;]+(\s*;.*)?)", u"image/jpeg"},
    {R"(-?[0-9]+\s*,\s*-?[0-9]+)", u"2, 1"},
    {"([0-9]{2}([;:][0-9]{2}){2}[;:.][0-9]{2,3}|[0-9]+)?", u"01:02:03:04"},
    {"[0-9]{4}.[0-9]{2}.[0-9]{2}", u"2024-05-17"},
    {"[0-9]{2}.[0-9]{2}.[0-9]{2}", u"09:30:00"},
});

/// With an example where there is one, else with all that is known of the form.
Problem ReasonOfForm(ValidationRule rule, const EntryDefinition& entry, const UTF8String& value) {
    const auto* const row = std::find_if(kExamples.begin(), kExamples.end(),
                                         [&](const auto& example) { return example.first == *entry.mPattern; });
    if (row != kExamples.end() && !entry.mLabel.empty()) {
        return ValueProblem{rule, zephcore::ZString(kNoMatchExample, {zephcore::UTF8to16(value), entry.mLabel,
                                                                      UTF16String(row->second)})};
    }
    const UTF16String form = entry.mDescription.empty() ? entry.mLabel : entry.mLabel + u": " + entry.mDescription;
    return Reason(rule, kNoMatch, value, form);
}

/// The number that a value stands for where bounds apply to it: integers, reals and rationals.
std::optional<double> NumberOf(const UTF8String& typeId, const UTF8String& value) {
    const auto kind = PrimitiveTypeOf(typeId);
    if (kind == kPrimitiveType_Integer || kind == kPrimitiveType_Real) {
        return toolkit::ConvertToFloat(value);
    }
    const std::optional<Rational> rational = typeId == "rational" ? ParseRational(value) : std::nullopt;
    return rational && rational->mDenominator != 0 ? std::optional(rational->Quotient()) : std::nullopt;
}

/// The form and the bounds that one definition asks for. The form that a type asks for is what the type is.
Problem CheckLimits(const EntryDefinition& entry, ValidationRule ofPattern, const UTF8String& typeId,
                    const UTF8String& value) {
    if (entry.mPattern && !zephcore::MatchesPattern(*entry.mPattern, value)) {
        return ReasonOfForm(ofPattern, entry, value);
    }
    const std::optional<double> number = NumberOf(typeId, value);
    return number ? CheckBounds(entry, value, *number) : Problem();
}

/// Each item of a joined text against the type of the items.
Problem CheckItems(const EntryDefinition& entry, const UTF8String& value) {
    const UTF8String elementType = ElementTypeIdOf(entry).value_or(kTypeText);
    for (const UTF8String& item : toolkit::SplitItems(value)) {
        if (Problem problem = CheckValue(elementType, entry, item)) {
            return problem;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<ValueProblem> CheckValue(const UTF8String& typeId, const EntryDefinition& entry,
                                       const UTF8String& value) {
    if (!toolkit::IsXMLText(value)) {
        return Reason(ValidationRule::kValidationRule_Type, kNoText, value);
    }
    const auto kind = PrimitiveTypeOf(typeId);
    if (!kind) {
        return Reason(ValidationRule::kValidationRule_Shape, kStructure, value);
    }
    const sp<TypeDefinition> type = TypeIdDefinition(typeId);
    const bool isDate = typeId == "date";
    if (isDate && !Converts(value, toolkit::ConvertToDate)) {
        return Reason(ValidationRule::kValidationRule_Type, kNoDate, value);
    }
    Problem problem = CheckKind(entry.mChoices.empty() && type ? *type : entry, *kind, value);
    if (!problem) {
        problem = CheckLimits(entry, ValidationRule::kValidationRule_Pattern, typeId, value);
    }
    // The pattern of the date type says less than the conversion.
    if (!problem && type && !isDate) {
        problem = CheckLimits(*type, ValidationRule::kValidationRule_Type, typeId, value);
    }
    return problem;
}

UTF16String WhyNotAllowed(const Path& path, const UTF8String& value) {
    const sp<EntryDefinition> entry = PathEntryDefinition(path);
    if (!entry) {
        return zephcore::ZString(kNoDefinition);
    }
    const auto kind = PrimitiveTypeOfPath(path);
    if (kind && !TakesText(*entry)) {
        return zephcore::ZString(kStructures);
    }
    const bool isList = kind == kPrimitiveType_Bag || kind == kPrimitiveType_Seq;
    const Problem problem =
        isList ? CheckItems(*entry, value) : CheckValue(entry->mType.value_or(kTypeText), *entry, value);
    return problem ? problem->mMessage : UTF16String();
}

}  // namespace zephmetadata
