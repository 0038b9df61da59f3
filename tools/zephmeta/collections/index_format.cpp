#include "collections/index_format.h"

#include <sqlite3.h>

#include <algorithm>
#include <filesystem>

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

std::int64_t Pragma(const Database& database, const std::string& name) {
    Statement statement(database, "PRAGMA " + name);
    return statement.Next() ? statement.Number(0) : 0;
}

}  // namespace

void CheckIsIndex(const Database& database) {
    if (Pragma(database, "application_id") != kIndexApplication) {
        throw DatabaseError(SQLITE_NOTADB, "is no index that zephmeta made");
    }
    if (Pragma(database, "user_version") != kIndexVersion) {
        throw DatabaseError(SQLITE_NOTADB, "is an index of another version of zephmeta; export anew");
    }
    Statement isThere(database, "SELECT 1 FROM sqlite_schema WHERE sql = ?1");
    const bool isWhole = std::all_of(kIndexSchema.begin(), kIndexSchema.end(),
                                     [&](const char* sql) { return isThere.BindText(1, sql).Once(); });
    Statement active(database, "SELECT 1 FROM sqlite_schema WHERE type IN ('trigger', 'view')");
    if (!isWhole || active.Once()) {
        throw DatabaseError(SQLITE_NOTADB, "is no index that zephmeta made");
    }
}

void CheckIsFile(const std::string& name) {
    std::error_code error;
    if (!fs::is_regular_file(name, error)) {
        throw DatabaseError(SQLITE_CANTOPEN, fs::exists(name, error) ? "not a file" : "no such file");
    }
}

}  // namespace zephmeta
