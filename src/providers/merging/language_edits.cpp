#include "providers/merging/language_edits.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "providers/merging/array_items.h"
#include "providers/merging/unit_edits.h"
#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/xmp_paths.h"

namespace zephmetadata {

using toolkit::Node;

namespace {

/// One text of an alternative.
struct LanguageItem {
    UTF8String mLanguage;  ///< empty when it has none
    ArrayItem mNodes;      ///< empty when it was removed
    bool mMixed = false;

    const UTF8String& Text() const { return mNodes.front().mValue; }
};

/// The items of an alternative, to be found by their language.
class Languages {
public:
    explicit Languages(const PropertyUnit& unit) : mMixed(unit.mMixed) {
        std::vector<ArrayItem> items = ItemsOf(unit);
        for (std::size_t i = 0; i < items.size(); ++i) {
            const auto language = std::find_if(items[i].begin(), items[i].end(), [](const Node& node) {
                return node.mPath == toolkit::LanguagePath({});
            });
            const UTF8String tag = language == items[i].end() ? UTF8String() : language->mValue;
            const bool isMixed = unit.mMixed || unit.mMixedItems.contains(toolkit::ItemPath(unit.Path(), i + 1));
            Append({tag, std::move(items[i]), isMixed});
        }
    }

    const std::vector<LanguageItem>& Items() const { return mItems; }
    bool IsMixed() const { return mMixed; }

    LanguageItem* Find(std::string_view language) {
        const auto found = mIndexes.find(toolkit::LanguageKey(language));
        return found == mIndexes.end() ? nullptr : &mItems[found->second];
    }

    /// False when there is no such text.
    bool Remove(std::string_view language) {
        LanguageItem* const item = Find(language);
        if (item == nullptr) {
            return false;
        }
        item->mNodes.clear();
        mIndexes.erase(toolkit::LanguageKey(language));
        --mLeft;
        return true;
    }

    /// In all sources: the text is mixed no more. A first text is the default one too.
    void Set(const UTF8String& schema, const UTF8String& language, const UTF8String& text) {
        mMixed = false;
        if (LanguageItem* const item = Find(language); item != nullptr && IsSimple(item->mNodes.front())) {
            item->mNodes.front().mValue = text;
            item->mMixed = false;
            return;
        }
        Remove(language);
        if (mLeft == 0 && toolkit::LanguageKey(language) != toolkit::kDefaultLanguage) {
            Set(schema, UTF8String(toolkit::kDefaultLanguage), text);
        }
        Append({language,
                {{schema, {}, text, 0}, {schema, toolkit::LanguagePath({}), language, toolkit::kPropIsQualifier}},
                false});
    }

    /// What is left, x-default first.
    std::vector<LanguageItem> Left() const {
        std::vector<LanguageItem> left;
        std::copy_if(mItems.begin(), mItems.end(), std::back_inserter(left),
                     [](const LanguageItem& item) { return !item.mNodes.empty(); });
        std::stable_partition(left.begin(), left.end(), [](const LanguageItem& item) {
            return toolkit::SameLanguage(item.mLanguage, toolkit::kDefaultLanguage);
        });
        return left;
    }

private:
    void Append(LanguageItem item) {
        mIndexes.try_emplace(toolkit::LanguageKey(item.mLanguage), mItems.size());
        mItems.push_back(std::move(item));
        ++mLeft;
    }

    std::vector<LanguageItem> mItems;
    std::unordered_map<UTF8String, std::size_t> mIndexes;
    std::size_t mLeft = 0;
    bool mMixed;
};

/// The texts that were set; an empty one was removed.
std::vector<toolkit::LanguageText> EditedTexts(const UnitEdit& edit) {
    Languages before = edit.mBefore ? Languages(*edit.mBefore) : Languages(WithItems(*edit.mAfter, {}));
    Languages after(*edit.mAfter);
    std::vector<toolkit::LanguageText> edited;
    for (const LanguageItem& item : before.Items()) {
        if (after.Find(item.mLanguage) == nullptr) {
            edited.push_back({item.mLanguage, {}});
        }
    }
    for (const LanguageItem& item : after.Items()) {
        const LanguageItem* const old = before.Find(item.mLanguage);
        if (old == nullptr || old->Text() != item.Text() || (old->mMixed && !item.mMixed)) {
            edited.push_back({item.mLanguage, item.Text()});
        }
    }
    return edited;
}

void PutLanguages(XMPMetaHandle source, PropertyUnit own, const Languages& languages) {
    std::vector<ArrayItem> items;
    std::vector<UTF8String> mixed;
    for (const LanguageItem& item : languages.Left()) {
        items.push_back(item.mNodes);
        if (item.mMixed && !languages.IsMixed()) {
            mixed.push_back(toolkit::ItemPath(own.Path(), items.size()));
        }
    }
    own.mMixed = languages.IsMixed();
    PutItems(source, own, items);
    for (const UTF8String& path : mixed) {
        toolkit::MarkMixed(source, own.mNodes.front().mSchema, path);
    }
}

bool IsAlternative(const PropertyUnit& unit) {
    return (unit.mNodes.front().mOptions & toolkit::kPropArrayIsAlternate) != 0;
}

/// The alternative of a source, which is made where there is none, and of a text that stands in its place.
PropertyUnit AlternativeOf(XMPMetaHandle source, const UnitEdit& edit,
                           const std::vector<toolkit::LanguageText>& edited) {
    PropertyUnits present = UnitsAt(source, edit.mPlace);
    if (present.empty()) {
        return WithItems(*edit.mAfter, {});
    }
    if (!IsAlternative(present.begin()->second)) {
        const auto set =
            std::find_if(edited.begin(), edited.end(), [](const auto& text) { return !text.mText.empty(); });
        if (set == edited.end()) {
            throw XMPError(kOtherShape, "\"" + edit.mPlace.mPath + "\" is no alternative");
        }
        toolkit::SetLocalizedText(source, edit.mPlace.mSchema, edit.mPlace.mPath, {}, set->mLanguage, set->mText);
        present = UnitsAt(source, edit.mPlace);
    }
    return present.begin()->second;
}

}  // namespace

void EditLanguages(XMPMetaHandle source, const UnitEdit& edit) {
    const std::vector<toolkit::LanguageText> edited = EditedTexts(edit);
    const bool isEmptied =
        std::any_of(edited.begin(), edited.end(), [](const auto& text) { return text.mText.empty(); });
    const bool wasMixed = edit.mBefore && (edit.mBefore->mMixed || !edit.mBefore->mMixedItems.empty());
    const PropertyUnits present = UnitsAt(source, edit.mPlace);
    const bool isAsBefore =
        present.empty() ? !edit.mBefore : edit.mBefore && SameContent(present.begin()->second, *edit.mBefore);
    if (isAsBefore && !wasMixed && !isEmptied) {
        ReplaceUnit(source, *edit.mAfter);
        return;
    }
    const PropertyUnit own = AlternativeOf(source, edit, edited);
    Languages languages(own);
    bool isChanged = false;
    for (const auto& [language, text] : edited) {
        if (text.empty()) {
            isChanged |= languages.Remove(language);
        } else {
            languages.Set(edit.mPlace.mSchema, language, text);
            isChanged = true;
        }
    }
    if (isChanged) {
        PutLanguages(source, own, languages);
    }
}

}  // namespace zephmetadata
