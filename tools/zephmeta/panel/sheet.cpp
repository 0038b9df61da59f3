#include "panel/sheet.h"

#include <algorithm>
#include <iterator>
#include <ostream>

#include "panel/overview.h"
#include "panel/thumbnail.h"
#include "providers.h"
#include "zephcore/environment.h"
#include "zephcore/text.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

std::string PageLanguage() {
    std::string language = zephcore::UTF16to8(zephcore::Locale::ApplicationLangauge());
    std::replace(language.begin(), language.end(), '_', '-');
    return language;
}

std::vector<std::string> NamesOf(const std::vector<SheetSubject>& subjects) {
    std::vector<std::string> names;
    std::transform(subjects.begin(), subjects.end(), std::back_inserter(names),
                   [](const SheetSubject& subject) { return subject.mName; });
    return names;
}

/// The names alone: the page is passed on, and the folders are nobody else's business.
std::string TitleOf(const std::vector<SheetSubject>& subjects) {
    std::string title;
    for (const SheetSubject& subject : subjects) {
        title += (title.empty() ? "" : ", ") + subject.mName.substr(subject.mName.rfind('/') + 1);
    }
    return title;
}

void PrintAsPage(const Sheet& sheet, std::ostream& out) {
    PageHead head = {TitleOf(sheet.mSubjects), PageLanguage(), {}, 1};
    if (sheet.mWish.mSideBySide) {
        PrintComparison(head, NamesOf(sheet.mSubjects), sheet.mPanels, out);
        return;
    }
    const SheetSubject& subject = sheet.mSubjects.front();
    const MetaDataReadAccess access(subject.mProvider);
    std::string orientation;
    if (sheet.mSubjects.size() == 1) {
        head.mPicture = Thumbnail(subject.mName, *access);
        GetRawStringValue(*access, PathForExpression("tiff:Orientation"), orientation);
        head.mOrientation = orientation.size() == 1 ? orientation.front() - '0' : 1;
    }
    PrintPage(head, sheet.mPanels, out);
}

void PrintAsText(const Sheet& sheet, const TextStyle& style, std::ostream& out) {
    std::string silent;
    bool isFirst = true;
    for (Panel panel : sheet.mPanels) {
        panel.mLabel = panel.mName == kOverview ? TitleOf(sheet.mSubjects) : panel.mLabel;
        if (sheet.mPanels.size() > 1 && !panel.HasValue()) {
            silent += (silent.empty() ? "" : ", ") + panel.mLabel;
            continue;
        }
        out << (isFirst ? "" : "\n");
        PrintText(panel, style, out);
        isFirst = false;
    }
    if (!silent.empty()) {
        PrintLine(Localized(kNothing) + ": " + silent, style, out);
    }
}

std::vector<sp<ViewDefinition>> WantedViews(const SheetWish& wish, const std::string& name,
                                            const sp<MetaDataProvider>& provider) {
    const MetaDataReadAccess access(provider);
    const MediaKind kind = MediaKindOf(name, *access);
    if (wish.mAll) {
        return ViewsByUse(kind);
    }
    return {wish.mView == kOverview ? MakeOverview(kind, *access) : FindView(wish.mView)};
}

std::vector<Panel> BuildPanels(const SheetWish& wish, const std::string& name, const sp<MetaDataProvider>& provider) {
    const Detail detail = wish.mForm == SheetForm::kJson   ? Detail::kAll
                          : wish.mForm == SheetForm::kPage ? Detail::kDescriptions
                                                           : Detail::kValues;
    std::vector<Panel> panels;
    for (const auto& view : WantedViews(wish, name, provider)) {
        panels.push_back(BuildPanel(view, provider, detail));
        if (view->mName == kOverview && detail != Detail::kAll) {
            ShortenOverview(panels.back(), wish.mSideBySide && wish.mForm == SheetForm::kPage);
        }
    }
    return panels;
}

}  // namespace

sp<ViewDefinition> FindView(const std::string& name) {
    const sp<ViewDefinition> view = GetViewDefinitionForName(name);
    return view ? view : GetViewDefinitionForName(std::string(kOwnViews) + name);
}

std::vector<std::string> ViewNames() {
    std::vector<std::string> names = {kOverview};
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        names.push_back(view->mName.substr(view->mName.starts_with(kOwnViews) ? kOwnViews.size() : 0));
    }
    return names;
}

bool HasView(const std::string& name) {
    return name == kOverview || FindView(name) != nullptr;
}

Sheet MakeSheet(const SheetWish& wish, std::vector<SheetSubject> subjects) {
    Sheet sheet = {wish, std::move(subjects), {}};
    sheet.mWish.mSideBySide = wish.mSideBySide && wish.mForm == SheetForm::kPage && !wish.mAll;
    if (sheet.mWish.mSideBySide) {
        for (const SheetSubject& subject : sheet.mSubjects) {
            sheet.mPanels.push_back(BuildPanels(wish, subject.mName, subject.mProvider).front());
        }
        return sheet;
    }
    std::vector<sp<MetaDataProvider>> providers;
    std::transform(sheet.mSubjects.begin(), sheet.mSubjects.end(), std::back_inserter(providers),
                   [](const SheetSubject& subject) { return subject.mProvider; });
    sheet.mPanels = BuildPanels(wish, sheet.mSubjects.front().mName, Together(providers));
    return sheet;
}

void PrintSheet(const Sheet& sheet, const TextStyle& style, std::ostream& out) {
    if (sheet.mWish.mForm == SheetForm::kText) {
        PrintAsText(sheet, style, out);
    } else if (sheet.mWish.mForm == SheetForm::kPage) {
        PrintAsPage(sheet, out);
    } else {
        for (const Panel& panel : sheet.mPanels) {
            out << JsonLine(ToJson(panel, NamesOf(sheet.mSubjects))) << '\n';
        }
    }
}

}  // namespace zephmeta
