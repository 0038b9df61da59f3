#pragma once

#include <stack>
#include <string_view>
#include <vector>

#include "views/property_references.h"
#include "zephcore/xml.h"
#include "zephmetadata/views.h"

namespace zephmetadata {

/// Makes views of the events of one views document.
class ViewDefinitionsHandler : public zephcore::AbstractParseHandler {
public:
    /// The views that are whole are appended to @p results, which has to outlive the handler.
    ViewDefinitionsHandler(std::vector<sp<ViewDefinition>>& results, UTF16String sourceName);
    ~ViewDefinitionsHandler() override;

    void StartElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                   const UTF16String& localName, const zephcore::AttributeList& attributes) override;
    void EndElementWithNamespace(const UTF16String& name, const UTF16String& namespaceURI,
                                 const UTF16String& localName) override;
    void StartPrefixMapping(const UTF16String& prefix, const UTF16String& namespaceURI) override;
    void EndPrefixMapping(const UTF16String& prefix) override;

private:
    enum class State { kStart, kDone, kViews, kView, kSkippedView, kItem, kNestedItem, kParam, kChoice, kFailed };
    enum class Kind { kViews, kView, kItem, kChoice, kParam, kOther };
    struct Element;
    using Step = void (ViewDefinitionsHandler::*)(const Element&);
    struct Row {
        State mState;
        Kind mKind;
        Step mStep;
    };
    static const std::vector<Row>& StartRows();
    static const std::vector<Row>& EndRows();
    static Kind KindOf(std::u16string_view localName);
    void Take(const std::vector<Row>& rows, const Element& element);

    void BeginViews(const Element& element);
    void RefuseRoot(const Element& element);
    void BeginView(const Element& element);
    void BeginTopItem(const Element& element);
    void BeginNestedItem(const Element& element);
    void AddChoice(const Element& element);
    void AddParam(const Element& element);
    void EndViews(const Element& element);
    void EndView(const Element& element);
    void EndSkippedView(const Element& element);
    void EndTopItem(const Element& element);
    void EndNestedItem(const Element& element);
    void EndPart(const Element& element);

    sp<ViewItem> ReadItem(const Element& element) const;
    void ReadAttribute(const zephcore::Attribute& attribute, bool namesWidget, ViewItem& item) const;
    void SetPathParameters(const UTF8String& key, const UTF16String& value, ViewItem& item) const;
    State ItemState() const;

    std::vector<sp<ViewDefinition>>& mResults;
    State mState = State::kStart;
    std::stack<sp<ViewItem>> mParents;
    sp<ViewDefinition> mView;
    sp<ViewItem> mItem;
    PropertyReferences mReferences;
};

/// The views of a document of this library, from its events (zephcore::ReplayDocument); registered nowhere.
std::vector<sp<ViewDefinition>> ReplayViewDefinitions(std::string_view events, const UTF16String& sourceName);

}  // namespace zephmetadata
