#include <array>
#include <cstdint>
#include <ostream>
#include <string_view>

#include "console.h"
#include "panel_output.h"

namespace zephmeta {

namespace {

using Kind = PanelItem::Kind;
using State = PanelItem::State;

constexpr std::string_view kStyle = R"css(
:root { color-scheme: light dark; --ink: #1c1d20; --soft: #5d6169; --rule: #dcdee3; --paper: #f5f6f8; --card: #fff; --mark: #1d5fa8; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e8e9ec; --soft: #a3a7b0; --rule: #3a3d44; --paper: #17181b; --card: #212327; --mark: #8ab8ec; }
}
* { box-sizing: border-box; }
body { margin: 0; padding: 1.5rem 1rem 3rem; background: var(--paper); color: var(--ink);
  font: 1rem/1.45 system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
main, header { max-width: 52rem; margin: 0 auto; }
header { display: flex; gap: 1.25rem; align-items: center; margin-bottom: 1.5rem; }
header img { max-width: 10rem; max-height: 10rem; border-radius: .4rem; border: 1px solid var(--rule); }
h1 { font-size: 1.35rem; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 1.1rem; margin: 0; }
h3 { font-size: .95rem; margin: 1.1rem 0 .3rem; color: var(--mark); }
article { background: var(--card); border: 1px solid var(--rule); border-radius: .6rem; padding: 1rem 1.25rem; margin-bottom: 1rem; }
.about, .empty, .note { color: var(--soft); margin: .15rem 0 .5rem; font-size: .9rem; }
dl { display: grid; grid-template-columns: minmax(9rem, 30%) 1fr; margin: 0; }
dt, dd { padding: .35rem 0; border-top: 1px solid var(--rule); margin: 0; }
dl > :first-child, dl > :first-child + dd { border-top: 0; }
dt { color: var(--soft); padding-right: 1rem; }
dd { overflow-wrap: anywhere; white-space: pre-line; }
dd.none { color: var(--soft); }
dd.mixed { font-style: italic; color: var(--soft); }
dd dl { border-left: 2px solid var(--rule); padding-left: .75rem; white-space: normal; }
hr { border: 0; border-top: 1px solid var(--rule); margin: .8rem 0; }
a { color: var(--mark); }
@media (max-width: 34rem) {
  dl { grid-template-columns: 1fr; }
  dt { padding-bottom: 0; font-size: .85rem; }
  dd, dl > :first-child + dd { border-top: 0; padding-top: 0; }
  header { flex-direction: column; align-items: flex-start; }
}
@media print {
  :root { --ink: #000; --soft: #444; --rule: #bbb; --paper: #fff; --card: #fff; --mark: #000; }
  body { padding: 0; font-size: 10pt; }
  article { border: 0; padding: 0; }
  dt, dd { break-inside: avoid; }
  a { text-decoration: none; }
}
)css";

std::string Escaped(std::string_view text) {
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

/// Only what a browser opens as a page: a link in a stranger's file may be anything.
bool IsWebAddress(const std::string& text) {
    const bool isWeb = text.starts_with("https://") || text.starts_with("http://");
    return isWeb && text.find_first_of(" \t\r\n\"<>") == std::string::npos;
}

class PageWriter {
public:
    explicit PageWriter(std::ostream& out) : mOut(out) {}

    void Article(const Panel& panel) {
        const std::string id = NextId();
        mOut << "<article aria-labelledby=\"" << id << "\">\n<h2 id=\"" << id << "\">" << Escaped(panel.mLabel)
             << "</h2>\n";
        if (!panel.HasValue()) {
            mOut << "<p class=\"empty\">" << Escaped(Localized(kNothing)) << "</p>\n";
        } else {
            if (!panel.mDescription.empty()) {
                mOut << "<p class=\"about\">" << Escaped(panel.mDescription) << "</p>\n";
            }
            Items(panel.mItems);
        }
        mOut << "</article>\n";
    }

private:
    std::string NextId() { return "i" + std::to_string(++mIds); }

    /// Values that follow each other make one list; anything else stands between lists.
    void Items(const std::vector<PanelItem>& items) {
        bool isOpen = false;
        for (const PanelItem& item : items) {
            const bool isValue = item.mKind == Kind::kProperty || item.mKind == Kind::kFormatter;
            if (isValue != isOpen) {
                mOut << (isValue ? "<dl>\n" : "</dl>\n");
                isOpen = isValue;
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
                mOut << "<p class=\"note\">" << Escaped(item.mValue) << "</p>\n";
                break;
            default:
                Value(item);
        }
    }

    void Section(const PanelItem& section) {
        const std::string id = NextId();
        mOut << "<section" << (section.mLabel.empty() ? "" : " aria-labelledby=\"" + id + "\"") << ">\n";
        if (!section.mLabel.empty()) {
            mOut << "<h3 id=\"" << id << "\">" << Escaped(section.mLabel) << "</h3>\n";
        }
        if (section.HasValue()) {
            Items(section.mItems);
        } else {
            mOut << "<p class=\"empty\">" << Escaped(Localized(kNothing)) << "</p>\n";
        }
        mOut << "</section>\n";
    }

    void Value(const PanelItem& item) {
        const std::string id = NextId();
        mOut << "<dt id=\"" << id << "\""
             << (item.mDescription.empty() ? "" : " title=\"" + Escaped(item.mDescription) + "\"") << ">"
             << Escaped(item.mLabel) << "</dt>";
        if (item.mKind == Kind::kProperty && !item.mItems.empty()) {
            mOut << "<dd aria-labelledby=\"" << id << "\">\n";
            Items(item.mItems);
            mOut << "</dd>\n";
            return;
        }
        const char* const style = item.mState == State::kMixed ? " class=\"mixed\""
                                  : item.mValue.empty()        ? " class=\"none\""
                                                               : "";
        mOut << "<dd aria-labelledby=\"" << id << "\"" << style << ">" << Shown(item) << "</dd>\n";
    }

    static std::string Shown(const PanelItem& item) {
        if (item.mState == State::kMixed) {
            return Escaped(Localized(kMixed));
        }
        if (IsWebAddress(item.mValue)) {
            const std::string address = Escaped(item.mValue);
            return "<a rel=\"noreferrer noopener\" href=\"" + address + "\">" + address + "</a>";
        }
        return item.mValue.empty() ? "\u2013" : Escaped(item.mValue);
    }

    std::ostream& mOut;
    int mIds = 0;
};

}  // namespace

void PrintPage(const PageHead& head, const std::vector<Panel>& panels, std::ostream& out) {
    const std::string title = Escaped(OneLine(head.mTitle));
    out << "<!DOCTYPE html>\n<html lang=\"" << Escaped(head.mLanguage) << "\">\n<head>\n<meta charset=\"utf-8\">\n"
        << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" << title
        << "</title>\n<style>" << kStyle << "</style>\n</head>\n<body>\n<header>\n";
    if (!head.mPicture.empty()) {
        out << "<img alt=\"\" src=\"data:image/jpeg;base64," << Base64(head.mPicture) << "\">\n";
    }
    out << "<h1>" << title << "</h1>\n</header>\n<main>\n";
    PageWriter page(out);
    for (const Panel& panel : panels) {
        page.Article(panel);
    }
    out << "</main>\n</body>\n</html>\n";
}

}  // namespace zephmeta
