#include "panel/panel_filling.h"

#include <algorithm>

#include "listing.h"
#include "panel/panel_description.h"
#include "panel/panel_values.h"
#include "text.h"
#include "zephmetadata/languages.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;
using Kind = PanelItem::Kind;
using State = PanelItem::State;

/// Fills the values of described items from one tree.
class ValueFiller {
public:
    ValueFiller(XMPMetaHandle tree, const sp<MetaDataProvider>& provider, Detail detail)
        : mTree(tree), mProvider(provider), mDetail(detail), mValues(tree) {}

    void Fill(const ViewItem& item, PanelItem& filled) {
        for (std::size_t i = 0; i < filled.mItems.size(); ++i) {
            Fill(*item.mChildItems[i], filled.mItems[i]);
        }
        if (filled.mKind == Kind::kProperty) {
            FillProperty(item, filled);
        } else if (filled.mKind == Kind::kFormatter) {
            FillFormatter(item, filled);
        } else if (filled.mKind == Kind::kNote) {
            filled.mValue = Localized(item.GetParameter("message", ""));
        }
    }

private:
    void FillProperty(const ViewItem& item, PanelItem& filled) {
        if (IsInCommonPlace(item, filled)) {
            ViewItem other = item;
            other.mPath = CommonPath(filled.mPath);
            filled.mPath = ExpressionForPath(other.mPath);
            FillProperty(other, filled);
            return;
        }
        const sp<EntryDefinition> entry = PathEntryDefinition(item.mPath);
        filled.mWritable = mProvider->QueryPathStatus(item.mPath, PathStatus::kPathWritable);
        if (!entry) {
            filled.mState = State::kUndefined;
        } else if (IsStructured(*entry)) {
            FillStructure(item.mPath, *entry, filled);
        } else {
            FillValue(item, *entry, filled);
        }
    }

    static constexpr std::string_view kOwn = "tessera:";

    /// Where other programs, and IPTC-IIM, have what a field of the tessera schema is.
    static Path CommonPath(const std::string& expression) {
        return PathForExpression("photoshop:" + expression.substr(kOwn.size()));
    }

    /// Whether people miss a value that is there. Programs get what the view says.
    bool IsInCommonPlace(const ViewItem& item, const PanelItem& filled) const {
        return mDetail != Detail::kAll && filled.mPath.starts_with(kOwn) && !HasValue(mTree, item.mPath) &&
               HasValue(mTree, CommonPath(filled.mPath));
    }

    void FillValue(const ViewItem& item, const EntryDefinition& entry, PanelItem& filled) {
        GetValueResult result = kGetValueResult_NoValue;
        if (GetValue(mTree, item.mPath, filled.mValue, &result) && !filled.mValue.empty()) {
            filled.mState = State::kValue;
            ReadStored(item.mPath, entry, filled);
        } else if (result == kGetValueResult_Mixed) {
            filled.mState = State::kMixed;
            return;
        }
        ShowChoice(item, entry, filled);
        if (filled.mState == State::kValue && !filled.mValue.empty()) {
            const auto format = item.mParameters.find("format");
            filled.mValue = format == item.mParameters.end() ? std::move(filled.mValue)
                                                             : Localized(format->second, {filled.mValue});
        }
    }

    /// The stored text, and what else is known of a value that is not one text.
    void ReadStored(const Path& path, const EntryDefinition& entry, PanelItem& filled) const {
        if (!GetRawStringValue(mTree, path, filled.mRaw) || filled.mRaw.empty()) {
            filled.mRaw = filled.mValue;
        }
        if (SaysNothing(filled.mPath, entry, filled.mRaw, filled.mValue)) {
            filled.mState = State::kNone;
            filled.mValue.clear();
            return;
        }
        if (entry.mType == "date") {
            filled.mValue = ShownDate(filled.mRaw);
        } else if (ElementTypeIdOf(entry) == "date") {
            ShowDates(GetItems(mTree, path), filled);
        } else if (mDetail == Detail::kDescriptions) {
            ReadParts(path, entry, filled);
        }
    }

    static void ShowDates(std::vector<std::string> dates, PanelItem& filled) {
        filled.mValue.clear();
        for (std::string& date : dates) {
            date = ShownDate(date);
            filled.mValue += (filled.mValue.empty() ? "" : "; ") + date;
        }
        filled.mTexts = std::move(dates);
    }

    /// The texts that a value consists of, where it is no single one.
    void ReadParts(const Path& path, const EntryDefinition& entry, PanelItem& filled) const {
        const auto kind = PrimitiveTypeOf(entry);
        const bool isList = kind == kPrimitiveType_Bag || kind == kPrimitiveType_Seq;
        if (isList && ElementTypeIdOf(entry) != "langalt") {
            filled.mTexts = GetItems(mTree, path);
        }
        if (entry.mType != "langalt") {
            return;
        }
        for (const auto& [language, text] : GetLanguages(mTree, path)) {
            if (language != "x-default" && text != filled.mValue) {
                filled.mLanguages.emplace_back(language, text);
            }
        }
    }

    /// The label of the choice that the raw value is, or of the truth that it is. A choice may stand for no value.
    static void ShowChoice(const ViewItem& item, const EntryDefinition& entry, PanelItem& filled) {
        const auto& choices = ChoicesOf(item, &entry);
        const auto choice = std::find_if(choices.begin(), choices.end(),
                                         [&](const auto& candidate) { return candidate->mRawValue == filled.mRaw; });
        if (choice != choices.end()) {
            filled.mValue = Shown(LabelOf(**choice));
        } else if (filled.mState == State::kValue && entry.mType == "boolean") {
            const bool isTrue = filled.mRaw == "True" || filled.mRaw == "true" || filled.mRaw == "1";
            const char* const byDefault =
                isTrue ? "$$$/metadataui/value/true_label=Yes" : "$$$/metadataui/value/false_label=No";
            filled.mValue = Localized(item.GetParameter(isTrue ? "true_label" : "false_label", byDefault));
        }
    }

    /// Structures, and arrays of them, show what they hold, one below the other.
    void FillStructure(const Path& path, const EntryDefinition& entry, PanelItem& filled) {
        if (!HasValue(mTree, path)) {
            return;
        }
        if (IsMixed(mTree, path)) {
            filled.mState = State::kMixed;
            return;
        }
        for (const ListedValue& value : mValues.Below(filled.mPath)) {
            std::vector<PanelItem>& group = GroupOf(value.mExpression, filled.mPath.size(), filled);
            if (PanelItem part = Part(value); !part.mValue.empty() || part.mState == State::kMixed) {
                group.push_back(std::move(part));
                filled.mState = State::kValue;
            }
        }
        DropLoneNumbers(filled.mItems);
        ShowDuration(entry, filled);
    }

    /// A length of time reads as one rather than as a count of units.
    void ShowDuration(const EntryDefinition& entry, PanelItem& filled) const {
        if (entry.mType != "time") {
            return;
        }
        const auto field = [&](const char* name) {
            std::string text;
            GetRawStringValue(mTree, PathForExpression(filled.mPath + name), text);
            return text;
        };
        filled.mValue = ShownDuration(field("/xmpDM:value"), field("/xmpDM:scale"));
        if (!filled.mValue.empty() && mDetail != Detail::kAll) {
            filled.mItems.clear();
        }
    }

    /// Where a part of a structure is shown: structures within it, and the items of arrays, are sections of their own.
    static std::vector<PanelItem>& GroupOf(const std::string& expression, std::size_t size, PanelItem& filled) {
        std::vector<PanelItem>* group = &filled.mItems;
        for (std::size_t end = expression.find_first_of("/[", size + 1); end != std::string::npos;
             end = expression.find_first_of("/[", end + 1)) {
            group = &SectionAt(expression.substr(0, end), *group).mItems;
        }
        return *group;
    }

    static PanelItem& SectionAt(const std::string& expression, std::vector<PanelItem>& group) {
        if (group.empty() || group.back().mPath != expression) {
            PanelItem section;
            section.mKind = Kind::kSection;
            section.mPath = expression;
            section.mWidget = "section";
            section.mLabel = SectionLabel(expression);
            group.push_back(std::move(section));
        }
        return group.back();
    }

    /// The number of an item, the label of a field.
    static std::string SectionLabel(const std::string& expression) {
        if (expression.ends_with(']')) {
            return LastStep(expression);
        }
        const sp<EntryDefinition> entry = PathEntryDefinition(PathForExpression(expression));
        return entry ? Shown(LabelOf(*entry)) : LastStep(expression);
    }

    /// An array of one item needs no number.
    static void DropLoneNumbers(std::vector<PanelItem>& items) {
        if (items.size() == 1 && items.front().mKind == Kind::kSection && items.front().mPath.ends_with(']')) {
            items = std::vector<PanelItem>(std::move(items.front().mItems));
        }
        for (PanelItem& item : items) {
            DropLoneNumbers(item.mItems);
        }
    }

    PanelItem Part(const ListedValue& value) const {
        PanelItem part;
        part.mPath = value.mExpression;
        part.mLabel = value.mLabel.empty() ? LastStep(value.mExpression) : value.mLabel;
        part.mType = value.mType;
        const Path path = PathForExpression(value.mExpression);
        if (IsMixed(mTree, path)) {
            part.mState = State::kMixed;
            return part;
        }
        part.mState = value.mDefined ? State::kValue : State::kUndefined;
        part.mValue = value.mDisplay;
        part.mRaw = value.mRaw;
        const sp<EntryDefinition> entry = PathEntryDefinition(path);
        if (!entry || part.mValue.empty()) {
            return part;
        }
        if (SaysNothing(part.mPath, *entry, part.mRaw, part.mValue)) {
            part.mValue.clear();
            return part;
        }
        if (entry->mType == "date") {
            part.mValue = ShownDate(part.mRaw);
        } else if (part.mValue == part.mRaw) {
            part.mValue = ShownMeasure(*entry, part.mRaw);
        }
        part.mTexts = value.mItems;
        if (ElementTypeIdOf(*entry) == "date") {
            ShowDates(value.mItems, part);
        }
        ShowChoice(ViewItem(), *entry, part);
        return part;
    }

    /// The parts by the formatter's own format, when all that it mentions are there, else joined.
    void FillFormatter(const ViewItem& item, PanelItem& filled) const {
        if (!HasRequired(item, filled)) {
            return;
        }
        std::vector<std::string> values;
        for (const PanelItem& part : filled.mItems) {
            const bool isMixed = part.mState == State::kMixed;
            filled.mState = isMixed ? State::kMixed : filled.mState;
            values.push_back(part.mState == State::kValue ? part.mValue : std::string());
        }
        const std::string joined = Joined(values, item.GetParameter("separator", ", "));
        if (joined.empty() || filled.mState == State::kMixed) {
            return;
        }
        filled.mState = State::kValue;
        filled.mMap = MapOf(filled.mItems);
        filled.mValue = MentionsMissing(Localized(item.GetParameter("format", "")), values)
                            ? joined
                            : Localized(item.GetParameter("format", ""), values);
    }

    /// A map of where the camera was.
    static std::string MapOf(const std::vector<PanelItem>& parts) {
        const auto raw = [&](std::string_view path) {
            const auto part = std::find_if(parts.begin(), parts.end(),
                                           [&](const PanelItem& candidate) { return candidate.mPath == path; });
            return part == parts.end() ? std::string() : part->mRaw;
        };
        return MapAddress(raw("exif:GPSLatitude"), raw("exif:GPSLongitude"));
    }

    /// The values that there are. One with which the next begins is left out: models often begin with their maker.
    static std::string Joined(const std::vector<std::string>& values, const std::string& separator) {
        std::string joined;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const bool isRepeated = i + 1 < values.size() && values[i + 1].starts_with(values[i] + " ");
            if (!values[i].empty() && !isRepeated) {
                joined += (joined.empty() ? "" : separator) + values[i];
            }
        }
        return joined;
    }

    /// Whether a format is empty, or has a place for a value that is not there.
    static bool MentionsMissing(const std::string& format, const std::vector<std::string>& values) {
        for (std::size_t i = 0; i < 10; ++i) {
            const bool isMissing = i >= values.size() || values[i].empty();
            if (isMissing && format.find("@" + std::to_string(i)) != std::string::npos) {
                return true;
            }
        }
        return format.empty();
    }

    /// Whether the property that the formatter makes no sense without, mostly one of its parts, has a value.
    bool HasRequired(const ViewItem& item, const PanelItem& filled) const {
        if (!item.mParameters.contains("required_path")) {
            return true;
        }
        const Path required = item.mParameters.contains("required_path_field")
                                  ? PathForExpression(item.GetParameter("required_path", ""))
                                  : PathForSchemaNameAndPropertyName(item.GetParameter("required_path_uri", ""),
                                                                     item.GetParameter("required_path_name", ""));
        for (std::size_t i = 0; i < filled.mItems.size(); ++i) {
            if (item.mChildItems[i]->mPath == required) {
                return filled.mItems[i].HasValue();
            }
        }
        std::string text;
        GetValueResult result = kGetValueResult_NoValue;
        return (GetValue(mTree, required, text, &result) && !text.empty()) || result == kGetValueResult_Mixed;
    }

    XMPMetaHandle mTree;
    const sp<MetaDataProvider>& mProvider;
    Detail mDetail;
    ValuesOfTree mValues;
};

}  // namespace

Filler FillerOf(XMPMetaHandle tree, const sp<MetaDataProvider>& provider, Detail detail) {
    return [filler = ValueFiller(tree, provider, detail)](const ViewItem& item, PanelItem& filled) mutable {
        filler.Fill(item, filled);
    };
}

}  // namespace zephmeta
