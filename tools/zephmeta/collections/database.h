#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace zephmeta {

/// What SQLite could not do, in words.
class DatabaseError : public std::runtime_error {
public:
    DatabaseError(int code, const std::string& text) : std::runtime_error(text), mCode(code) {}
    int Code() const { return mCode; }

private:
    int mCode;
};

/// An open SQLite database. All that fails throws DatabaseError.
class Database {
public:
    /// Opens a file that is there. One that came from strangers can have nothing run on its own.
    explicit Database(const std::string& name);

    sqlite3* Handle() const { return mHandle.get(); }
    void Run(const std::string& sql) const;

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> mHandle;
};

/// A prepared statement. Parameters and columns count from 1 and from 0, as SQLite has them.
class Statement {
public:
    Statement(const Database& database, const std::string& sql);

    Statement& Bind(int parameter, std::int64_t number);
    Statement& BindText(int parameter, std::string_view text);
    Statement& BindBytes(int parameter, std::string_view bytes);
    Statement& BindNull(int parameter);
    /// Whether there is a row. At the end the statement can be bound and begun anew.
    bool Next();
    /// For what has no rows, or where the others do not matter.
    bool Once();
    std::int64_t Number(int column) const;
    /// A text, or bytes; empty for a null.
    std::string Text(int column) const;

private:
    void Check(int code) const;

    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };
    std::unique_ptr<sqlite3_stmt, Finalize> mStatement;
};

}  // namespace zephmeta
