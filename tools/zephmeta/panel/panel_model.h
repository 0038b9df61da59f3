#pragma once

#include <string>
#include <utility>
#include <vector>

#include "zephmetadata/providers.h"
#include "zephmetadata/views.h"

namespace zephmeta {

/// One entry of a panel with what is known of it and what the file has for it.
struct PanelItem {
    enum class Kind { kProperty, kSection, kSeparator, kNote, kFormatter };
    enum class State { kNone, kValue, kMixed, kUndefined };
    using Texts = std::vector<std::pair<std::string, std::string>>;

    Kind mKind = Kind::kProperty;
    std::string mPath;  ///< "dc:title"; empty where the item stands for no property
    std::string mLabel;
    std::string mDescription;
    std::string mType;    ///< the type id of the definition
    std::string mWidget;  ///< the one that the view asks for, else one that fits the type
    State mState = State::kNone;
    std::string mValue;  ///< as it is shown; of a formatter its parts joined; of a note its text
    std::string mRaw;    ///< as it is stored
    bool mWritable = false;
    bool mIsExpected = false;         ///< whether people miss the value where there is none; of overviews alone
    Texts mParameters;                ///< localised
    Texts mChoices;                   ///< raw value and label
    std::vector<std::string> mTexts;  ///< of an array of texts: each
    Texts mLanguages;                 ///< of a text in several languages: those that mValue is not in
    std::string mMap;                 ///< of a position: the address of a map
    std::vector<PanelItem> mItems;

    /// Whether there is anything to show, here or below.
    bool HasValue() const;
};

struct Panel {
    std::string mName;
    std::string mLabel;
    std::string mDescription;
    bool mPruneEmptyProperties = false;
    std::vector<PanelItem> mItems;
    std::vector<std::string> mUnrecorded;  ///< labels of what people look for and nobody recorded; of overviews alone

    bool HasValue() const;
};

/// Takes out what has no value, also in sections where @p inSections, and the separators that then separate nothing.
void Prune(std::vector<PanelItem>& items, bool inSections = true);

/// A text of the library or of this program, localised and with its display escapes resolved, @p arguments for @0 to @9.
std::string Localized(const std::string& text, const std::vector<std::string>& arguments = {});

/// How much of an item is wanted; each includes the one before.
enum class Detail {
    kValues,        ///< kind, label, state and value
    kDescriptions,  ///< and the description
    kAll,           ///< all members
};

/// What a view shows, without values, in all detail.
Panel DescribeView(const zephmetadata::sp<zephmetadata::ViewDefinition>& view);
/// The view over what @p provider has. Empty entries are left out where the view says so.
Panel BuildPanel(const zephmetadata::sp<zephmetadata::ViewDefinition>& view,
                 const zephmetadata::sp<zephmetadata::MetaDataProvider>& provider, Detail detail);

}  // namespace zephmeta
