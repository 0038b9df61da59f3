#include "collections/cells.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "edits/typed_values.h"
#include "listing.h"
#include "suggestions.h"
#include "text.h"
#include "zephmetadata/library.h"
#include "zephmetadata/providers.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

constexpr std::string_view kDefaultLanguage = "x-default";

/// One language of an alternative, be it x-default.
std::string LanguageAt(const std::string& path, std::string_view language) {
    std::string expression = path;
    return expression.append("[?xml:lang=\"").append(language).append("\"]");
}

std::string ColumnOf(const std::string& path, const std::string& language) {
    return language == kDefaultLanguage ? path : LanguageAt(path, language);
}

std::string WithoutDefaultLanguage(const std::string& column) {
    static const std::string end = LanguageAt({}, kDefaultLanguage);
    return column.ends_with(end) ? column.substr(0, column.size() - end.size()) : column;
}

/// Whether a write changes the value by itself, so that it is nobody's to set.
bool IsKeptByPrograms(const std::string& expression) {
    static const std::set<std::string, std::less<>> dates = {"xmp:MetadataDate", "xmp:ModifyDate"};
    return dates.contains(expression) || IsInstanceData(PathForExpression(expression));
}

std::string AsText(const Cell& value) {
    if (value.is_boolean()) {
        return value.get<bool>() ? "True" : "False";  // as XMP has them
    }
    if (!value.is_string() && !value.is_number()) {
        throw std::invalid_argument("is neither a text, nor a list, nor texts by language");
    }
    return value.is_string() ? value.get<std::string>() : value.dump();
}

Cell AsCell(const Cell& value) {
    if (!value.is_array()) {
        return value.is_null() ? value : Cell(AsText(value));
    }
    Cell items = Cell::array();
    for (const Cell& item : value) {
        items.push_back(AsText(item));
    }
    return items;
}

void AddLanguages(const std::string& path, const nlohmann::json& texts, Cells& cells) {
    for (const auto& [language, text] : texts.items()) {
        if (text.is_null()) {
            cells[LanguageAt(path, language)] = text;  // that alone, also of x-default
        } else {
            cells[ColumnOf(path, language)] = AsText(text);
        }
    }
}

std::string QuotedItem(const std::string& item) {
    const bool isPlain = item.find_first_of(";\"\r\n") == std::string::npos && !item.empty() && item.front() != ' ' &&
                         item.back() != ' ';
    return isPlain ? item : InDoubleQuotes(item);
}

/// Takes the item at the front off, with the separator behind it.
std::string TakeItem(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    std::string item;
    if (text.starts_with('"')) {
        std::size_t i = 1;
        for (; i < text.size() && (text[i] != '"' || (i + 1 < text.size() && text[i + 1] == '"')); ++i) {
            item += text[i];
            i += text[i] == '"' ? 1 : 0;
        }
        text.remove_prefix(std::min(i + 1, text.size()));
    }
    const std::size_t end = std::min(text.find(';'), text.size());
    item.append(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    const bool wasPlain = item.size() == end;
    item.erase(wasPlain ? item.find_last_not_of(' ') + 1 : item.size());
    return item;
}

void AddListEdits(const std::string& column, const Target& target, const Cell& items, FileEdits& edits) {
    edits.Add({kEditKind_Delete, target.mPath, target.mLanguage, {}, {}, {}}, column);
    const Path itemPath = CreatePathFromArrayItem(target.mPath, -1);
    for (const Cell& item : items) {
        edits.Add({kEditKind_Add, target.mPath, {}, AsStored(itemPath, item.get<std::string>()), {}, {}}, column);
    }
}

void AddEdits(const std::string& column, const Cell& cell, FileEdits& edits) {
    Target target = ResolveTarget(column);
    if (cell.is_array()) {
        AddListEdits(column, target, cell, edits);
        return;
    }
    if (target.mLanguage.empty() && !cell.is_null() && PrimitiveTypeOfPath(target.mPath) == kPrimitiveType_Alt) {
        target.mLanguage = kDefaultLanguage;
    }
    const std::string text = cell.is_null() ? std::string() : AsStored(target.mPath, cell.get<std::string>());
    const bool isGone = text.empty();
    edits.Add({isGone ? kEditKind_Delete : kEditKind_Set, target.mPath, target.mLanguage, text, {}, {}}, column);
}

}  // namespace

Cells CellsOf(XMPMetaHandle tree) {
    const ErrorScope passedOver;  // of the display texts, which nobody asked for
    Cells cells;
    for (const ListedValue& value : tree == nullptr ? std::vector<ListedValue>() : ListValues(tree)) {
        if (IsKeptByPrograms(value.mExpression)) {
            continue;
        }
        if (value.mShape == ListedValue::Shape::kItems) {
            cells[value.mExpression] = value.mItems;
        } else if (value.mShape == ListedValue::Shape::kSimple) {
            cells[value.mExpression] = value.mRaw;
        }
        for (const auto& [language, text] : value.mLanguages) {
            cells[ColumnOf(value.mExpression, language)] = text;
        }
    }
    return cells;
}

void AddMembers(const Cells& cells, Json& object) {
    for (const auto& [column, cell] : cells) {
        const Target target = ResolveTarget(column);
        const std::string path = target.mLanguage.empty() ? column : column.substr(0, column.rfind("[?"));
        const bool isAlternative = !cell.is_array() && PrimitiveTypeOfPath(target.mPath) == kPrimitiveType_Alt;
        if (isAlternative || !target.mLanguage.empty()) {
            object[path][target.mLanguage.empty() ? std::string(kDefaultLanguage) : target.mLanguage] = cell;
        } else {
            object[path] = cell;
        }
    }
}

Cells CellsIn(const nlohmann::json& object) {
    Cells cells;
    for (const auto& [path, value] : object.items()) {
        if (path.find(':') == std::string::npos) {
            continue;  // the name of the file, and what other programs add
        }
        try {
            if (value.is_object()) {
                AddLanguages(path, value, cells);
            } else {
                cells[path] = AsCell(value);
            }
        } catch (const std::invalid_argument& error) {
            throw std::invalid_argument(path + ": " + error.what());
        }
    }
    return cells;
}

std::string TextOf(const Cell& cell) {
    if (!cell.is_array()) {
        return cell.is_string() ? cell.get<std::string>() : std::string();
    }
    std::string text;
    for (const Cell& item : cell) {
        text.append(text.empty() ? "" : "; ").append(QuotedItem(item.get<std::string>()));
    }
    return text;
}

Cell CellOf(const std::string& column, const std::string& text) {
    const Target target = ResolveTarget(column);
    if (!target.mLanguage.empty() || !IsPathAnArray(target.mPath, true)) {
        return text;
    }
    Cell items = Cell::array();
    for (std::string_view rest = text; rest.find_first_not_of(' ') != std::string_view::npos;) {
        if (std::string item = TakeItem(rest); !item.empty()) {
            items.push_back(std::move(item));
        }
    }
    return items;
}

std::string DeletedColumn(const std::string& column) {
    const Target target = ResolveTarget(column);
    const bool isAlternative = PrimitiveTypeOfPath(target.mPath) == kPrimitiveType_Alt;
    return isAlternative && target.mLanguage.empty() ? LanguageAt(column, kDefaultLanguage) : column;
}

FileEdits EditsToward(const Cells& wanted, XMPMetaHandle tree) {
    const Cells held = CellsOf(tree);
    FileEdits edits;
    for (const auto& [column, cell] : wanted) {
        const auto there = held.find(WithoutDefaultLanguage(column));
        const auto languages = held.lower_bound(column + "[?");
        const bool hasLanguages = languages != held.end() && languages->first.starts_with(column + "[?");
        const bool isSame = there == held.end() ? TextOf(cell).empty() && !hasLanguages
                                                : there->second == cell || TextOf(there->second) == TextOf(cell);
        if (!isSame) {
            AddEdits(column, cell, edits);
        }
    }
    return edits;
}

bool IsChosen(const std::string& column, const std::vector<std::string>& only) {
    return only.empty() || std::any_of(only.begin(), only.end(), [&](const std::string& path) {
               return column == path || IsBelow(column, path);
           });
}

std::string WhyNoColumn(const std::string& column) {
    const Target target = ResolveTarget(column);
    std::string unknown = WhyUnknown(column, target);
    if (unknown.empty() && IsKeptByPrograms(column)) {
        return column + ": is kept by programs and not taken";
    }
    return unknown;
}

}  // namespace zephmeta
