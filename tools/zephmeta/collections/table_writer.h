#pragma once

#include <fstream>
#include <mutex>
#include <set>
#include <string>

#include "collections/cells.h"

namespace zephmeta {

/// A file that is not there yet, or standard output. It is gone again unless it was kept.
class NewTable {
public:
    /// @p name is "-" for standard output.
    explicit NewTable(std::string name);
    ~NewTable();
    NewTable(const NewTable&) = delete;
    NewTable& operator=(const NewTable&) = delete;

    std::ostream& Out();
    /// Why it could not be made or written so far; empty when it could.
    std::string Problem();
    /// Has the file stay. Why it cannot; empty when it does.
    std::string Keep();

private:
    std::string mName;
    std::string mProblem;
    std::ofstream mFile;
    bool mIsMade = false;
    bool mIsKept = false;
};

/// Rows on their way into a CSV table, which cannot begin before all its columns are known.
class WaitingRows {
public:
    WaitingRows();

    std::ostream& Out() { return mSpool; }
    /// Columns of a row that is written to Out by and by. May be called by several threads at once.
    void AddColumns(const Json& row);
    std::size_t Columns() const { return mColumns.size(); }
    /// Writes the header and all rows. Why they are not all there; empty when they are.
    std::string WriteTo(std::ostream& out);

private:
    std::fstream mSpool;
    std::mutex mMutex;
    std::set<std::string> mColumns;
};

/// The row of a file: an object with its name, its values as members.
Json RowOf(const std::string& file, const Cells& cells);

}  // namespace zephmeta
