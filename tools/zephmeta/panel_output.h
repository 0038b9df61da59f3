#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "json.h"
#include "panel_model.h"

/// The three forms of a panel. What they print of a file is harmless to terminals and browsers.
namespace zephmeta {

/// What people read in place of a value.
inline constexpr const char* kMixed = "$$$/metadataui/value/mixed_label=different values";
inline constexpr const char* kNothing = "$$$/metadataui/value/none_label=nothing recorded";

struct TextStyle {
    std::size_t mColumns = 80;
    bool mColour = false;
};
void PrintText(const Panel& panel, const TextStyle& style, std::ostream& out);

Json ToJson(const Panel& panel, const std::vector<std::string>& files);
/// The items of a view, without what depends on a file.
Json DescriptionJson(const Panel& panel);

struct PageHead {
    std::string mTitle;     ///< the file's name
    std::string mLanguage;  ///< an RFC 5646 tag
    std::string mPicture;   ///< a JPEG file, or nothing
};
/// One page that needs nothing but itself.
void PrintPage(const PageHead& head, const std::vector<Panel>& panels, std::ostream& out);

}  // namespace zephmeta
