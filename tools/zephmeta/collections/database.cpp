#include "collections/database.h"

#include <sqlite3.h>

namespace zephmeta {

namespace {

[[noreturn]] void Throw(sqlite3* handle, int code) {
    switch (code) {
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
            throw DatabaseError(code, "is damaged, or no database");
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            throw DatabaseError(code, "is in use by another program");
        default:
            throw DatabaseError(code, handle == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(handle));
    }
}

}  // namespace

void Database::Close::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

Database::Database(const std::string& name) {
    // Some names mean something else than a file to SQLite.
    const std::string file = name.starts_with('/') ? name : "./" + name;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    mHandle.reset(handle);
    if (code != SQLITE_OK) {
        Throw(handle, code);
    }
    constexpr int kPatience = 5000;  // milliseconds
    constexpr int kLongest = 1 << 28;
    sqlite3_busy_timeout(handle, kPatience);
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, kLongest);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(handle, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    Run("PRAGMA cell_size_check=ON");
}

void Database::Run(const std::string& sql) const {
    Statement statement(*this, sql);
    while (statement.Next()) {
    }
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(const Database& database, const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(database.Handle(), sql.c_str(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    mStatement.reset(statement);
    if (code != SQLITE_OK) {
        Throw(database.Handle(), code);
    }
}

void Statement::Check(int code) const {
    if (code != SQLITE_OK) {
        Throw(sqlite3_db_handle(mStatement.get()), code);
    }
}

Statement& Statement::Bind(int parameter, std::int64_t number) {
    Check(sqlite3_bind_int64(mStatement.get(), parameter, number));
    return *this;
}

Statement& Statement::BindText(int parameter, std::string_view text) {
    Check(sqlite3_bind_text64(mStatement.get(), parameter, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
    return *this;
}

Statement& Statement::BindBytes(int parameter, std::string_view bytes) {
    Check(sqlite3_bind_blob64(mStatement.get(), parameter, bytes.data(), bytes.size(), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::BindNull(int parameter) {
    Check(sqlite3_bind_null(mStatement.get(), parameter));
    return *this;
}

bool Statement::Next() {
    const int code = sqlite3_step(mStatement.get());
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code != SQLITE_DONE) {
        Throw(sqlite3_db_handle(mStatement.get()), code);
    }
    sqlite3_reset(mStatement.get());
    return false;
}

bool Statement::Once() {
    const bool isThere = Next();
    sqlite3_reset(mStatement.get());
    return isThere;
}

std::int64_t Statement::Number(int column) const {
    return sqlite3_column_int64(mStatement.get(), column);
}

std::string Statement::Text(int column) const {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(mStatement.get(), column));
    const int size = sqlite3_column_bytes(mStatement.get(), column);
    return bytes == nullptr ? std::string() : std::string(bytes, static_cast<std::size_t>(size));
}

}  // namespace zephmeta
