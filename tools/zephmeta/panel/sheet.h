#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "panel/panel_model.h"
#include "panel/panel_output.h"
#include "zephmetadata/providers.h"
#include "zephmetadata/views.h"

/// Panels of files from a wish to the finished text. The views are loaded (LoadAllViewDefinitions) before.
namespace zephmeta {

enum class SheetForm { kText, kPage, kJson };

struct SheetWish {
    std::string mView = "overview";  ///< that, the name of a view, or the end of one of the library's own
    bool mAll = false;               ///< every view instead, those that matter most to such a file first
    bool mSideBySide = false;        ///< of a page of one view: a column for each file
    SheetForm mForm = SheetForm::kText;
};

/// A file, or what else has metadata.
struct SheetSubject {
    std::string mName;  ///< a path; the picture of a page is read from there
    zephmetadata::sp<zephmetadata::MetaDataProvider> mProvider;
};

struct Sheet {
    SheetWish mWish;
    std::vector<SheetSubject> mSubjects;
    std::vector<Panel> mPanels;
};

/// The registered view of that name, or of the library's own with that end; null when there is none.
zephmetadata::sp<zephmetadata::ViewDefinition> FindView(const std::string& name);
/// What FindView takes, the shorter names of the library's own; the overview comes first.
std::vector<std::string> ViewNames();
/// Whether there is such a view, the overview among them.
bool HasView(const std::string& name);

/// Reads the values. Several subjects are one, those they do not share are "different values", unless they stand side by
/// side. There is at least one subject, and the wish names a view that there is.
Sheet MakeSheet(const SheetWish& wish, std::vector<SheetSubject> subjects);
/// @p style matters to text alone. JSON has a line for each view.
void PrintSheet(const Sheet& sheet, const TextStyle& style, std::ostream& out);

}  // namespace zephmeta
