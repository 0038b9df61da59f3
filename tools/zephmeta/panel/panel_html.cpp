#include <algorithm>
#include <array>
#include <cstdint>
#include <ostream>
#include <string_view>

#include "panel/overview.h"
#include "panel/panel_output.h"
#include "panel/panel_page_style.h"
#include "text.h"

namespace zephmeta {

namespace {

using Kind = PanelItem::Kind;
using State = PanelItem::State;

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            group = group << 8U | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            const bool isThere = at + i <= bytes.size();
            text += isThere ? kDigits[group >> (18U - 6U * i) & 0x3FU] : '=';
        }
    }
    return text;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

/// Only what a browser opens as a page: a link in a stranger's file may be anything.
bool IsWebAddress(const std::string& text) {
    const bool isWeb = text.starts_with("https://") || text.starts_with("http://");
    return isWeb && text.find_first_of(" \t\r\n\"<>") == std::string::npos;
}

class PageWriter {
public:
    explicit PageWriter(std::ostream& out) : mOut(out) {}

    void Article(const std::string& label, const std::string& description, const std::vector<PanelItem>& items) {
        const std::string id = NextId();
        mOut << "<article aria-labelledby=\"" << id << "\">\n<h2 id=\"" << id << "\">" << EscapedForHtml(label)
             << "</h2>\n";
        if (std::none_of(items.begin(), items.end(), [](const PanelItem& item) { return item.HasValue(); })) {
            Paragraph("empty", Localized(kNothing));
        } else {
            if (!description.empty()) {
                Paragraph("about", description);
            }
            Items(items);
        }
        mOut << "</article>\n";
    }

    /// An article for each section; the facts stand in the header already.
    void Overview(const Panel& panel) {
        for (const PanelItem& section : panel.mItems) {
            if (section.mKind == Kind::kSection && !section.mLabel.empty()) {
                Article(section.mLabel, section.mDescription, section.mItems);
            } else if (section.mKind == Kind::kNote) {
                Paragraph("note", section.mValue);
            }
        }
        if (!panel.mUnrecorded.empty()) {
            Paragraph("empty", Localized(kUnrecorded) + ": " + Joined(panel.mUnrecorded));
        }
    }

    void Paragraph(const char* style, const std::string& text) {
        mOut << "<p class=\"" << style << "\">" << EscapedForHtml(text) << "</p>\n";
    }

    /// What has a value, then the rest behind a line to open.
    void Items(const std::vector<PanelItem>& items) {
        std::vector<PanelItem> shown = items;
        Prune(shown, false);
        List(shown);
        std::vector<PanelItem> empty;
        CollectEmpty(items, empty);
        if (!empty.empty()) {
            mOut << "<details><summary>" << EscapedForHtml(Localized(kUnrecorded)) << " (" << empty.size()
                 << ")</summary>\n";
            List(empty);
            mOut << "</details>\n";
        }
    }

private:
    std::string NextId() { return "i" + std::to_string(++mIds); }

    static bool IsRow(const PanelItem& item) { return item.mKind == Kind::kProperty || item.mKind == Kind::kFormatter; }

    /// The rows without a value, with those of sections that have none.
    static void CollectEmpty(const std::vector<PanelItem>& items, std::vector<PanelItem>& empty) {
        for (const PanelItem& item : items) {
            if (item.HasValue()) {
                continue;
            }
            if (item.mKind == Kind::kSection) {
                CollectEmpty(item.mItems, empty);
            } else if (IsRow(item)) {
                empty.push_back(item);
            }
        }
    }

    /// Values that follow each other make one list; anything else stands between lists.
    void List(const std::vector<PanelItem>& items) {
        bool isOpen = false;
        for (const PanelItem& item : items) {
            if (IsRow(item) != isOpen) {
                mOut << (isOpen ? "</dl>\n" : "<dl>\n");
                isOpen = !isOpen;
            }
            Item(item);
        }
        mOut << (isOpen ? "</dl>\n" : "");
    }

    void Item(const PanelItem& item) {
        switch (item.mKind) {
            case Kind::kSection:
                Section(item);
                break;
            case Kind::kSeparator:
                mOut << "<hr>\n";
                break;
            case Kind::kNote:
                Paragraph("note", item.mValue);
                break;
            default:
                Value(item);
        }
    }

    void Section(const PanelItem& section) {
        const std::string id = NextId();
        if (section.mLabel.empty()) {
            mOut << "<section class=\"bare\">\n";
        } else {
            mOut << "<section aria-labelledby=\"" << id << "\">\n<h3 id=\"" << id << "\">"
                 << EscapedForHtml(section.mLabel) << "</h3>\n";
        }
        Items(section.mItems);
        mOut << "</section>\n";
    }

    void Value(const PanelItem& item) {
        const std::string id = NextId();
        mOut << "<dt id=\"" << id << "\""
             << (item.mDescription.empty() ? "" : " title=\"" + EscapedForHtml(item.mDescription) + "\"") << ">"
             << EscapedForHtml(item.mLabel) << "</dt>";
        const bool hasParts = item.mKind == Kind::kProperty && !item.mItems.empty();
        const bool isKnown = item.mState != State::kNone && !item.mValue.empty();
        const char* const style = item.mState == State::kMixed ? " class=\"mixed\""
                                  : isKnown || hasParts        ? ""
                                                               : " class=\"none\"";
        mOut << "<dd aria-labelledby=\"" << id << "\"" << style << ">";
        if (isKnown || !hasParts) {
            mOut << Shown(item);
            Languages(item);
        }
        if (hasParts) {
            Items(item.mItems);
        }
        mOut << "</dd>\n";
    }

    void Languages(const PanelItem& item) {
        if (item.mLanguages.empty()) {
            return;
        }
        mOut << "<details><summary>"
             << EscapedForHtml(Localized("$$$/metadataui/value/languages_label=In other languages")) << " ("
             << item.mLanguages.size() << ")</summary>";
        for (const auto& [language, text] : item.mLanguages) {
            mOut << "<p lang=\"" << EscapedForHtml(language) << "\">" << EscapedForHtml(OneLine(language)) << ": "
                 << EscapedForHtml(text) << "</p>";
        }
        mOut << "</details>";
    }

    std::string Shown(const PanelItem& item) {
        std::string shown = ShownAsHtml(item);
        if (item.mMap.empty() || mHasMap) {
            return shown;
        }
        mHasMap = true;
        return shown + " <a rel=\"noreferrer noopener\" href=\"" + EscapedForHtml(item.mMap) + "\">" +
               EscapedForHtml(Localized("$$$/metadataui/value/map_label=Map")) + "</a>";
    }

    std::ostream& mOut;
    int mIds = 0;
    bool mHasMap = false;
};

}  // namespace

std::string EscapedForHtml(std::string_view text) {
    std::string escaped;
    for (const char c : Printable(text)) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

std::string ShownAsHtml(const PanelItem& item) {
    if (item.mState == State::kMixed) {
        return EscapedForHtml(Localized(kMixed));
    }
    if (item.mState == State::kNone || item.mValue.empty()) {
        return "\u2013";
    }
    if (item.mPath == "xmp:Rating" && item.mRaw.size() == 1 && item.mRaw >= "1" && item.mRaw <= "5") {
        std::string stars = "<span aria-hidden=\"true\">";
        for (char star = '1'; star <= '5'; ++star) {
            stars += star <= item.mRaw.front() ? "\u2605" : "\u2606";
        }
        return stars + "</span> " + item.mRaw;
    }
    if (item.mTexts.size() > 1) {
        std::string list = "<ul>";
        for (const std::string& text : item.mTexts) {
            list += "<li>" + EscapedForHtml(OneLine(text)) + "</li>";
        }
        return list + "</ul>";
    }
    const std::string text = EscapedForHtml(item.mTexts.empty() ? item.mValue : item.mTexts.front());
    if (IsWebAddress(item.mValue)) {
        return "<a rel=\"noreferrer noopener\" href=\"" + text + "\">" + text + "</a>";
    }
    return item.mValue.find('\n') == std::string::npos ? text : "<p>" + text + "</p>";
}

void BeginPage(const PageHead& head, std::ostream& out) {
    const std::string title = EscapedForHtml(OneLine(head.mTitle));
    out << "<!DOCTYPE html>\n<html lang=\"" << EscapedForHtml(head.mLanguage)
        << "\">\n<head>\n<meta charset=\"utf-8\">\n"
        << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" << title
        << "</title>\n<style>" << kPageStyle << "</style>\n</head>\n<body>\n<header>\n";
    if (!head.mPicture.empty()) {
        out << "<figure><img class=\"o" << head.mOrientation << "\" alt=\"\" src=\"data:image/jpeg;base64,"
            << Base64(head.mPicture) << "\"></figure>\n";
    }
    out << "<div><h1>" << title << "</h1>\n";
}

void PrintPage(const PageHead& head, const std::vector<Panel>& panels, std::ostream& out) {
    PageWriter page(out);
    BeginPage(head, out);
    for (const Panel& panel : panels) {
        if (panel.mName == kOverview && !panel.mItems.empty() && panel.mItems.front().mLabel.empty()) {
            page.Items(panel.mItems.front().mItems);
        }
    }
    out << "</div></header>\n<main>\n";
    std::vector<std::string> silent;
    for (const Panel& panel : panels) {
        if (panel.mName == kOverview && panel.HasValue()) {
            page.Overview(panel);
        } else if (panels.size() > 1 && !panel.HasValue()) {
            silent.push_back(panel.mLabel);
        } else {
            page.Article(panel.mLabel, panel.mDescription, panel.mItems);
        }
    }
    if (!silent.empty()) {
        page.Paragraph("empty", Localized(kNothing) + ": " + Joined(silent));
    }
    out << "</main>\n</body>\n</html>\n";
}

}  // namespace zephmeta
