#pragma once

#include <cstddef>
#include <map>
#include <type_traits>
#include <vector>

#include "zephmetadata/extensions.h"
#include "zephmetadata/paths.h"

/// Views: what a metadata panel shows, and the walk by which a host draws it.
///
/// A view is plain data. Labels and descriptions are kept as they are written, mostly localisation keys with their
/// default text ("$$$/group/name=text"), and are localised when they are asked for. Any thread may look views
/// up, none while another registers or removes (docs/threads.md).
namespace zephmetadata {

struct ViewItem;

/// The text form of a parameter's value, and back; see ViewItem::SetParameter and GetParameter.
namespace parameters {

ZEPHMETADATA_EXPORT UTF8String ToText(int value);
ZEPHMETADATA_EXPORT UTF8String ToText(bool value);
ZEPHMETADATA_EXPORT UTF8String ToText(float value);
ZEPHMETADATA_EXPORT UTF8String ToText(double value);
inline UTF8String ToText(char value) {
    return {value};
}
inline UTF8String ToText(const char* value) {
    return value;
}
inline UTF8String ToText(const UTF8String& value) {
    return value;
}

ZEPHMETADATA_EXPORT void FromText(const UTF8String& text, int& value);
ZEPHMETADATA_EXPORT void FromText(const UTF8String& text, bool& value);
ZEPHMETADATA_EXPORT void FromText(const UTF8String& text, float& value);
ZEPHMETADATA_EXPORT void FromText(const UTF8String& text, double& value);
inline void FromText(const UTF8String& text, char& value) {
    value = text.empty() ? '\0' : text.front();
}
inline void FromText(const UTF8String& text, UTF8String& value) {
    value = text;
}

}  // namespace parameters

/// One entry of a view: a property, a section, a separator, a note or a formatter, with the entries below it.
///
/// Copies share their child items and choices.
struct ZEPHMETADATA_EXPORT ViewItem {
    QualifiedName mQualifiedName;  ///< of the property, when the item names a top-level one
    Path mPath;                    ///< of the property or structure field shown; empty when the item shows none
    UTF8String mWidgetName;        ///< "section", "separator", "note", "formatter", or the widget that is wanted
    UTF8String mLabel;             ///< as written; empty for the label of the definition
    UTF8String mDescription;       ///< as written; empty for the description of the definition
    std::vector<sp<ViewItem>> mChildItems;
    std::map<UTF8String, UTF8String> mParameters;  ///< how to present it; their meaning is the host's
    std::vector<sp<ChoiceDefinition>> mChoices;

    ViewItem();
    explicit ViewItem(Path path);
    explicit ViewItem(QualifiedName name);
    explicit ViewItem(UTF8String widgetName);
    ViewItem(const ViewItem& other);
    ViewItem(ViewItem&& other) noexcept;
    ViewItem& operator=(const ViewItem& other);
    ViewItem& operator=(ViewItem&& other) noexcept;
    ~ViewItem();

    void AddItem(sp<ViewItem> item);
    Path GetPath() const;
    /// The item's own text, localised, else that of the definition at its path, else empty. Looked up at every call.
    UTF16String GetLabel() const;
    UTF16String GetDescription() const;

    /// Stores the text form of @p value: a text as it is, an integer in decimal, "true" or "false", a float with 12 and
    /// a double with 17 significant digits.
    template <typename T>
    void SetParameter(const UTF8String& key, const T& value) {
        mParameters[key] = parameters::ToText(value);
    }

    /// The parameter, converted back: a number from as much of the start of the text as is one, 0 where there is none;
    /// a boolean is true for "true" alone. @p byDefault where there is no such parameter.
    template <typename T>
    T GetParameter(const UTF8String& key, T byDefault) const {
        const auto found = mParameters.find(key);
        if (found != mParameters.end()) {
            parameters::FromText(found->second, byDefault);
        }
        return byDefault;
    }
    UTF8String GetParameter(const UTF8String& key, const char* byDefault) const {
        return GetParameter(key, UTF8String(byDefault));
    }
};

/// The same for an item that may be null, which has no parameters.
template <typename T>
T GetParameter(const sp<ViewItem>& item, const UTF8String& key, T byDefault) {
    return item ? item->GetParameter(key, std::move(byDefault)) : byDefault;
}

/// One metadata panel.
struct ViewDefinition {
    UTF8String mName;         ///< unique among the registered views, for example "com.corvid.xmp.view.basic"
    UTF8String mLabel;        ///< as written
    UTF8String mDescription;  ///< as written
    std::vector<sp<ViewItem>> mItems;
    bool mPruneEmptyProperties = false;  ///< leave out properties without a value
    bool mStaticPage = false;            ///< for the host alone
    std::size_t mLine = 0;  ///< where it begins in the document that it was read from; 0 when it was made otherwise
};

/// What is known of a view before its items.
struct ViewHeader {
    UTF8String mName;
    UTF8String mLabel;
    UTF8String mDescription;
    std::size_t mItemCount = 0;
    bool mPruneEmptyProperties = false;
};

/// Implemented by hosts to draw a view. Calls come in the order of the functions.
class ZEPHMETADATA_EXPORT ViewBuilderInterface {
public:
    virtual void BeginView(const ViewHeader& header) = 0;
    virtual void EndView(ViewDefinition& view) = 0;
    /// Once for each item at the top of the view; the builder walks what is below.
    virtual void AddViewItem(const sp<ViewItem>& item) = 0;
    virtual ~ViewBuilderInterface();
};

/// Parse a views document. Nothing is registered; each problem becomes an error record (ViewDefinitionParsingError with
/// the source as context), and the views that are whole are returned. The schemas that a view refers to have to be
/// registered before.
ZEPHMETADATA_EXPORT std::vector<sp<ViewDefinition>> ParseViewDefinitionsFromBuffer(const UTF8String& buffer,
                                                                                   const UTF16String& sourceName);
ZEPHMETADATA_EXPORT std::vector<sp<ViewDefinition>> ParseViewDefinitionsFromDocument(const UTF16String& path);

/// Replaces the file at @p path by a views document with one view, named and labelled as @p info says: a section for
/// each of @p presented that has a label text, with its properties, which stand in the view itself for one that has
/// none. Missing folders are made. False when the folder of @p path cannot be made; true says nothing about the file.
///
/// Of a property only what differs from its definition is written, everything else shows as registered. The definition
/// is the registered one; where nothing is registered for the namespace, the first in @p comparison that has the name
/// but not the same texts and category. Without any schema the document is the XML declaration alone, which cannot be
/// read back. No namespace is declared for a prefix that XML does not allow.
ZEPHMETADATA_EXPORT bool WriteViewDefinitionsFileFromSchema(const std::vector<sp<SchemaDefinition>>& presented,
                                                            const std::vector<sp<SchemaDefinition>>& comparison,
                                                            const GenericPanelManifestParser::ManifestInfo& info,
                                                            const UTF16String& path);

/// Registers the built-in views, then what the extension packages bring (extensions.h). Called by the host after
/// Initialize; further calls before the last Terminate do nothing.
ZEPHMETADATA_EXPORT void LoadAllViewDefinitions();
/// Registers a view of the host's own, for example a parsed one. False for a null one and while the library is not
/// initialised, and, with an error record (ViewDefinitionRegistrationError with @p source as context), for one whose name
/// is taken. The last Terminate forgets it.
ZEPHMETADATA_EXPORT bool RegisterViewDefinition(const sp<ViewDefinition>& view, const UTF16String& source);
/// Takes that very view out. It stays whole for those who hold it. False when it is not registered.
ZEPHMETADATA_EXPORT bool RemoveViewDefinition(const sp<ViewDefinition>& view);
/// The first registered view that has @p name now, or null. Cost: linear in the views.
ZEPHMETADATA_EXPORT sp<ViewDefinition> GetViewDefinitionForName(const UTF8String& name);
/// All registered views in order of registration; valid until the registry changes.
ZEPHMETADATA_EXPORT PolyRange<sp<ViewDefinition>> CommonViewDefinitions();

/// A text of a view or of the host itself, for example a parameter, in the user-interface language: the translation of
/// a key, or the text as it is; @p arguments, when there are any, take the places of @0 to @9. Display escapes such as
/// #{quot} stay; zephcore::ResolveDisplayEscapes resolves them and gives the arguments back as they were.
ZEPHMETADATA_EXPORT UTF16String LocalizedText(const UTF8String& text, const std::vector<UTF16String>& arguments = {});

/// Shows @p view to @p builder; nothing for a null view. What the builder throws is passed on. The builder may drop and
/// change the view: the items shown are those that it has at the beginning.
ZEPHMETADATA_EXPORT void BuildView(sp<ViewDefinition> view, ViewBuilderInterface& builder);

}  // namespace zephmetadata
