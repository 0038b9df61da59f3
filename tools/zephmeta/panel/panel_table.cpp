#include <algorithm>
#include <map>
#include <ostream>

#include "panel/panel_output.h"

namespace zephmeta {

namespace {

using Kind = PanelItem::Kind;

struct TableRow {
    std::string mLabel;
    std::vector<std::string> mCells;  ///< HTML, one of each file; empty for no value
};

struct TableSection {
    std::string mLabel;
    std::vector<TableRow> mRows;
    std::map<std::string, std::size_t>
        mIndexes;  ///< of the rows by label, of further ones of a label by their path too
};

/// The rows of several panels of one view, each where the first panel that has it does.
class Table {
public:
    explicit Table(std::size_t columns) : mColumns(columns) {}

    void Add(const std::vector<PanelItem>& items, const std::string& section, std::size_t column) {
        for (const PanelItem& item : items) {
            if (item.mKind == Kind::kSection) {
                Add(item.mItems, item.mLabel.empty() ? section : item.mLabel, column);
            } else if (item.mKind != Kind::kNote && item.mKind != Kind::kSeparator) {
                // A row without a value keeps its place for the files that have one.
                std::string& cell = Cell(item, section, column);
                cell = item.HasValue() ? CellText(item) : cell;
            }
        }
    }

    /// Those with a value, with the rows that have one.
    std::vector<TableSection> Sections() const {
        std::vector<TableSection> filled = mSections;
        for (TableSection& section : filled) {
            std::erase_if(section.mRows, [](const TableRow& row) {
                return std::all_of(row.mCells.begin(), row.mCells.end(),
                                   [](const std::string& c) { return c.empty(); });
            });
        }
        std::erase_if(filled, [](const TableSection& section) { return section.mRows.empty(); });
        return filled;
    }

private:
    /// What is below a value stands in its cell.
    static std::string CellText(const PanelItem& item) {
        std::string text = item.mState == PanelItem::State::kNone || item.mValue.empty() ? "" : ShownAsHtml(item);
        for (const PanelItem& part : item.mKind == Kind::kFormatter ? std::vector<PanelItem>() : item.mItems) {
            if (part.HasValue()) {
                text += "<div>" + EscapedForHtml(part.mLabel) + ": " + CellText(part) + "</div>";
            }
        }
        return text;
    }

    std::string& Cell(const PanelItem& item, const std::string& label, std::size_t column) {
        const auto [section, isNewSection] = mIndexes.emplace(label, mSections.size());
        if (isNewSection) {
            mSections.push_back({label, {}, {}});
        }
        TableSection& found = mSections[section->second];
        std::string& cell = CellAt(item.mLabel, item.mLabel, column, found);
        return cell.empty() ? cell : CellAt(item.mLabel + "\n" + item.mPath, item.mLabel, column, found);
    }

    /// Files have the same thing in one place or another: what counts is what it is called.
    std::string& CellAt(const std::string& key, const std::string& label, std::size_t column, TableSection& section) {
        const auto [row, isNew] = section.mIndexes.emplace(key, section.mRows.size());
        if (isNew) {
            section.mRows.push_back({label, std::vector<std::string>(mColumns)});
        }
        return section.mRows[row->second].mCells[column];
    }

    std::size_t mColumns;
    std::vector<TableSection> mSections;
    std::map<std::string, std::size_t> mIndexes;  // of the sections by their labels
};

bool Differs(const TableRow& row) {
    return std::any_of(row.mCells.begin(), row.mCells.end(),
                       [&](const std::string& cell) { return cell != row.mCells.front(); });
}

void PrintSection(const TableSection& section, const std::vector<std::string>& names, std::ostream& out) {
    out << "<article>\n"
        << (section.mLabel.empty() ? "" : "<h2>" + EscapedForHtml(section.mLabel) + "</h2>\n")
        << "<div class=\"wide\" tabindex=\"0\"><table>\n<thead><tr><td></td>";
    for (const std::string& name : names) {
        out << "<th scope=\"col\">" << EscapedForHtml(name.substr(name.rfind('/') + 1)) << "</th>";
    }
    out << "</tr></thead>\n<tbody>\n";
    for (const TableRow& row : section.mRows) {
        out << (Differs(row) ? "<tr class=\"differs\">" : "<tr>") << "<th scope=\"row\">" << EscapedForHtml(row.mLabel)
            << "</th>";
        for (const std::string& cell : row.mCells) {
            out << "<td>" << (cell.empty() ? "\u2013" : cell) << "</td>";
        }
        out << "</tr>\n";
    }
    out << "</tbody></table></div>\n</article>\n";
}

}  // namespace

void PrintComparison(const PageHead& head, const std::vector<std::string>& names, const std::vector<Panel>& panels,
                     std::ostream& out) {
    Table table(panels.size());
    for (std::size_t column = 0; column < panels.size(); ++column) {
        table.Add(panels[column].mItems, "", column);
    }
    BeginPage(head, out);
    out << "</div></header>\n<main class=\"all\">\n";
    for (const TableSection& section : table.Sections()) {
        PrintSection(section, names, out);
    }
    out << "</main>\n</body>\n</html>\n";
}

}  // namespace zephmeta
