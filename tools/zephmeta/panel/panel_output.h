#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "json.h"
#include "panel/panel_model.h"

/// The three forms of a panel. What they print of a file is harmless to terminals and browsers.
namespace zephmeta {

/// What people read in place of a value.
inline constexpr const char* kMixed = "$$$/metadataui/value/mixed_label=different values";
inline constexpr const char* kNothing = "$$$/metadataui/value/none_label=nothing recorded";
inline constexpr const char* kUnrecorded = "$$$/metadataui/value/unrecorded_label=Not recorded";

struct TextStyle {
    std::size_t mColumns = 80;
    bool mColour = false;
};
void PrintText(const Panel& panel, const TextStyle& style, std::ostream& out);
/// A line of less weight, after a blank one; wrapped where it is long.
void PrintLine(const std::string& line, const TextStyle& style, std::ostream& out);

Json ToJson(const Panel& panel, const std::vector<std::string>& files);
/// The items of a view, without what depends on a file.
Json DescriptionJson(const Panel& panel);

struct PageHead {
    std::string mTitle;     ///< the file's name
    std::string mLanguage;  ///< an RFC 5646 tag
    std::string mPicture;   ///< a JPEG file, or nothing
    int mOrientation = 1;   ///< of the picture, as Exif counts (CIPA DC-008, tag 274)
};
std::string EscapedForHtml(std::string_view text);
/// A page up to its title, within the header's last part.
void BeginPage(const PageHead& head, std::ostream& out);
/// The value of one item: keywords as a list, a rating in stars, an address as a link.
std::string ShownAsHtml(const PanelItem& item);
/// One page that needs nothing but itself.
void PrintPage(const PageHead& head, const std::vector<Panel>& panels, std::ostream& out);
/// The same with a column for each of several files, which have a panel of one view each.
void PrintComparison(const PageHead& head, const std::vector<std::string>& names, const std::vector<Panel>& panels,
                     std::ostream& out);

}  // namespace zephmeta
