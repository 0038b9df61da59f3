#include <algorithm>
#include <array>

#include "frame/toolkit/exempi_handles.h"
#include "frame/toolkit/xmp_alternatives.h"
#include "frame/toolkit/xmp_meta_handle.h"
#include "frame/toolkit/xmp_paths.h"
#include "frame/toolkit/xmp_tree.h"

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

/// Names that the toolkit takes for the x-default item of another alternative. Here they stand for the whole of it:
/// an alternative made at such a name would lie inside that item.
struct AlternativeAlias {
    std::string_view mSchema;
    std::string_view mProperty;
    std::string_view mBaseSchema;
    std::string_view mBaseProperty;
};

constexpr std::string_view kTiff = "http://ns.adobe.com/tiff/1.0/";
constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";
constexpr auto kAliases = std::to_array<AlternativeAlias>({
    {kTiff, "ImageDescription", kDublinCore, "description"},
    {kTiff, "Copyright", kDublinCore, "rights"},
});

struct Place {
    UTF8String mSchema;
    UTF8String mPath;
};

Place BasePlace(const UTF8String& schema, const UTF8String& path) {
    const std::string_view name = std::string_view(path).substr(path.find(':') + 1);  // all of it without a prefix
    const auto* const alias = std::find_if(kAliases.begin(), kAliases.end(), [&](const AlternativeAlias& candidate) {
        return candidate.mSchema == schema && candidate.mProperty == name;
    });
    return alias == kAliases.end() ? Place{schema, path}
                                   : Place{UTF8String(alias->mBaseSchema), UTF8String(alias->mBaseProperty)};
}

bool IsVariantOf(std::string_view language, std::string_view generic) {
    return !generic.empty() && language.size() >= generic.size() &&
           SameLanguage(language.substr(0, generic.size()), generic) &&
           (language.size() == generic.size() || language[generic.size()] == '-');
}

void AddItem(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path, std::size_t position,
             const UTF8String& language, std::string_view value) {
    SetArrayItem(tree, schema, path, static_cast<int>(position), value, kInsertBeforeItem);
    SetProperty(tree, schema, LanguagePath(ItemPath(path, position)), language);
}

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
    const Place place = BasePlace(schema, path);
    if (SameLanguage(specificLanguage, kDefaultLanguage)) {
        if (std::optional<UTF8String> text = DefaultText(tree, place)) {
            return text;
        }
    }
    const std::optional<std::vector<AlternativeItem>> items = Items(tree, place.mSchema, place.mPath);
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
    const Place place = BasePlace(schema, path);
    std::vector<LanguageText> texts;
    for (AlternativeItem& item : Items(tree, place.mSchema, place.mPath).value_or(std::vector<AlternativeItem>())) {
        texts.push_back({std::move(item.mLanguage), std::move(item.mValue)});
    }
    return texts;
}

bool DeleteLocalizedText(XMPMetaHandle tree, const UTF8String& schema, const UTF8String& path,
                         std::string_view language) {
    const Place place = BasePlace(schema, path);
    const auto items = Items(tree, place.mSchema, place.mPath).value_or(std::vector<AlternativeItem>());
    const auto found = std::find_if(items.begin(), items.end(), [&](const AlternativeItem& item) {
        return SameLanguage(item.mLanguage, language);
    });
    if (found == items.end()) {
        return false;
    }
    const auto index = static_cast<std::size_t>(found - items.begin()) + 1;
    const UTF8String whole = items.size() == 1 ? place.mPath : ItemPath(place.mPath, index);
    return DeleteProperty(tree, place.mSchema, whole);
}

void SetLocalizedText(XMPMetaHandle tree, const UTF8String& givenSchema, const UTF8String& givenPath,
                      const UTF8String& /*genericLanguage*/, const UTF8String& specificLanguage,
                      std::string_view value) {
    const Place place = BasePlace(givenSchema, givenPath);
    const UTF8String& schema = place.mSchema;
    const UTF8String& path = place.mPath;
    const UTF8String text = CheckedValue(value);
    CheckWritable(schema, path);
    CheckLanguage(specificLanguage);
    std::optional<std::vector<AlternativeItem>> items = Items(tree, schema, path);
    if (!items) {
        SetProperty(tree, schema, path, {}, kLanguageAlternative);
        items.emplace();
    }
    const auto found = std::find_if(items->begin(), items->end(), [&](const AlternativeItem& item) {
        return SameLanguage(item.mLanguage, specificLanguage);
    });
    if (found != items->end()) {
        SetArrayItem(tree, schema, path, static_cast<int>(found - items->begin()) + 1, text);
        return;
    }
    const bool isDefault = SameLanguage(specificLanguage, kDefaultLanguage);
    std::size_t count = items->size();
    if (count == 0 && !isDefault) {
        AddItem(tree, schema, path, ++count, UTF8String(kDefaultLanguage), text);
    }
    AddItem(tree, schema, path, isDefault ? 1 : count + 1, specificLanguage, text);
}

}  // namespace zephmetadata::toolkit
