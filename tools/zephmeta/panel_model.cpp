#include "panel_model.h"

#include <algorithm>

#include "console.h"
#include "listing.h"
#include "panel_description.h"
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
        : mTree(tree), mProvider(provider), mDetail(detail) {}

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
        const sp<EntryDefinition> entry = PathEntryDefinition(item.mPath);
        filled.mWritable = mProvider->QueryPathStatus(item.mPath, PathStatus::kPathWritable);
        if (!entry) {
            filled.mState = State::kUndefined;
        } else if (IsStructured(*entry)) {
            FillStructure(item.mPath, filled);
        } else {
            FillValue(item, *entry, filled);
        }
    }

    void FillValue(const ViewItem& item, const EntryDefinition& entry, PanelItem& filled) {
        GetValueResult result = kGetValueResult_NoValue;
        if (GetValue(mTree, item.mPath, filled.mValue, &result) && !filled.mValue.empty()) {
            filled.mState = State::kValue;
            ReadStored(item, entry, filled);
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

    /// The stored text, where it is wanted or what is shown depends on it.
    void ReadStored(const ViewItem& item, const EntryDefinition& entry, PanelItem& filled) const {
        const bool decides = !ChoicesOf(item, &entry).empty() || entry.mType == "boolean";
        if (mDetail != Detail::kAll && !decides) {
            return;
        }
        if (!GetRawStringValue(mTree, item.mPath, filled.mRaw) || filled.mRaw.empty()) {
            filled.mRaw = filled.mValue;
        }
    }

    /// The label of the choice that the raw value is, or of the truth that it is. A choice may stand for no value.
    static void ShowChoice(const ViewItem& item, const EntryDefinition& entry, PanelItem& filled) {
        const auto& choices = ChoicesOf(item, &entry);
        const auto choice = std::find_if(choices.begin(), choices.end(),
                                         [&](const auto& candidate) { return candidate->mRawValue == filled.mRaw; });
        if (choice != choices.end()) {
            filled.mValue = Shown((*choice)->mLabel);
        } else if (filled.mState == State::kValue && entry.mType == "boolean") {
            const bool isTrue = filled.mRaw == "True" || filled.mRaw == "true" || filled.mRaw == "1";
            const char* const byDefault =
                isTrue ? "$$$/metadataui/value/true_label=Yes" : "$$$/metadataui/value/false_label=No";
            filled.mValue = Localized(item.GetParameter(isTrue ? "true_label" : "false_label", byDefault));
        }
    }

    /// Structures, and arrays of them, show what they hold, one below the other.
    void FillStructure(const Path& path, PanelItem& filled) {
        if (!HasValue(mTree, path)) {
            return;
        }
        if (IsMixed(mTree, path)) {
            filled.mState = State::kMixed;
            return;
        }
        const std::string expression = ExpressionForPath(path);
        const std::size_t size = expression.size();
        if (!mIsListed) {
            mListed = ListValues(mTree);
            mIsListed = true;
        }
        for (const ListedValue& value : mListed) {
            if (value.mExpression.size() > size && value.mExpression.starts_with(expression) &&
                (value.mExpression[size] == '/' || value.mExpression[size] == '[')) {
                GroupOf(value.mExpression, size, filled).push_back(Part(value));
                filled.mState = State::kValue;
            }
        }
        DropLoneNumbers(filled.mItems);
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
        const std::size_t step = expression.find_last_of("/[") + 1;
        if (expression.ends_with(']')) {
            return expression.substr(step, expression.size() - step - 1);
        }
        const sp<EntryDefinition> entry = PathEntryDefinition(PathForExpression(expression));
        return entry ? Shown(entry->mLabel) : expression.substr(step);
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
        part.mLabel = value.mLabel.empty() ? value.mExpression : value.mLabel;
        part.mType = value.mType;
        const Path path = PathForExpression(value.mExpression);
        if (IsMixed(mTree, path)) {
            part.mState = State::kMixed;
            return part;
        }
        part.mState = value.mDefined ? State::kValue : State::kUndefined;
        part.mValue = value.mDisplay;
        part.mRaw = value.mRaw;
        if (const sp<EntryDefinition> entry = PathEntryDefinition(path)) {
            ShowChoice(ViewItem(), *entry, part);
        }
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
        filled.mValue = MentionsMissing(Localized(item.GetParameter("format", "")), values)
                            ? joined
                            : Localized(item.GetParameter("format", ""), values);
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
    bool mIsListed = false;
    std::vector<ListedValue> mListed;
};

bool IsNeededSeparator(const std::vector<PanelItem>& items, std::size_t index) {
    return index > 0 && index + 1 < items.size() && items[index - 1].mKind != Kind::kSeparator;
}

/// Takes out what has no value, and the separators that then separate nothing.
void Prune(std::vector<PanelItem>& items) {
    for (PanelItem& item : items) {
        if (item.mKind == Kind::kSection) {
            Prune(item.mItems);
        }
    }
    std::erase_if(items, [](const PanelItem& item) {
        const bool isText = item.mKind == Kind::kNote || item.mKind == Kind::kSeparator;
        return !isText && !item.HasValue();
    });
    for (std::size_t index = items.size(); index-- > 0;) {
        if (items[index].mKind == Kind::kSeparator && !IsNeededSeparator(items, index)) {
            items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
        }
    }
}

/// Makes a panel of what BuildView shows.
class PanelBuilder : public ViewBuilderInterface {
public:
    /// Without a provider the view is described alone.
    PanelBuilder(const sp<MetaDataProvider>& provider, Detail detail)
        : mProvider(provider), mAccess(provider), mFiller(*mAccess, mProvider, detail), mDetail(detail) {}

    void BeginView(const ViewHeader& header) override {
        mPanel.mName = header.mName;
        mPanel.mLabel = Localized(header.mLabel);
        mPanel.mDescription = Localized(header.mDescription);
        mPanel.mPruneEmptyProperties = header.mPruneEmptyProperties;
        mPanel.mItems.reserve(header.mItemCount);
    }
    void AddViewItem(const sp<ViewItem>& item) override {
        mPanel.mItems.push_back(DescribeItem(*item, mDetail));
        if (mProvider) {
            mFiller.Fill(*item, mPanel.mItems.back());
        }
    }
    void EndView(ViewDefinition& view) override {
        if (mProvider && view.mPruneEmptyProperties) {
            Prune(mPanel.mItems);
        }
    }

    Panel Take() { return std::move(mPanel); }

private:
    sp<MetaDataProvider> mProvider;
    MetaDataReadAccess mAccess;
    ValueFiller mFiller;
    Detail mDetail;
    Panel mPanel;
};

bool AnyHasValue(const std::vector<PanelItem>& items) {
    return std::any_of(items.begin(), items.end(), [](const PanelItem& item) { return item.HasValue(); });
}

}  // namespace

bool PanelItem::HasValue() const {
    const bool isShown = (mState == State::kValue && !mValue.empty()) || mState == State::kMixed;
    return isShown || (mKind != Kind::kFormatter && AnyHasValue(mItems));
}

bool Panel::HasValue() const {
    return AnyHasValue(mItems);
}

Panel DescribeView(const sp<ViewDefinition>& view) {
    return BuildPanel(view, nullptr, Detail::kAll);
}

Panel BuildPanel(const sp<ViewDefinition>& view, const sp<MetaDataProvider>& provider, Detail detail) {
    PanelBuilder builder(provider, detail);
    BuildView(view, builder);
    return builder.Take();
}

}  // namespace zephmeta
