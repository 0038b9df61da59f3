#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "media_file.h"
#include "panel/overview.h"
#include "panel/panel_output.h"
#include "panel/thumbnail.h"
#include "zephcore/environment.h"
#include "zephcore/text.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// What every built-in view's name begins with; people leave it out.
constexpr std::string_view kOwnViews = "com.corvid.xmp.view.";

sp<ViewDefinition> FindView(const std::string& name) {
    const sp<ViewDefinition> view = GetViewDefinitionForName(name);
    return view ? view : GetViewDefinitionForName(std::string(kOwnViews) + name);
}

TextStyle TerminalStyle() {
    TextStyle style;
    if (isatty(STDOUT_FILENO) == 0) {
        return style;
    }
    constexpr std::size_t kLeastColumns = 40;
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        style.mColumns = std::max<std::size_t>(size.ws_col, kLeastColumns);
    }
    style.mColour = std::getenv("NO_COLOR") == nullptr;
    return style;
}

std::string PageLanguage() {
    std::string language = zephcore::UTF16to8(zephcore::Locale::ApplicationLangauge());
    std::replace(language.begin(), language.end(), '_', '-');
    return language;
}

/// The names alone: the page is passed on, and the folders are nobody else's business.
std::string PageTitle(const std::vector<std::string>& files) {
    std::string title;
    for (const std::string& file : files) {
        title += (title.empty() ? "" : ", ") + file.substr(file.rfind('/') + 1);
    }
    return title;
}

std::vector<std::string> NamesOf(const std::vector<MediaFile>& files) {
    std::vector<std::string> names;
    std::transform(files.begin(), files.end(), std::back_inserter(names),
                   [](const MediaFile& file) { return file.Name(); });
    return names;
}

void PrintAsPage(const std::vector<MediaFile>& files, const std::vector<Panel>& panels) {
    const MetaDataReadAccess access(files.front().Provider());
    const std::vector<std::string> names = NamesOf(files);
    PageHead head = {PageTitle(names), PageLanguage(), {}, 1};
    std::string orientation;
    if (files.size() == 1) {
        head.mPicture = Thumbnail(names.front(), *access);
        GetRawStringValue(*access, PathForExpression("tiff:Orientation"), orientation);
        head.mOrientation = orientation.size() == 1 ? orientation.front() - '0' : 1;
    }
    PrintPage(head, panels, std::cout);
}

void PrintAsJson(const std::vector<MediaFile>& files, const std::vector<Panel>& panels) {
    for (const Panel& panel : panels) {
        std::cout << JsonLine(ToJson(panel, NamesOf(files))) << '\n';
    }
}

void PrintAsText(const std::vector<MediaFile>& files, std::vector<Panel> panels) {
    const TextStyle style = TerminalStyle();
    std::string silent;
    bool isFirst = true;
    for (Panel& panel : panels) {
        panel.mLabel = panel.mName == kOverview ? PageTitle(NamesOf(files)) : panel.mLabel;
        if (panels.size() > 1 && !panel.HasValue()) {
            silent += (silent.empty() ? "" : ", ") + panel.mLabel;
            continue;
        }
        std::cout << (isFirst ? "" : "\n");
        PrintText(panel, style, std::cout);
        isFirst = false;
    }
    if (!silent.empty()) {
        PrintLine(Localized(kNothing) + ": " + silent, style, std::cout);
    }
}

/// The views that are asked for; empty, and a problem, when there is none of the name.
std::vector<sp<ViewDefinition>> WantedViews(const PanelRequest& request, const std::vector<MediaFile>& files,
                                            const sp<MetaDataProvider>& provider) {
    const MetaDataReadAccess access(provider);
    const MediaKind kind = MediaKindOf(files.front().Name(), *access);
    if (request.mAll) {
        return ViewsByUse(kind);
    }
    return {request.mView == kOverview ? MakeOverview(kind, *access) : FindView(request.mView)};
}

std::vector<Panel> BuildPanels(const PanelRequest& request, const std::vector<MediaFile>& files,
                               const sp<MetaDataProvider>& provider) {
    const Detail detail = request.mFormat == "json"   ? Detail::kAll
                          : request.mFormat == "html" ? Detail::kDescriptions
                                                      : Detail::kValues;
    std::vector<Panel> panels;
    for (const auto& view : WantedViews(request, files, provider)) {
        panels.push_back(BuildPanel(view, provider, detail));
        if (view->mName == kOverview && detail != Detail::kAll) {
            ShortenOverview(panels.back());
        }
    }
    return panels;
}

void PrintSideBySide(const PanelRequest& request, const std::vector<MediaFile>& files) {
    std::vector<Panel> panels;
    panels.reserve(files.size());
    for (const MediaFile& file : files) {
        panels.push_back(BuildPanels(request, files, file.Provider()).front());
    }
    const std::vector<std::string> names = NamesOf(files);
    PrintComparison({PageTitle(names), PageLanguage(), {}, 1}, names, panels, std::cout);
}

}  // namespace

int ShowPanel(const PanelRequest& request) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    if (!request.mAll && request.mView != kOverview && !FindView(request.mView)) {
        problems.Report({}, "no view is named \"" + request.mView + "\"; \"zephmeta views\" lists them");
        return problems.ExitStatus();
    }
    const std::vector<MediaFile> files = OpenAll(request.mFiles, problems);
    if (files.empty()) {
        return problems.ExitStatus();
    }
    if (request.mSideBySide && request.mFormat == "html" && !request.mAll) {
        PrintSideBySide(request, files);
        problems.ReportCollected({});
        return problems.ExitStatus();
    }
    const std::vector<Panel> panels = BuildPanels(request, files, AsOne(files));
    problems.ReportCollected(files.size() == 1 ? files.front().Name() : std::string());
    if (request.mFormat == "html") {
        PrintAsPage(files, panels);
    } else if (request.mFormat == "json") {
        PrintAsJson(files, panels);
    } else {
        PrintAsText(files, panels);
    }
    return problems.ExitStatus();
}

namespace {

std::string ItemLine(const PanelItem& item) {
    if (item.mKind == PanelItem::Kind::kProperty) {
        return OneLine(item.mPath) + "  " + OneLine(item.mLabel);
    }
    return "[" + OneLine(item.mWidget) + "]" + (item.mLabel.empty() ? "" : "  " + OneLine(item.mLabel));
}

void PrintItems(const std::vector<PanelItem>& items, std::size_t indent) {
    for (const PanelItem& item : items) {
        std::cout << std::string(indent, ' ') << ItemLine(item) << '\n';
        PrintItems(item.mItems, indent + 2);
    }
}

}  // namespace

int ShowViews(const std::string& name, bool json) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    std::vector<sp<ViewDefinition>> views;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        views.push_back(view);
    }
    if (!name.empty()) {
        views = {FindView(name)};
        if (!views.front()) {
            problems.Report({}, "no view is named \"" + name + "\"; \"zephmeta views\" lists them");
            return problems.ExitStatus();
        }
    }
    Json list = Json::array();
    for (const auto& view : views) {
        const Panel panel = DescribeView(view);
        if (json) {
            list.push_back(DescriptionJson(panel));
        } else {
            constexpr std::size_t kNameColumns = 36;
            std::cout << Padded(OneLine(panel.mName), kNameColumns) << "  " << OneLine(panel.mLabel) << '\n';
            if (!name.empty()) {
                PrintItems(panel.mItems, 2);
            }
        }
    }
    if (json) {
        std::cout << JsonPage(list) << '\n';
    }
    return problems.ExitStatus();
}

}  // namespace zephmeta
