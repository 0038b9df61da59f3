#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "commands.h"
#include "console.h"
#include "media_file.h"
#include "panel_output.h"
#include "thumbnail.h"
#include "zephcore/environment.h"
#include "zephcore/text.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// What every built-in view's name begins with; people leave it out.
constexpr std::string_view kOwnViews = "com.corvid.xmp.view.";

sp<ViewDefinition> FindView(const std::string& name) {
    const sp<ViewDefinition> view = GetViewDefinitionForName(name);
    return view ? view : GetViewDefinitionForName(std::string(kOwnViews) + name);
}

std::vector<sp<ViewDefinition>> AllViews() {
    std::vector<sp<ViewDefinition>> views;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        views.push_back(view);
    }
    return views;
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

void Print(const PanelRequest& request, const std::vector<MediaFile>& files, const std::vector<Panel>& panels) {
    std::vector<std::string> names;
    std::transform(files.begin(), files.end(), std::back_inserter(names),
                   [](const MediaFile& file) { return file.Name(); });
    if (request.mFormat == "html") {
        const MetaDataReadAccess access(files.front().Provider());
        const std::string picture = files.size() == 1 ? Thumbnail(names.front(), *access) : std::string();
        PrintPage({PageTitle(names), PageLanguage(), picture}, panels, std::cout);
        return;
    }
    const TextStyle style = TerminalStyle();
    for (const Panel& panel : panels) {
        if (request.mFormat == "json") {
            std::cout << JsonLine(ToJson(panel, names)) << '\n';
        } else {
            PrintText(panel, style, std::cout);
            std::cout << (&panel == &panels.back() ? "" : "\n");
        }
    }
}

}  // namespace

int ShowPanel(const PanelRequest& request) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    std::vector<sp<ViewDefinition>> views = AllViews();
    if (!request.mAll) {
        views = {FindView(request.mView)};
        if (!views.front()) {
            problems.Report({}, "no view is named \"" + request.mView + "\"; \"zephmeta views\" lists them");
            return problems.ExitStatus();
        }
    }
    const std::vector<MediaFile> files = OpenAll(request.mFiles, problems);
    if (files.empty()) {
        return problems.ExitStatus();
    }
    const sp<MetaDataProvider> provider = AsOne(files);
    std::vector<Panel> panels;
    panels.reserve(views.size());
    const Detail detail = request.mFormat == "json"   ? Detail::kAll
                          : request.mFormat == "html" ? Detail::kDescriptions
                                                      : Detail::kValues;
    for (const auto& view : views) {
        panels.push_back(BuildPanel(view, provider, detail));
    }
    problems.ReportCollected(files.size() == 1 ? files.front().Name() : std::string());
    Print(request, files, panels);
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
    std::vector<sp<ViewDefinition>> views = AllViews();
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
