#include "views/view_registry.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "frame/errors.h"
#include "frame/initialization.h"
#include "views/views_parser.h"
#include "zephcore/environment.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephcore/xml.h"

namespace zephmetadata {

namespace {

constexpr std::u16string_view kDuplicate =
    u"$$$/zephmetadata/ViewDefinitions/DuplicateViewDefinition=View definition for #{quot}@0#{quot} already exists.";

struct Views {
    std::vector<sp<ViewDefinition>> mInOrder;
    /// By the names under which they were registered: hosts share the views and may rename them.
    std::unordered_map<UTF8String, sp<ViewDefinition>> mByFirstName;
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
    sp<ViewDefinition>& named = Registered().mByFirstName[view->mName];
    if (named && named->mName == view->mName) {
        const zephcore::DocumentLineScope line(view->mLine);
        SendError(ErrorKind::ViewDefinitionRegistrationError,
                  zephcore::ZString(kDuplicate, {zephcore::UTF8to16(view->mName)}), source);
        return false;
    }
    named = view;
    Registered().mInOrder.push_back(std::move(view));
    return true;
}

bool RegisterViewDefinition(const sp<ViewDefinition>& view, const UTF16String& source) {
    return IsInitialized() && AddViewDefinition(view, source);
}

bool RemoveViewDefinition(const sp<ViewDefinition>& view) {
    const std::size_t before = Registered().mInOrder.size();
    RemoveViewDefinitions({view});
    return Registered().mInOrder.size() < before;
}

void RemoveViewDefinitions(const std::vector<sp<ViewDefinition>>& views) {
    const std::set<sp<ViewDefinition>> gone(views.begin(), views.end());
    std::erase_if(Registered().mInOrder, [&](const sp<ViewDefinition>& view) { return gone.contains(view); });
    std::erase_if(Registered().mByFirstName, [&](const auto& entry) { return gone.contains(entry.second); });
}

void ClearViewDefinitions() {
    Registered() = {};
}

void LoadBuiltInViews() {
    using zephcore::Module;
    for (const UTF8String& name : zephcore::GetResourceNames(Module::kOwn, "events")) {
        std::string_view document;
        if (!IsViewDocument(name) || !zephcore::GetBinaryFromModule(Module::kOwn, name, "events", document)) {
            continue;
        }
        const UTF16String source = zephcore::UTF8to16(name);
        for (sp<ViewDefinition>& view : ReplayViewDefinitions(document, source)) {
            AddViewDefinition(std::move(view), source);
        }
    }
}

sp<ViewDefinition> GetViewDefinitionForName(const UTF8String& name) {
    const auto& views = Registered().mInOrder;
    const auto found =
        std::find_if(views.begin(), views.end(), [&](const sp<ViewDefinition>& view) { return view->mName == name; });
    return found == views.end() ? nullptr : *found;
}

PolyRange<sp<ViewDefinition>> CommonViewDefinitions() {
    return Registered().mInOrder;
}

void BuildView(sp<ViewDefinition> view, ViewBuilderInterface& builder) {  // kept alive meanwhile
    if (!view) {
        return;
    }
    const std::vector<sp<ViewItem>> items = view->mItems;
    builder.BeginView({view->mName, view->mLabel, view->mDescription, items.size(), view->mPruneEmptyProperties});
    for (const sp<ViewItem>& item : items) {
        builder.AddViewItem(item);
    }
    builder.EndView(*view);
}

}  // namespace zephmetadata
