#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "collections/cells.h"
#include "console.h"

namespace zephmeta {

/// A table of files and their values, CSV (RFC 4180) or JSON objects one after the other or in an array. Of what is read
/// only the places of the rows stay in memory.
class Table {
public:
    Table() = default;
    ~Table();
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /// Reads @p name, "-" for standard input. Rows and columns that make no sense are reported, each once, and left out. False
    /// when there is nothing to go on with.
    bool Read(const std::string& name, Problems& problems);

    const std::vector<std::string>& Files() const { return mFiles; }
    /// The cells of a file. Of CSV the empty ones are deletions with @p emptyDeletes, else they are left out. May be called by
    /// several threads at once. Throws std::invalid_argument for what is no value.
    Cells CellsFor(const std::string& file, bool emptyDeletes) const;

private:
    struct Place {
        std::uint64_t mOffset = 0;
        std::size_t mSize = 0;
        std::size_t mNumber = 0;
    };

    class Bytes;

    bool Open(const std::string& name, Problems& problems);
    void ReadCSV(const std::string& name, Bytes& bytes, Problems& problems);
    void ReadJSON(const std::string& name, Bytes& bytes, Problems& problems);
    std::string TakeCSVRecord(Bytes& bytes);
    /// False for a header without files.
    std::string TakeHeader(std::vector<std::string> header, Problems& problems);
    void AddRow(const std::string& name, const std::string& file, const Place& place, Problems& problems);
    /// Whether a column can be taken; says once why not.
    bool IsTaken(const std::string& column, Problems& problems);
    std::string BytesAt(const Place& place) const;
    nlohmann::json RowFrom(const std::vector<std::string>& fields) const;

    int mDescriptor = -1;
    bool mIsJSON = false;
    std::optional<char> mSeparator;    // of CSV, as
    std::vector<std::string> mHeader;  // this
    std::unordered_map<std::string, bool> mColumns;
    std::vector<std::string> mFiles;
    std::unordered_map<std::string, Place> mPlaces;
};

}  // namespace zephmeta
