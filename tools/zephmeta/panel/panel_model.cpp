#include "panel/panel_model.h"

#include <algorithm>

#include "panel/panel_description.h"
#include "panel/panel_filling.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;
using Kind = PanelItem::Kind;
using State = PanelItem::State;

bool IsNeededSeparator(const std::vector<PanelItem>& items, std::size_t index) {
    return index > 0 && index + 1 < items.size() && items[index - 1].mKind != Kind::kSeparator;
}

/// Makes a panel of what BuildView shows.
class PanelBuilder : public ViewBuilderInterface {
public:
    /// Without a provider the view is described alone.
    PanelBuilder(const sp<MetaDataProvider>& provider, Detail detail)
        : mProvider(provider), mAccess(provider), mFill(FillerOf(*mAccess, mProvider, detail)), mDetail(detail) {}

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
            mFill(*item, mPanel.mItems.back());
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
    Filler mFill;
    Detail mDetail;
    Panel mPanel;
};

bool AnyHasValue(const std::vector<PanelItem>& items) {
    return std::any_of(items.begin(), items.end(), [](const PanelItem& item) { return item.HasValue(); });
}

}  // namespace

bool PanelItem::HasValue() const {
    const bool isKnown = mState == State::kValue || mState == State::kUndefined;
    const bool isShown = (isKnown && !mValue.empty()) || mState == State::kMixed;
    return isShown || (mKind != Kind::kFormatter && AnyHasValue(mItems));
}

bool Panel::HasValue() const {
    return AnyHasValue(mItems);
}

void Prune(std::vector<PanelItem>& items, bool inSections) {
    for (PanelItem& item : items) {
        if (inSections && item.mKind == Kind::kSection) {
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

Panel DescribeView(const sp<ViewDefinition>& view) {
    return BuildPanel(view, nullptr, Detail::kAll);
}

Panel BuildPanel(const sp<ViewDefinition>& view, const sp<MetaDataProvider>& provider, Detail detail) {
    PanelBuilder builder(provider, detail);
    BuildView(view, builder);
    return builder.Take();
}

}  // namespace zephmeta
