#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "commands/commands.h"
#include "console.h"
#include "media_file.h"

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

}  // namespace

int ShowPanel(const PanelRequest& request) {
    Problems problems;
    LoadAllViewDefinitions();
    problems.ReportCollected({});
    if (!request.mWish.mAll && !HasView(request.mWish.mView)) {
        problems.Report({}, "no view is named \"" + request.mWish.mView + "\"; \"zephmeta views\" lists them");
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
