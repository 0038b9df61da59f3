#include "panel/panel_description.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "text.h"
#include "zephcore/text.h"
#include "zephmetadata/languages.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;
using Kind = PanelItem::Kind;

/// The widgets that make an item something else than a property.
constexpr auto kKinds = std::to_array<std::pair<std::string_view, Kind>>({{"section", Kind::kSection},
                                                                          {"separator", Kind::kSeparator},
                                                                          {"note", Kind::kNote},
                                                                          {"formatter", Kind::kFormatter}});

Kind KindOf(const ViewItem& item) {
    const auto* const row =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& kind) { return kind.first == item.mWidgetName; });
    return row == kKinds.end() ? Kind::kProperty : row->second;
}

/// The widget for a property of which the view asks for none.
std::string WidgetFor(const ViewItem& item, const EntryDefinition& entry, bool hasChoices) {
    if (hasChoices) {
        return "dropdown";
    }
    if (entry.mType == "date") {
        return "date";
    }
    const auto kind = PrimitiveTypeOf(entry);
    if (kind == kPrimitiveType_Boolean) {
        return "checkbox";
    }
    if (kind == kPrimitiveType_Bag || kind == kPrimitiveType_Seq) {
        return "list";
    }
    return item.mParameters.contains("multiLines") ? "multiline" : "text";
}

/// What programs want to know beyond what people see.
void DescribeProperty(const ViewItem& item, PanelItem& described) {
    const sp<EntryDefinition> entry = PathEntryDefinition(item.mPath);
    for (const auto& choice : ChoicesOf(item, entry.get())) {
        described.mChoices.emplace_back(choice->mRawValue, Shown(LabelOf(*choice)));
    }
    if (!entry) {
        return;
    }
    described.mType = entry->mType.value_or(std::string());
    if (described.mWidget.empty()) {
        described.mWidget = WidgetFor(item, *entry, !described.mChoices.empty());
    }
}

}  // namespace

std::string LastStep(const std::string& expression) {
    const std::size_t step = expression.find_last_of("/[") + 1;
    return expression.substr(step, expression.size() - step - (expression.ends_with(']') ? 1 : 0));
}

std::string Localized(const std::string& text, const std::vector<std::string>& arguments) {
    if (arguments.empty() && text.find_first_of("$#") == std::string::npos) {
        return text;
    }
    std::vector<UTF16String> converted;
    converted.reserve(arguments.size());
    for (const std::string& argument : arguments) {
        converted.push_back(zephcore::UTF8to16(argument));
    }
    return Shown(LocalizedText(text, converted));
}

const std::vector<sp<ChoiceDefinition>>& ChoicesOf(const ViewItem& item, const EntryDefinition* entry) {
    return item.mChoices.empty() && entry != nullptr ? entry->mChoices : item.mChoices;
}

PanelItem DescribeItem(const ViewItem& item, Detail detail) {
    PanelItem described;
    described.mKind = KindOf(item);
    described.mLabel = Shown(item.GetLabel());
    if (described.mKind == Kind::kProperty) {
        described.mPath = ExpressionForPath(item.mPath);
        described.mLabel = described.mLabel.empty() ? LastStep(described.mPath) : described.mLabel;
    }
    described.mIsExpected = item.GetParameter("expected", false);
    if (detail >= Detail::kDescriptions) {
        described.mDescription = Shown(item.GetDescription());
    }
    if (detail == Detail::kAll) {
        described.mWidget = item.mWidgetName;
        for (const auto& [key, value] : item.mParameters) {
            described.mParameters.emplace_back(key, Localized(value));
        }
        if (described.mKind == Kind::kProperty) {
            DescribeProperty(item, described);
        }
    }
    described.mItems.reserve(item.mChildItems.size());
    for (const auto& child : item.mChildItems) {
        described.mItems.push_back(DescribeItem(*child, detail));
    }
    return described;
}

}  // namespace zephmeta
