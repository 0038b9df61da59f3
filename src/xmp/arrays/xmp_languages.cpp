#include <algorithm>
#include <unordered_set>

#include "xmp/arrays/xmp_alternatives.h"
#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_shapes.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {
namespace {

constexpr std::uint32_t kLanguageAlternative =
    kPropValueIsArray | kPropArrayIsOrdered | kPropArrayIsAlternate | kPropArrayIsAltText;

// The items of the alternative; empty optional when there is no such property.
std::optional<std::vector<AlternativeItem>> Items(XMPMetaHandle tree, const UTF8String& schema,
                                                  const UTF8String& path) {
    const std::optional<Property> property = GetProperty(tree, schema, path);
    if (!property) {
        return std::nullopt;
    }
    if ((property->mOptions & kPropArrayIsAlternate) == 0) {
        ThrowError(XMPErr_BadXPath, "\"" + path + "\" is no language alternative");
    }
    std::vector<Node> nodes = Nodes(tree, schema, path, Walk::kSubtree);
    nodes.insert(nodes.begin(), {schema, NormalPath(tree, schema, path), {}, property->mOptions});
    return std::move(Alternatives(nodes).front().mItems);
}

bool IsText(const AlternativeItem& item) {
    return (item.mOptions & kPropCompositeMask) == 0;
}

// The same for texts alone: what holds structures has no text in any language, and takes none.
std::optional<std::vector<AlternativeItem>> TextItems(XMPMetaHandle tree, const Place& place) {
    std::optional<std::vector<AlternativeItem>> items = Items(tree, place.mSchema, place.mPath);
    if (items && !std::all_of(items->begin(), items->end(), IsText)) {
        ThrowError(XMPErr_BadXPath, "\"" + place.mPath + "\" has items that are no texts");
    }
    return items;
}

bool IsVariantOf(std::string_view language, std::string_view generic) {
    return !generic.empty() && language.size() >= generic.size() &&
           SameLanguage(language.substr(0, generic.size()), generic) &&
           (language.size() == generic.size() || language[generic.size()] == '-');
}

void AddItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::size_t position,
             const UTF8String& language, std::string_view value) {
    InsertArrayItem(tree, schema, path, static_cast<int>(position), value);
    SetProperty(tree, schema, LanguagePath(ItemPath(path, position)), language);
}

auto FindLanguage(const std::vector<AlternativeItem>& items, std::string_view language) {
    return std::find_if(items.begin(), items.end(),
                        [&](const AlternativeItem& item) { return SameLanguage(item.mLanguage, language); });
}

/// Sets the item of one language of an alternative that holds @p items.
void SetItem(XMPMetaHandle tree, const Place& place, const std::vector<AlternativeItem>& items,
             const UTF8String& language, const UTF8String& text) {
    const auto& [schema, path] = place;
    const auto found = FindLanguage(items, language);
    if (found != items.end()) {
        SetArrayItem(tree, schema, path, static_cast<int>(found - items.begin()) + 1, text);
        return;
    }
    const bool isDefault = SameLanguage(language, kDefaultLanguage);
    std::size_t count = items.size();
    if (count == 0 && !isDefault) {
        AddItem(tree, schema, path, ++count, UTF8String(kDefaultLanguage), text);
    }
    AddItem(tree, schema, path, isDefault ? 1 : count + 1, language, text);
}

/// The items of what is to be an alternative of texts; empty optional when there is no such property. Of a property of another
/// shape: a text becomes the x-default item; anything else is replaced by x-default, and refused for the other languages,
/// which are not the whole of it.
std::optional<std::vector<AlternativeItem>> MakeAlternative(XMPMetaHandle tree, const Place& place,
                                                            std::string_view language) {
    const std::optional<Property> present = GetProperty(tree, place.mSchema, place.mPath);
    if (!present) {
        return std::nullopt;
    }
    if ((present->mOptions & kPropArrayIsAlternate) != 0) {
        auto items = Items(tree, place.mSchema, place.mPath);
        if (items && std::all_of(items->begin(), items->end(), IsText)) {
            return items;
        }
    }
    const bool isDefault = SameLanguage(language, kDefaultLanguage);
    const bool isText = (present->mOptions & kPropCompositeMask) == 0;
    if (isDefault || isText) {
        Reshape(tree, place.mSchema, place.mPath, kLanguageAlternative);
    }
    if (!isDefault && isText) {
        AddItem(tree, place.mSchema, place.mPath, 1, UTF8String(kDefaultLanguage), present->mValue);
    }
    return TextItems(tree, place);
}

/// Keeps the mixed marks of an alternative with its languages over an edit, which may move the items: a language that
/// is set in all sources is mixed no more, the others are as before.
class LanguageMarks {
public:
    LanguageMarks(XMPMetaHandle tree, const Place& place, const std::vector<AlternativeItem>& items)
        : mTree(tree), mPlace(place), mWhole(IsMixed(tree, place.mSchema, place.mPath)) {
        for (std::size_t i = 0; i < items.size() && !tree->mMixed.empty(); ++i) {
            if (IsMixed(tree, place.mSchema, ItemPath(place.mPath, i + 1))) {
                mLanguages.insert(LanguageKey(items[i].mLanguage));
            }
        }
    }
    ~LanguageMarks() {
        try {
            Restore();
        } catch (const XMPError&) {
            // The alternative that the edit left cannot be read; nothing of it can be marked.
        }
    }
    LanguageMarks(const LanguageMarks&) = delete;
    LanguageMarks& operator=(const LanguageMarks&) = delete;

    void Settle(std::string_view language) {
        mWhole = false;
        mLanguages.erase(LanguageKey(language));
    }

private:
    void Restore() {
        ClearMixed(mTree, mPlace.mSchema, mPlace.mPath);
        if (mWhole) {
            mTree->mMixed.insert(mPlace);
        }
        if (mWhole || mLanguages.empty()) {
            return;
        }
        const auto items = Items(mTree, mPlace.mSchema, mPlace.mPath).value_or(std::vector<AlternativeItem>());
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (mLanguages.contains(LanguageKey(items[i].mLanguage))) {
                mTree->mMixed.insert({mPlace.mSchema, ItemPath(mPlace.mPath, i + 1)});
            }
        }
    }

    XMPMetaHandle mTree;
    Place mPlace;
    bool mWhole;
    std::unordered_set<UTF8String> mLanguages;  // as LanguageKey has them
};

/// The x-default item as the toolkit finds it, which is quick; absent where there is none, or where the toolkit would
/// choose another item.
std::optional<UTF8String> DefaultText(XMPMetaHandle tree, const Place& place) {
    const QuietToolkit quiet;
    const ToolkitString language;
    const ToolkitString text;
    const bool found =
        xmp_get_localized_text(Native(tree), place.mSchema.c_str(), place.mPath.c_str(), "",
                               UTF8String(kDefaultLanguage).c_str(), language.Get(), text.Get(), nullptr);
    return found && language.Text() == kDefaultLanguage ? std::optional(text.Text()) : std::nullopt;
}

}  // namespace

std::optional<UTF8String> GetLocalizedText(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                                           const UTF8String& genericLanguage, const UTF8String& specificLanguage) {
    const Place place = NormalPlace(tree, schema, path);
    if (SameLanguage(specificLanguage, kDefaultLanguage)) {
        if (std::optional<UTF8String> text = DefaultText(tree, place)) {
            return text;
        }
    }
    const std::optional<std::vector<AlternativeItem>> items = TextItems(tree, place);
    if (!items || items->empty()) {
        return std::nullopt;
    }
    const auto find = [&](auto matches) {
        const auto found = std::find_if(items->begin(), items->end(),
                                        [&](const AlternativeItem& item) { return matches(item.mLanguage); });
        return found == items->end() ? nullptr : &*found;
    };
    const AlternativeItem* item = find([&](const UTF8String& own) { return SameLanguage(own, specificLanguage); });
    if (item == nullptr) {
        item = find([&](const UTF8String& own) { return IsVariantOf(own, genericLanguage); });
    }
    if (item == nullptr) {
        item = find([](const UTF8String& own) { return SameLanguage(own, kDefaultLanguage); });
    }
    return item != nullptr ? item->mValue : items->front().mValue;
}

std::vector<LanguageText> LanguageTexts(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path) {
    const Place place = NormalPlace(tree, schema, path);
    std::vector<LanguageText> texts;
    for (AlternativeItem& item : Items(tree, place.mSchema, place.mPath).value_or(std::vector<AlternativeItem>())) {
        if (IsText(item)) {
            texts.push_back({std::move(item.mLanguage), std::move(item.mValue)});
        }
    }
    return texts;
}

bool DeleteLocalizedText(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                         std::string_view language) {
    const Place place = NormalPlace(tree, schema, path);
    const auto items = Items(tree, place.mSchema, place.mPath).value_or(std::vector<AlternativeItem>());
    const auto found = FindLanguage(items, language);
    if (found == items.end()) {
        return false;
    }
    // The last text takes the alternative with it, unless other sources of a merged tree may hold more.
    if (items.size() == 1 && !IsMixed(tree, place.mSchema, place.mPath)) {
        return DeleteProperty(tree, place.mSchema, place.mPath);
    }
    LanguageMarks marks(tree, place, items);
    const auto index = static_cast<std::size_t>(found - items.begin()) + 1;
    return DeleteProperty(tree, place.mSchema, ItemPath(place.mPath, index));
}

void SetLocalizedText(XMPMetaHandle tree, const UTF8String& givenSchema, const UTF8String& givenPath,
                      const UTF8String& /*genericLanguage*/, const UTF8String& specificLanguage,
                      std::string_view value) {
    const UTF8String text = CheckedValue(value);
    CheckWritable(givenSchema, givenPath);
    CheckLanguage(specificLanguage);
    const Place place = NormalPlace(tree, givenSchema, givenPath);
    std::optional<std::vector<AlternativeItem>> items = MakeAlternative(tree, place, specificLanguage);
    if (!items) {
        SetProperty(tree, place.mSchema, place.mPath, {}, kLanguageAlternative);
        items.emplace();
    }
    LanguageMarks marks(tree, place, *items);
    SetItem(tree, place, *items, specificLanguage, text);
    marks.Settle(specificLanguage);
}

}  // namespace zephmetadata::toolkit
