#include "views/views_parser.h"

#include <algorithm>
#include <array>
#include <utility>

#include "definitions/entry_index.h"
#include "frame/errors.h"
#include "platform/compiled/compiled_document.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

using zephcore::Attribute;
using zephcore::AttributeList;
using zephcore::UTF16to8;

constexpr std::u16string_view kNoViewsTag =
    u"$$$/zephmetadata/view_parser/NoViewsTag=outermost Tag has to be <views/>.";
constexpr std::u16string_view kNoName =
    u"$$$/zephmetadata/view_parser/ViewHasNoName=<view> tag needs a name attribute.";
constexpr std::u16string_view kPropertyWithoutName =
    u"$$$/zephmetadata/view_parser/PropertyWithoutName=found XMP property without a 'name' attribute.";
constexpr std::u16string_view kMissingNamespace =
    u"$$$/zephmetadata/view_parser/MissingUINameSpace=missing namespace #{quot}@0#{quot}, "
    u"views in the file will be skipped.";
constexpr std::u16string_view kNoViewTag =
    u"$$$/zephmetadata/view_parser/NoViewTag=the view definition file has no <view> tag.";
constexpr std::u16string_view kInvalidXML = u"$$$/zephmetadata/view_parser/InvalidXML=invalid XML.";

/// The elements that are items. Those that set a widget are named after it; of the others a property needs a name.
struct ItemElementRow {
    std::u16string_view mName;
    bool mSetsWidget;
    bool mNeedsName;
};
constexpr auto kItemElements = std::to_array<ItemElementRow>({{u"item", false, false},
                                                              {u"property", false, true},
                                                              {u"section", true, false},
                                                              {u"separator", true, false},
                                                              {u"note", true, false},
                                                              {u"formatter", true, false}});

const ItemElementRow* FindItemElement(std::u16string_view name) {
    const auto* const found = std::find_if(kItemElements.begin(), kItemElements.end(),
                                           [&](const ItemElementRow& row) { return row.mName == name; });
    return found == kItemElements.end() ? nullptr : found;
}

/// The namespace of views documents in UTF-16, converted once.
const UTF16String& ViewsNamespace() {
    static const UTF16String uri = zephcore::UTF8to16(UINamespaceURI);
    return uri;
}

UTF16String AttributeValue(const AttributeList& attributes, std::u16string_view name) {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const Attribute& attribute) { return attribute.mName == name; });
    return found == attributes.end() ? UTF16String() : found->mValue;
}

UTF8String AttributeText(const AttributeList& attributes, std::u16string_view name) {
    return UTF16to8(AttributeValue(attributes, name));
}

}  // namespace

struct ViewDefinitionsHandler::Element {
    std::u16string_view mName;
    const AttributeList& mAttributes;
};

ViewDefinitionsHandler::ViewDefinitionsHandler(std::vector<sp<ViewDefinition>>& results, UTF16String sourceName)
    : mResults(results), mReferences(std::move(sourceName)) {}

ViewDefinitionsHandler::~ViewDefinitionsHandler() = default;

ViewDefinitionsHandler::Kind ViewDefinitionsHandler::KindOf(std::u16string_view localName) {
    static constexpr auto kKinds = std::to_array<std::pair<std::u16string_view, Kind>>(
        {{u"views", Kind::kViews}, {u"view", Kind::kView}, {u"choice", Kind::kChoice}, {u"param", Kind::kParam}});
    if (FindItemElement(localName) != nullptr) {
        return Kind::kItem;
    }
    const auto* const found =
        std::find_if(kKinds.begin(), kKinds.end(), [&](const auto& row) { return row.first == localName; });
    return found == kKinds.end() ? Kind::kOther : found->second;
}

/// What is not in these tables is ignored: paramList and paramMap, and elements of the future.
const std::vector<ViewDefinitionsHandler::Row>& ViewDefinitionsHandler::StartRows() {
    using Self = ViewDefinitionsHandler;
    static const std::vector<Row> rows = {
        {State::kViews, Kind::kView, &Self::BeginView},      {State::kView, Kind::kItem, &Self::BeginTopItem},
        {State::kItem, Kind::kItem, &Self::BeginNestedItem}, {State::kNestedItem, Kind::kItem, &Self::BeginNestedItem},
        {State::kItem, Kind::kChoice, &Self::AddChoice},     {State::kNestedItem, Kind::kChoice, &Self::AddChoice},
        {State::kItem, Kind::kParam, &Self::AddParam},       {State::kNestedItem, Kind::kParam, &Self::AddParam},
        {State::kStart, Kind::kViews, &Self::BeginViews},    {State::kStart, Kind::kView, &Self::RefuseRoot},
        {State::kStart, Kind::kItem, &Self::RefuseRoot},     {State::kStart, Kind::kChoice, &Self::RefuseRoot},
        {State::kStart, Kind::kParam, &Self::RefuseRoot},    {State::kStart, Kind::kOther, &Self::RefuseRoot},
    };
    return rows;
}

const std::vector<ViewDefinitionsHandler::Row>& ViewDefinitionsHandler::EndRows() {
    using Self = ViewDefinitionsHandler;
    static const std::vector<Row> rows = {
        {State::kViews, Kind::kViews, &Self::EndViews},
        {State::kView, Kind::kView, &Self::EndView},
        {State::kSkippedView, Kind::kView, &Self::EndSkippedView},
        {State::kItem, Kind::kItem, &Self::EndTopItem},
        {State::kNestedItem, Kind::kItem, &Self::EndNestedItem},
        {State::kParam, Kind::kParam, &Self::EndPart},
        {State::kChoice, Kind::kChoice, &Self::EndPart},
    };
    return rows;
}

void ViewDefinitionsHandler::Take(const std::vector<Row>& rows, const Element& element) {
    const Kind kind = KindOf(element.mName);
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [&](const Row& row) { return row.mState == mState && row.mKind == kind; });
    if (found != rows.end()) {
        (this->*found->mStep)(element);
    }
}

void ViewDefinitionsHandler::StartElementWithNamespace(const UTF16String& /*name*/, const UTF16String& namespaceURI,
                                                       const UTF16String& localName, const AttributeList& attributes) {
    const Element element{localName, attributes};
    if (namespaceURI == ViewsNamespace()) {
        Take(StartRows(), element);
    } else if (mState == State::kDone || mState == State::kFailed) {
        return;
    } else if (localName == u"views") {
        mReferences.Report(kMissingNamespace, ViewsNamespace());
        mState = State::kSkippedView;
    } else if (mState == State::kStart) {
        RefuseRoot(element);
    }
}

void ViewDefinitionsHandler::EndElementWithNamespace(const UTF16String& /*name*/, const UTF16String& namespaceURI,
                                                     const UTF16String& localName) {
    if (namespaceURI == ViewsNamespace()) {
        Take(EndRows(), {localName, {}});
    }
}

void ViewDefinitionsHandler::StartPrefixMapping(const UTF16String& prefix, const UTF16String& namespaceURI) {
    mReferences.Declare(prefix, namespaceURI);
}

void ViewDefinitionsHandler::EndPrefixMapping(const UTF16String& prefix) {
    mReferences.Undeclare(prefix);
}

void ViewDefinitionsHandler::BeginViews(const Element& /*element*/) {
    mState = State::kViews;
}

void ViewDefinitionsHandler::RefuseRoot(const Element& /*element*/) {
    mReferences.Report(kNoViewsTag);
    mState = State::kFailed;
}

void ViewDefinitionsHandler::BeginView(const Element& element) {
    mParents = {};  // those of a view that was given up
    mView = std::make_shared<ViewDefinition>();
    mView->mLine = zephcore::CurrentDocumentLine();
    mView->mName = AttributeText(element.mAttributes, u"name");
    mView->mLabel = AttributeText(element.mAttributes, u"label");
    mView->mDescription = AttributeText(element.mAttributes, u"description");
    mView->mPruneEmptyProperties = AttributeText(element.mAttributes, u"pruneEmptyProperties") == "true";
    mState = State::kView;
    if (mView->mName.empty()) {
        mReferences.Report(kNoName);
        mState = State::kSkippedView;
    }
}

void ViewDefinitionsHandler::BeginTopItem(const Element& element) {
    sp<ViewItem> item = ReadItem(element);
    const bool showsProperty = !item->mPath.mNamespace.empty() && !item->mPath.mPathDescription.empty();
    if (showsProperty || !item->mWidgetName.empty()) {
        mItem = std::move(item);
        mState = State::kItem;
    }
}

void ViewDefinitionsHandler::BeginNestedItem(const Element& element) {
    mParents.push(std::exchange(mItem, nullptr));
    mItem = ReadItem(element);
    mState = State::kNestedItem;
}

void ViewDefinitionsHandler::AddChoice(const Element& element) {
    const auto choice = std::make_shared<ChoiceDefinition>();
    choice->mRawValue = AttributeText(element.mAttributes, u"value");
    choice->mLabelZString = AttributeValue(element.mAttributes, u"label");
    choice->mLabel = zephcore::Localizer::Get().Translate(choice->mLabelZString);
    mItem->mChoices.push_back(choice);
    mState = State::kChoice;
}

void ViewDefinitionsHandler::AddParam(const Element& element) {
    mItem->mParameters[AttributeText(element.mAttributes, u"name")] = AttributeText(element.mAttributes, u"value");
    mState = State::kParam;
}

void ViewDefinitionsHandler::EndViews(const Element& /*element*/) {
    mState = State::kDone;
    if (mResults.empty()) {
        mReferences.Report(kNoViewTag);
        mState = State::kFailed;
    }
}

void ViewDefinitionsHandler::EndView(const Element& /*element*/) {
    mResults.push_back(std::exchange(mView, nullptr));
    mState = State::kViews;
}

void ViewDefinitionsHandler::EndSkippedView(const Element& /*element*/) {
    mState = State::kViews;
}

void ViewDefinitionsHandler::EndTopItem(const Element& /*element*/) {
    mView->mItems.push_back(std::exchange(mItem, nullptr));
    mState = State::kView;
}

void ViewDefinitionsHandler::EndNestedItem(const Element& /*element*/) {
    const sp<ViewItem> parent = mParents.top();
    mParents.pop();
    parent->AddItem(std::exchange(mItem, parent));
    mState = ItemState();
}

void ViewDefinitionsHandler::EndPart(const Element& /*element*/) {
    mState = ItemState();
}

ViewDefinitionsHandler::State ViewDefinitionsHandler::ItemState() const {
    return mParents.empty() ? State::kItem : State::kNestedItem;
}

sp<ViewItem> ViewDefinitionsHandler::ReadItem(const Element& element) const {
    const ItemElementRow& row = *FindItemElement(element.mName);
    auto item = std::make_shared<ViewItem>();
    if (row.mSetsWidget) {
        item->mWidgetName = UTF16to8(row.mName);
    }
    bool isNamed = false;
    for (const Attribute& attribute : element.mAttributes) {
        isNamed = isNamed || attribute.mName == u"name";
        ReadAttribute(attribute, row.mSetsWidget, *item);
    }
    if (row.mNeedsName && !isNamed) {
        mReferences.Report(kPropertyWithoutName);
    }
    return item;
}

void ViewDefinitionsHandler::ReadAttribute(const Attribute& attribute, bool namesWidget, ViewItem& item) const {
    struct ReferenceRow {
        std::u16string_view mName;
        UTF8String ViewItem::*mText;
        UTF16String EntryDefinition::*mOfDefinition;
    };
    static constexpr auto kTexts = std::to_array<std::pair<std::u16string_view, UTF8String ViewItem::*>>(
        {{u"label", &ViewItem::mLabel}, {u"description", &ViewItem::mDescription}});
    static const auto kReferences = std::to_array<ReferenceRow>(
        {{u"labelRef", &ViewItem::mLabel, &EntryDefinition::mLabelZString},
         {u"descriptionRef", &ViewItem::mDescription, &EntryDefinition::mDescriptionZString}});

    if (attribute.mName == u"name") {
        PropertyReferences::Reference reference = mReferences.Resolve(attribute.mValue);
        item.mPath = std::move(reference.mPath);
        item.mQualifiedName = std::move(reference.mName);
        return;
    }
    if (attribute.mName == u"widget" && !namesWidget) {
        item.mWidgetName = UTF16to8(attribute.mValue);
        return;
    }
    for (const auto& [name, text] : kTexts) {
        if (attribute.mName == name) {
            item.*text = UTF16to8(attribute.mValue);
            return;
        }
    }
    for (const ReferenceRow& row : kReferences) {
        if (attribute.mName == row.mName) {
            const sp<EntryDefinition> entry = PathEntryDefinition(mReferences.Resolve(attribute.mValue).mPath);
            if (entry && !((*entry).*row.mOfDefinition).empty()) {
                item.*row.mText = UTF16to8((*entry).*row.mOfDefinition);
            }
            return;
        }
    }
    const UTF8String key = UTF16to8(attribute.mName);
    item.mParameters[key] = UTF16to8(attribute.mValue);
    if (key.ends_with("_path")) {
        SetPathParameters(key, attribute.mValue, item);
    }
}

void ViewDefinitionsHandler::SetPathParameters(const UTF8String& key, const UTF16String& value, ViewItem& item) const {
    const Path path = mReferences.Resolve(value).mPath;
    const UTF8String& expression = path.mPathDescription;
    if (path.mNamespace.empty() || expression.empty()) {
        return;
    }
    const std::size_t slash = expression.find('/');
    item.mParameters[key + "_uri"] = path.mNamespace;
    item.mParameters[key + "_name"] = expression.substr(0, slash);
    if (slash != UTF8String::npos) {
        item.mParameters[key + "_field"] = expression.substr(expression.find(':') + 1);
    }
}

namespace {

template <typename Parse>
std::vector<sp<ViewDefinition>> RunParser(const UTF16String& sourceName, const Parse& parse) {
    const EntryIndexScope indexed;
    const RecordLimit limit;
    std::vector<sp<ViewDefinition>> results;
    const auto parser = zephcore::GetParser(std::make_unique<ViewDefinitionsHandler>(results, sourceName));
    if (parse(*parser) != 0) {
        const zephcore::DocumentLineScope line(parser->ErrorLine());
        PropertyReferences(sourceName).Report(kInvalidXML);
    }
    return results;
}

}  // namespace

std::vector<sp<ViewDefinition>> ParseViewDefinitionsFromBuffer(const UTF8String& buffer,
                                                               const UTF16String& sourceName) {
    return RunParser(sourceName, [&](zephcore::AbstractDocParser& parser) { return parser.ParseBuffer(buffer); });
}

std::vector<sp<ViewDefinition>> ReplayViewDefinitions(std::string_view events, const UTF16String& sourceName) {
    const EntryIndexScope indexed;
    const RecordLimit limit;
    std::vector<sp<ViewDefinition>> results;
    ViewDefinitionsHandler handler(results, sourceName);
    zephcore::ReplayDocument(events, handler);
    return results;
}

std::vector<sp<ViewDefinition>> ParseViewDefinitionsFromDocument(const UTF16String& path) {
    return RunParser(path, [&](zephcore::AbstractDocParser& parser) { return parser.ParseFile(path); });
}

}  // namespace zephmetadata
