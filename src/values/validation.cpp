#include <array>
#include <set>
#include <string_view>

#include "values/value_checks.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_tree.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kUnknownNamespace =
    u"$$$/zephmetadata/validation/UnknownNamespace=no schema is known for the namespace #{quot}@0#{quot}";
constexpr std::u16string_view kUnknownProperty =
    u"$$$/zephmetadata/validation/UnknownProperty=the schema has no such property";
constexpr std::u16string_view kUnknownField =
    u"$$$/zephmetadata/validation/UnknownField=the structure has no such field";
constexpr std::u16string_view kWrongShape = u"$$$/zephmetadata/validation/WrongShape=is a @0 where a @1 is due";
constexpr std::u16string_view kNoDefaultLanguage =
    u"$$$/zephmetadata/validation/NoDefaultLanguage=no text is marked as the default (x-default)";
constexpr std::u16string_view kDeprecated = u"$$$/zephmetadata/validation/Deprecated=is deprecated";

constexpr std::u16string_view kNarrower = u"$$$/zephmetadata/validation/Narrower=, though @0 allows it";

/// What published standards allow and the definitions do not. A bound, shape or type applies to all values where none
/// is named.
struct WiderRow {
    std::string_view mPath;  ///< the end of a path without the numbers of items
    ValidationRule mRule;
    std::string_view mValue;
    std::string_view mStandard;
};

constexpr std::string_view kXMPStandard = "XMP Specification Part 2";
constexpr auto kWider = std::to_array<WiderRow>({
    {"exifEX:PhotographicSensitivity", kValidationRule_Bounds, "", "CIPA DC-010"},
    {"Iptc4xmpExt:CVterm", kValidationRule_Shape, "", "IPTC Photo Metadata 2024.1"},
    {"xmpDM:markers/xmpDM:type", kValidationRule_Choice, "Speech", kXMPStandard},
    {"xmpDM:videoFrameRate", kValidationRule_Type, "PAL", kXMPStandard},
    {"xmpDM:videoFrameRate", kValidationRule_Type, "NTSC", kXMPStandard},
});

/// "xmpDM:markers/xmpDM:type" of "xmpDM:markers[2]/xmpDM:type"
UTF8String WithoutNumbers(std::string_view expression) {
    UTF8String path;
    while (!expression.empty()) {
        const std::size_t end = std::min(expression.find('['), expression.size());
        path += expression.substr(0, end);
        expression.remove_prefix(std::min(expression.find(']', end), expression.size() - 1) + 1);
    }
    return path;
}

/// Whether @p path ends in whole @p steps.
bool EndsWithSteps(std::string_view path, std::string_view steps) {
    return path.ends_with(steps) && (path.size() == steps.size() || path[path.size() - steps.size() - 1] == '/');
}

/// The standard that allows a value nevertheless; empty for none. Nothing allows a negative sensitivity.
std::string_view WiderStandard(const toolkit::Node& node, ValidationRule rule) {
    const UTF8String path = WithoutNumbers(node.mPath);
    for (const WiderRow& row : kWider) {
        const bool isValue = row.mValue.empty() ? !node.mValue.starts_with('-') : node.mValue == row.mValue;
        if (row.mRule == rule && isValue && EndsWithSteps(path, row.mPath)) {
            return row.mStandard;
        }
    }
    return {};
}

/// What a node is, or is to be. A plain alternative and one of languages are told apart by the languages alone.
enum class Shape { kText, kStructure, kBag, kSeq, kAlternative };

UTF16String ShapeName(Shape shape) {
    constexpr auto kNames = std::to_array<std::u16string_view>(
        {u"$$$/zephmetadata/validation/shape/text=single value", u"$$$/zephmetadata/validation/shape/struct=structure",
         u"$$$/zephmetadata/validation/shape/bag=bag", u"$$$/zephmetadata/validation/shape/seq=seq",
         u"$$$/zephmetadata/validation/shape/alt=alternative"});
    return zephcore::ZString(kNames[static_cast<std::size_t>(shape)]);
}

Shape ShapeOf(const toolkit::Node& node) {
    struct OptionRow {
        std::uint32_t mOption;
        Shape mShape;
    };
    // An alternative is a seq as well, a seq a bag.
    constexpr auto kRows = std::to_array<OptionRow>({{toolkit::kPropValueIsStruct, Shape::kStructure},
                                                     {toolkit::kPropArrayIsAlternate, Shape::kAlternative},
                                                     {toolkit::kPropArrayIsOrdered, Shape::kSeq},
                                                     {toolkit::kPropValueIsArray, Shape::kBag}});
    for (const OptionRow& row : kRows) {
        if ((node.mOptions & row.mOption) != 0) {
            return row.mShape;
        }
    }
    return Shape::kText;
}

/// The shape that a type asks for; absent where it leaves that open.
std::optional<Shape> ShapeOfType(const UTF8String& typeId) {
    const auto kind = PrimitiveTypeOf(typeId);
    if (!kind) {
        return Shape::kStructure;
    }
    switch (*kind) {
        case kPrimitiveType_Bag:
            return Shape::kBag;
        case kPrimitiveType_Seq:
            return Shape::kSeq;
        case kPrimitiveType_Alt:
            return Shape::kAlternative;
        default:
            return Shape::kText;
    }
}

class Validator {
public:
    Validator(XMPMetaHandle tree, ValidationScope scope)
        : mTree(tree), mScope(scope), mNodes(toolkit::Nodes(tree, {}, {}, toolkit::Walk::kSubtree)) {}

    std::vector<ValidationFinding> Findings() {
        std::size_t index = 0;
        while (index < mNodes.size()) {
            index = (mNodes[index].mOptions & toolkit::kSchemaNode) != 0 ? index + 1 : Property(index);
        }
        return std::move(mFindings);
    }

private:
    /// Checks a top-level property with all below it; the index of what follows.
    std::size_t Property(std::size_t index) {
        const toolkit::Node& node = mNodes[index];
        if (mScope == kValidationScope_Packet && toolkit::IsNative(mTree, node.mSchema, node.mPath)) {
            return EndOf(index);
        }
        if (!NamespaceDefinition(node.mSchema)) {
            if (mUnknown.insert(node.mSchema).second) {
                Warn(index, kValidationRule_UnknownNamespace, kUnknownNamespace, zephcore::UTF8to16(node.mSchema));
            }
            return EndOf(index);
        }
        const sp<EntryDefinition> entry = PathEntryDefinition(PathForExpression(node.mPath));
        if (!entry) {
            Warn(index, kValidationRule_UnknownProperty, kUnknownProperty);
            return EndOf(index);
        }
        return Entry(index, *entry);
    }

    /// A property or field.
    std::size_t Entry(std::size_t index, const EntryDefinition& entry) {
        if (entry.mDeprecated.value_or(false)) {
            Warn(index, kValidationRule_Deprecated, kDeprecated);
        }
        return Value(index, entry.mType.value_or(kTypeText), entry);
    }

    /// A node against a type; @p entry is what it is a value of, or the array that it is an item of.
    std::size_t Value(std::size_t index, const UTF8String& typeId, const EntryDefinition& entry, bool isItem = false) {
        const std::size_t end = EndOf(index);
        const UTF8String shapeType = TypeOfShape(typeId, entry);
        const std::optional<Shape> due = ShapeOfType(shapeType);
        const Shape found = ShapeOf(mNodes[index]);
        if (due && found != *due) {
            Add(index, kValidationSeverity_Error, kValidationRule_Shape,
                zephcore::ZString(kWrongShape, {ShapeName(found), ShapeName(*due)}));
            return end;
        }
        switch (found) {
            case Shape::kText:
                Text(index, typeId, entry);
                break;
            case Shape::kStructure:
                Fields(index, end, TypeIdDefinition(shapeType));
                break;
            default:
                Items(index, end, shapeType, typeId == shapeType && !isItem ? &entry : nullptr);
        }
        return end;
    }

    /// A choice of arrays is an array in files.
    static UTF8String TypeOfShape(const UTF8String& typeId, const EntryDefinition& entry) {
        const auto kind = PrimitiveTypeOf(typeId);
        if (!kind || !PrimitiveTypeIsChoice(*kind)) {
            return typeId;
        }
        const UTF8String element = ElementTypeIdOf(entry).value_or(kTypeText);
        return IsArrayType(element) ? element : typeId;
    }

    void Text(std::size_t index, const UTF8String& typeId, const EntryDefinition& entry) {
        const UTF8String& value = mNodes[index].mValue;
        if (value.empty()) {
            return;
        }
        if (const auto problem = CheckValue(typeId, entry, value)) {
            Add(index, kValidationSeverity_Error, problem->mRule, problem->mMessage);
        }
    }

    void Fields(std::size_t index, std::size_t end, const sp<TypeDefinition>& type) {
        for (std::size_t below = index + 1; below < end;) {
            if ((mNodes[below].mOptions & toolkit::kPropIsQualifier) != 0) {
                below = EndOf(below);
                continue;
            }
            const sp<EntryDefinition> field = type ? FieldAt(mNodes[below].mPath, *type) : nullptr;
            if (!field) {
                Warn(below, kValidationRule_UnknownProperty, kUnknownField);
            }
            below = field ? Entry(below, *field) : EndOf(below);
        }
    }

    /// The field that the last step of an expression, "prefix:name", names.
    static sp<EntryDefinition> FieldAt(std::string_view expression, const TypeDefinition& type) {
        const std::string_view step = expression.substr(expression.rfind('/') + 1);
        const std::string_view name = step.substr(step.find(':') + 1);
        const auto namespaceURI = toolkit::NamespaceOf(UTF8String(step.substr(0, step.find(':'))));
        for (const auto& field : type.mFields) {
            if (field->mName == name && field->mNamespace == namespaceURI) {
                return field;
            }
        }
        return nullptr;
    }

    /// The items of an array; @p array is its definition where that says more of the items than the type does.
    void Items(std::size_t index, std::size_t end, const UTF8String& typeId, const EntryDefinition* array) {
        const auto elementType = (array != nullptr ? ElementTypeIdOf(*array) : ElementTypeIdOf(typeId));
        const EntryDefinition none;
        const EntryDefinition& ofItems = array != nullptr ? *array : none;
        for (std::size_t below = index + 1; below < end;) {
            const bool isItem = (mNodes[below].mOptions & toolkit::kPropIsQualifier) == 0;
            below = isItem ? Value(below, elementType.value_or(kTypeText), ofItems, true) : EndOf(below);
        }
        if ((mNodes[index].mOptions & toolkit::kPropArrayIsAltText) != 0 && !HasDefaultLanguage(index, end)) {
            Warn(index, kValidationRule_DefaultLanguage, kNoDefaultLanguage);
        }
    }

    bool HasDefaultLanguage(std::size_t index, std::size_t end) const {
        for (std::size_t below = index + 1; below < end; ++below) {
            if (mNodes[below].mPath.ends_with("/?xml:lang") && mNodes[below].mValue == "x-default") {
                return true;
            }
        }
        return false;
    }

    /// One past the last node below the one at @p index.
    std::size_t EndOf(std::size_t index) const {
        const UTF8String& path = mNodes[index].mPath;
        std::size_t end = index + 1;
        while (end < mNodes.size() && toolkit::IsAtOrBelow(mNodes[end].mPath, path)) {
            ++end;
        }
        return end;
    }

    void Warn(std::size_t index, ValidationRule rule, std::u16string_view key, const UTF16String& argument = {}) {
        Add(index, kValidationSeverity_Warning, rule, zephcore::ZString(key, {argument}));
    }
    void Add(std::size_t index, ValidationSeverity severity, ValidationRule rule, UTF16String message) {
        const std::string_view standard = WiderStandard(mNodes[index], rule);
        if (!standard.empty()) {
            severity = kValidationSeverity_Warning;
            message += zephcore::ZString(kNarrower, {zephcore::UTF8to16(standard)});
        }
        mFindings.push_back({mNodes[index].mPath, severity, rule, std::move(message)});
    }

    XMPMetaHandle mTree;
    ValidationScope mScope;
    std::vector<toolkit::Node> mNodes;
    std::set<UTF8String> mUnknown;
    std::vector<ValidationFinding> mFindings;
};

}  // namespace

std::vector<ValidationFinding> ValidateXMP(XMPMetaHandle tree) {
    return ValidateXMP(tree, kValidationScope_All);
}

std::vector<ValidationFinding> ValidateXMP(XMPMetaHandle tree, ValidationScope scope) {
    return tree == nullptr ? std::vector<ValidationFinding>() : Validator(tree, scope).Findings();
}

UTF8String ValidationRuleName(ValidationRule rule) {
    constexpr auto kNames =
        std::to_array<std::string_view>({"unknown-namespace", "unknown-property", "shape", "type", "choice", "bounds",
                                         "pattern", "default-language", "deprecated"});
    const auto index = static_cast<std::size_t>(rule);
    return index < kNames.size() ? UTF8String(kNames[index]) : UTF8String();
}

}  // namespace zephmetadata
