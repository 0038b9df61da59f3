#pragma once

#include <map>
#include <string>
#include <vector>

#include "edits/edit_arguments.h"
#include "json.h"

namespace zephmeta {

/// What a file holds, by column: a stored text, or an array of the items of a list. A column is a path; the languages of an
/// alternative have a column each, dc:title for x-default and dc:title[?xml:lang="de"] for others. A null is to be deleted.
using Cell = nlohmann::json;
using Cells = std::map<std::string, Cell>;

/// The values of a tree, which may be null. What identifies a file, and what every write changes, is left out.
Cells CellsOf(zephmetadata::XMPMetaHandle tree);

/// The cells as members of a JSON object, alternatives as objects of their languages.
void AddMembers(const Cells& cells, Json& object);
/// The cells of such an object. Throws std::invalid_argument for a member that is no value.
Cells CellsIn(const nlohmann::json& object);

/// One text for a cell: items with "; " between them, in quotes where they hold such signs.
std::string TextOf(const Cell& cell);
/// The same back, by what the definition of the column says that it holds.
Cell CellOf(const std::string& column, const std::string& text);
/// What an empty text of a table deletes: of an alternative x-default alone, as its other languages have columns of their own.
std::string DeletedColumn(const std::string& column);

/// The edits that make the values of a tree those of the cells. Where they are so already there is none.
FileEdits EditsToward(const Cells& wanted, zephmetadata::XMPMetaHandle tree);

/// Whether a column is one of @p only, or a part of it; any is when that is empty.
bool IsChosen(const std::string& column, const std::vector<std::string>& only);

/// Why a column cannot be taken from; empty when it can.
std::string WhyNoColumn(const std::string& column);

}  // namespace zephmeta
