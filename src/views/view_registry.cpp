#include "views/view_registry.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "frame/errors.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kDuplicate =
    u"$$$/zephmetadata/ViewDefinitions/DuplicateViewDefinition=View definition for #{quot}@0#{quot} already exists.";

struct Views {
    std::vector<sp<ViewDefinition>> mInOrder;
    std::map<UTF8String, sp<ViewDefinition>> mByName;
};

Views& Registered() {
    static Views views;
    return views;
}

/// Whether a built-in document is a view; its name tells, whatever its letter case.
bool IsViewDocument(std::string_view name) {
    constexpr std::string_view kEnding = "_VIEW";
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
    return name.size() >= kEnding.size() && std::equal(kEnding.rbegin(), kEnding.rend(), name.rbegin(),
                                                       [&](char ending, char c) { return ending == upper(c); });
}

}  // namespace

bool AddViewDefinition(sp<ViewDefinition> view, const UTF16String& source) {
    if (!view) {
        return false;
    }
    if (!Registered().mByName.emplace(view->mName, view).second) {
        SendError(ErrorKind::ViewDefinitionRegistrationError,
                  zephcore::ZString(kDuplicate, {zephcore::UTF8to16(view->mName)}), source);
        return false;
    }
    Registered().mInOrder.push_back(std::move(view));
    return true;
}

void ClearViewDefinitions() {
    Registered() = {};
}

void LoadBuiltInViews() {
    using zephcore::Module;
    for (const UTF8String& name : zephcore::GetResourceNames(Module::kOwn, "xml")) {
        std::string_view document;
        if (!IsViewDocument(name) || !zephcore::GetBinaryFromModule(Module::kOwn, name, "xml", document)) {
            continue;
        }
        const UTF16String source = zephcore::UTF8to16(name);
        for (sp<ViewDefinition>& view : ParseViewDefinitionsFromBuffer(UTF8String(document), source)) {
            AddViewDefinition(std::move(view), source);
        }
    }
}

sp<ViewDefinition> GetViewDefinitionForName(const UTF8String& name) {
    const auto found = Registered().mByName.find(name);
    return found == Registered().mByName.end() ? nullptr : found->second;
}

PolyRange<sp<ViewDefinition>> CommonViewDefinitions() {
    return Registered().mInOrder;
}

void BuildView(const sp<ViewDefinition>& view, ViewBuilderInterface& builder) {
    if (!view) {
        return;
    }
    builder.BeginView(
        {view->mName, view->mLabel, view->mDescription, view->mItems.size(), view->mPruneEmptyProperties});
    for (const sp<ViewItem>& item : view->mItems) {
        builder.AddViewItem(item);
    }
    builder.EndView(*view);
}

}  // namespace zephmetadata
