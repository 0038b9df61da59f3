#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "media_file.h"
#include "panel/overview.h"
#include "zephmetadata/suggestions.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

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

/// Views are called by their names or by what is behind the last dot of these.
std::string WhyNoView(const std::string& name) {
    std::vector<std::string> names = {kOverview};
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        names.push_back(view->mName.substr(view->mName.rfind('.') + 1));
    }
    const std::string near = NearestName(name, names);
    return "no view is named \"" + name + "\"; " +
           (near.empty() ? "\"zephmeta views\" lists them" : "did you mean " + near + "?");
}

}  // namespace

int ShowPanel(const PanelRequest& request) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    if (!request.mWish.mAll && !HasView(request.mWish.mView)) {
        problems.Report({}, WhyNoView(request.mWish.mView));
        return problems.ExitStatus();
    }
    std::vector<SheetSubject> subjects;
    for (const MediaFile& file : OpenAll(request.mFiles, problems)) {
        subjects.push_back({file.Name(), file.Provider()});
    }
    if (subjects.empty()) {
        return problems.ExitStatus();
    }
    const Sheet sheet = MakeSheet(request.mWish, std::move(subjects));
    problems.ReportCollected(sheet.mSubjects.size() == 1 ? sheet.mSubjects.front().mName : std::string());
    PrintSheet(sheet, TerminalStyle(), std::cout);
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

/// The view of that name, which may be null; without a name all: for people the overview too, for programs what is
/// registered.
std::vector<sp<ViewDefinition>> NamedViews(const std::string& name, bool json) {
    if (name == kOverview) {
        return {MakeOverview(MediaKind::kPicture, nullptr)};
    }
    if (!name.empty()) {
        return {FindView(name)};
    }
    std::vector<sp<ViewDefinition>> views;
    if (!json) {
        views.push_back(MakeOverview(MediaKind::kPicture, nullptr));
    }
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        views.push_back(view);
    }
    return views;
}

}  // namespace

int ShowViews(const std::string& name, bool json) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    const std::vector<sp<ViewDefinition>> views = NamedViews(name, json);
    if (!views.front()) {
        problems.Report({}, WhyNoView(name));
        return problems.ExitStatus();
    }
    std::size_t columns = 0;
    for (const auto& view : views) {
        columns = std::max(columns, Columns(OneLine(view->mName)));
    }
    Json list = Json::array();
    for (const auto& view : views) {
        const Panel panel = DescribeView(view);
        if (json) {
            list.push_back(DescriptionJson(panel));
        } else {
            std::cout << Padded(OneLine(panel.mName), columns) << "  " << OneLine(panel.mLabel) << '\n';
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
