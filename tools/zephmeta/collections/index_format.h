#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "collections/database.h"

namespace zephmeta {

/// What tells an index from other databases.
constexpr std::int64_t kIndexApplication = 0x7A706878;  // "zphx"
constexpr std::int64_t kIndexVersion = 1;

/// An index is a database with exactly these.
constexpr auto kIndexSchema = std::to_array<const char*>({
    "CREATE TABLE file(id INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, text TEXT NOT NULL, size INTEGER NOT NULL, "
    "modified INTEGER NOT NULL, sidecars TEXT NOT NULL, error TEXT)",
    "CREATE TABLE value(file INTEGER NOT NULL REFERENCES file(id), path TEXT NOT NULL, item INTEGER NOT NULL, "
    "language TEXT, namespace TEXT NOT NULL, stored TEXT NOT NULL, display TEXT NOT NULL, origin TEXT NOT NULL, "
    "PRIMARY KEY(file, path, item)) WITHOUT ROWID",
    "CREATE INDEX value_by_path ON value(path)",
    "CREATE VIRTUAL TABLE words USING fts5(texts, tokenize='unicode61 remove_diacritics 2')",
});

/// Throws DatabaseError unless this is an index as this version makes it.
void CheckIsIndex(const Database& database);
/// Throws DatabaseError unless there is a file of that name.
void CheckIsFile(const std::string& name);

}  // namespace zephmeta
