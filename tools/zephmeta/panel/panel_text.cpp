#include <algorithm>
#include <ostream>

#include "panel/overview.h"
#include "panel/panel_output.h"
#include "text.h"

namespace zephmeta {

namespace {

using Kind = PanelItem::Kind;
using State = PanelItem::State;

constexpr std::string_view kNoValue = "\u2013";
constexpr std::size_t kIndent = 2;
constexpr std::size_t kWidestLabel = 36;
constexpr std::size_t kLeastValue = 20;

/// @p text in lines of at most @p columns, broken at blanks where there are such, and at its own line ends.
std::vector<std::string> Wrapped(const std::string& text, std::size_t columns) {
    std::vector<std::string> lines(1);
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find_first_of(" \n", at), text.size());
        const std::string word = text.substr(at, end - at);
        const bool fits = Columns(lines.back()) + Columns(word) + (lines.back().empty() ? 0 : 1) <= columns;
        if (!fits && !lines.back().empty()) {
            lines.emplace_back();
        }
        lines.back() += (lines.back().empty() ? "" : " ") + word;
        if (end < text.size() && text[end] == '\n') {
            lines.emplace_back();
        }
        at = end + 1;
    }
    return lines;
}

class TextPanel {
public:
    TextPanel(const TextStyle& style, std::size_t labelColumns, std::ostream& out)
        : mStyle(style), mLabelColumns(labelColumns), mOut(out) {}

    void Heading(const std::string& label, std::size_t indent) {
        mOut << std::string(indent, ' ') << Styled("1", OneLine(label)) << '\n';
    }

    void Items(const std::vector<PanelItem>& items, std::size_t indent) {
        for (const PanelItem& item : items) {
            // Without a heading nothing else tells where a section begins.
            const bool isBare = item.mKind == Kind::kSection && item.mLabel.empty() && &item != &items.front();
            mOut << (isBare ? "\n" : "");
            Item(item, indent);
        }
    }

    /// The sections of a page of its own, a blank line between them.
    void Sections(const std::vector<PanelItem>& items) {
        for (const PanelItem& item : items) {
            const bool areFacts = &item == &items.front() && item.mLabel.empty();
            mOut << (areFacts ? "" : "\n");
            Item(item, 0);
        }
    }

    void Line(const std::string& text, std::size_t indent) {
        for (const std::string& line : Wrapped(Printable(text), mStyle.mColumns - indent)) {
            mOut << std::string(indent, ' ') << Styled("2", line) << '\n';
        }
    }

private:
    void Item(const PanelItem& item, std::size_t indent) {
        switch (item.mKind) {
            case Kind::kSection:
                Section(item, indent);
                break;
            case Kind::kSeparator:
                mOut << '\n';
                break;
            case Kind::kNote:
                Line(item.mValue, indent);
                break;
            default:
                Value(item, indent);
        }
    }

    /// A section without values takes one line.
    void Section(const PanelItem& section, std::size_t indent) {
        if (!section.HasValue()) {
            const std::string label = section.mLabel.empty() ? std::string() : OneLine(section.mLabel) + ": ";
            mOut << std::string(indent, ' ') << Styled("2", label + Localized(kNothing)) << '\n';
            return;
        }
        if (!section.mLabel.empty()) {
            Heading(section.mLabel, indent);
        }
        Items(section.mItems, indent + kIndent);
    }

    void Value(const PanelItem& item, std::size_t indent) {
        const bool isStructure = item.mKind == Kind::kProperty && !item.mItems.empty();
        const bool standsAlone = isStructure && !IsShown(item);
        const std::size_t columns = standsAlone ? 0 : mLabelColumns - std::min(indent, mLabelColumns);
        const std::string label = Padded(OneLine(item.mLabel), columns);
        mOut << std::string(indent, ' ') << Styled("2", label);
        const std::size_t taken = indent + Columns(label) + kIndent;
        if (standsAlone) {
            mOut << '\n';
            Items(item.mItems, indent + kIndent);
            return;
        }
        // A label that leaves too little room stands alone.
        const std::size_t start = taken + kLeastValue > mStyle.mColumns ? indent + 2 * kIndent : taken;
        mOut << (start == taken ? std::string(kIndent, ' ') : "\n" + std::string(start, ' '));
        bool isFirst = true;
        for (const std::string& line : Wrapped(Shown(item), mStyle.mColumns - std::min(start, mStyle.mColumns - 1))) {
            mOut << (isFirst ? std::string() : std::string(start, ' ')) << line << '\n';
            isFirst = false;
        }
        if (isStructure) {
            Items(item.mItems, indent + kIndent);
        }
    }

    static bool IsShown(const PanelItem& item) { return item.mState != State::kNone && !item.mValue.empty(); }

    std::string Shown(const PanelItem& item) const {
        if (item.mState == State::kMixed) {
            return Styled("3", "(" + Localized(kMixed) + ")");
        }
        return IsShown(item) ? Printable(item.mValue) : Styled("2", std::string(kNoValue));
    }

    std::string Styled(const char* code, const std::string& text) const {
        return mStyle.mColour ? std::string("\x1b[") + code + "m" + text + "\x1b[0m" : text;
    }

    TextStyle mStyle;
    std::size_t mLabelColumns;
    std::ostream& mOut;
};

/// How wide the labels are, with their indentation, where they are not unreasonably long.
std::size_t LabelColumns(const std::vector<PanelItem>& items, std::size_t indent) {
    std::size_t columns = 0;
    for (const PanelItem& item : items) {
        const bool isLabelled = item.mKind == Kind::kProperty || item.mKind == Kind::kFormatter;
        const std::size_t own = isLabelled ? indent + Columns(OneLine(item.mLabel)) : 0;
        columns = std::max(columns, own <= indent + kWidestLabel ? own : 0);
        if (item.mKind != Kind::kFormatter && item.HasValue()) {
            columns = std::max(columns, LabelColumns(item.mItems, indent + kIndent));
        }
    }
    return columns;
}

}  // namespace

void PrintText(const Panel& panel, const TextStyle& style, std::ostream& out) {
    const bool isOverview = panel.mName == kOverview;
    TextPanel text(style, LabelColumns(panel.mItems, isOverview ? 0 : kIndent), out);
    if (!panel.HasValue()) {
        text.Heading(panel.mLabel + ": " + Localized(kNothing), 0);
        return;
    }
    text.Heading(panel.mLabel, 0);
    if (!isOverview) {
        text.Items(panel.mItems, kIndent);
        return;
    }
    text.Sections(panel.mItems);
    if (panel.mUnrecorded.empty()) {
        return;
    }
    std::string labels;
    for (const std::string& label : panel.mUnrecorded) {
        labels += (labels.empty() ? "" : ", ") + label;
    }
    PrintLine(Localized(kUnrecorded) + ": " + labels, style, out);
}

void PrintLine(const std::string& line, const TextStyle& style, std::ostream& out) {
    out << '\n';
    TextPanel(style, 0, out).Line(line, 0);
}

}  // namespace zephmeta
