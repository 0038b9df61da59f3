#include "collections/index.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "json.h"
#include "listing.h"
#include "text.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kApplication = 0x7A706878;  // "zphx"
constexpr std::int64_t kVersion = 1;

/// An index is a database with exactly these.
constexpr auto kSchema = std::to_array<const char*>({
    "CREATE TABLE file(id INTEGER PRIMARY KEY, name BLOB NOT NULL UNIQUE, text TEXT NOT NULL, size INTEGER NOT NULL, "
    "modified INTEGER NOT NULL, sidecars TEXT NOT NULL, error TEXT)",
    "CREATE TABLE value(file INTEGER NOT NULL REFERENCES file(id), path TEXT NOT NULL, item INTEGER NOT NULL, "
    "language TEXT, namespace TEXT NOT NULL, stored TEXT NOT NULL, display TEXT NOT NULL, origin TEXT NOT NULL, "
    "PRIMARY KEY(file, path, item)) WITHOUT ROWID",
    "CREATE INDEX value_by_path ON value(path)",
    "CREATE VIRTUAL TABLE words USING fts5(texts, tokenize='unicode61 remove_diacritics 2')",
});

std::int64_t Pragma(const Database& database, const std::string& name) {
    Statement statement(database, "PRAGMA " + name);
    return statement.Next() ? statement.Number(0) : 0;
}

/// Throws unless this is an index as this version makes it.
void CheckIsIndex(const Database& database) {
    if (Pragma(database, "application_id") != kApplication) {
        throw DatabaseError(SQLITE_NOTADB, "is no index that zephmeta made");
    }
    if (Pragma(database, "user_version") != kVersion) {
        throw DatabaseError(SQLITE_NOTADB, "is an index of another version of zephmeta; export anew");
    }
    Statement isThere(database, "SELECT 1 FROM sqlite_schema WHERE sql = ?1");
    const bool isWhole =
        std::all_of(kSchema.begin(), kSchema.end(), [&](const char* sql) { return isThere.BindText(1, sql).Once(); });
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

std::string InWords(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) != 0
               ? "-"
               : std::to_string(status.st_size) + " " + std::to_string(status.st_mtim.tv_sec) + "." +
                     std::to_string(status.st_mtim.tv_nsec);
}

/// UTF-8 for people; what is none becomes U+FFFD.
std::string NameInWords(const std::string& name) {
    return nlohmann::json::parse(JsonLine(name)).get<std::string>();
}

/// A hidden name beside the other, so that no folder is taken for holding it.
std::string NewNameFor(const std::string& name) {
    const fs::path path(name);
    std::string file = "." + path.filename().native() + ".zephmeta-" + std::to_string(getpid());
    return (path.parent_path() / file).native();
}

}  // namespace

FileStamp StampOf(const std::string& name) {
    constexpr std::int64_t kNanoseconds = 1'000'000'000;
    struct stat status {};
    FileStamp stamp;
    if (stat(name.c_str(), &status) == 0) {
        stamp.mSize = status.st_size;
        stamp.mModified = status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec;
    }
    stamp.mSidecars = InWords(name + ".xmp") + "; " + InWords(fs::path(name).replace_extension(".xmp").native());
    return stamp;
}

std::vector<IndexedValue> IndexedValuesOf(zephmetadata::XMPMetaHandle tree) {
    const zephmetadata::ErrorScope passedOver;  // of display texts that cannot be made
    std::vector<IndexedValue> rows;
    for (const ListedValue& value : tree == nullptr ? std::vector<ListedValue>() : ListValues(tree)) {
        IndexedValue row{value.mExpression, value.mNamespace, {}, 0, value.mRaw, value.mDisplay, value.mIsNative};
        if (value.mShape == ListedValue::Shape::kSimple) {
            rows.push_back(row);
        }
        const zephmetadata::Path path = zephmetadata::PathForExpression(value.mExpression);
        for (const std::string& item : value.mItems) {
            ++row.mItem;
            row.mStored = row.mDisplay = item;
            if (value.mDisplay != value.mRaw) {
                DisplayText(tree, zephmetadata::CreatePathFromArrayItem(path, static_cast<std::int32_t>(row.mItem)),
                            row.mDisplay);
            }
            rows.push_back(row);
        }
        for (const auto& [language, text] : value.mLanguages) {
            ++row.mItem;
            row.mLanguage = language;
            row.mStored = row.mDisplay = text;
            rows.push_back(row);
        }
    }
    return rows;
}

struct IndexWriter::Statements {
    explicit Statements(const Database& database)
        : mKnown(database,
                 "SELECT 1 FROM file WHERE name = ?1 AND size = ?2 AND modified = ?3 AND sidecars = ?4 AND "
                 "error IS NULL"),
          mIdOf(database, "SELECT id FROM file WHERE name = ?1"),
          mDropWords(database, "DELETE FROM words WHERE rowid = ?1"),
          mDropValues(database, "DELETE FROM value WHERE file = ?1"),
          mDropFile(database, "DELETE FROM file WHERE id = ?1"),
          mAddFile(database,
                   "INSERT INTO file(name, text, size, modified, sidecars, error) VALUES(?1, ?2, ?3, ?4, ?5, ?6)"),
          mAddValue(database, "INSERT OR REPLACE INTO value VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"),
          mAddWords(database, "INSERT INTO words(rowid, texts) VALUES(?1, ?2)") {}

    Statement mKnown, mIdOf, mDropWords, mDropValues, mDropFile, mAddFile, mAddValue, mAddWords;
};

IndexWriter::IndexWriter(const std::string& name, bool isUpdate) : mName(name) {
    std::error_code error;
    const bool isThere = fs::symlink_status(name, error).type() != fs::file_type::not_found;
    if (isThere && !isUpdate) {
        throw DatabaseError(SQLITE_CANTOPEN, "is there already; --update brings an index up to date");
    }
    if (!isThere && fs::exists(name + "-journal", error)) {
        // SQLite would take it for the unfinished business of the new database.
        throw DatabaseError(SQLITE_CANTOPEN, "cannot be made (a journal of a database of this name is there)");
    }
    if (isThere) {
        CheckIsFile(name);
        mDatabase = std::make_unique<Database>(name);
        CheckIsIndex(*mDatabase);
        mDatabase->Run("BEGIN IMMEDIATE");
    } else {
        constexpr mode_t kMode = 0666;  // less what the user's mask takes away
        mNewName = NewNameFor(name);
        unlink(mNewName.c_str());  // of a process that is no more
        const int descriptor = open(mNewName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (descriptor < 0) {
            throw DatabaseError(SQLITE_CANTOPEN, std::string("cannot be made (") + std::strerror(errno) + ")");
        }
        close(descriptor);
        mDatabase = std::make_unique<Database>(mNewName);
        mDatabase->Run("PRAGMA application_id=" + std::to_string(kApplication));
        mDatabase->Run("PRAGMA user_version=" + std::to_string(kVersion));
        mDatabase->Run("BEGIN IMMEDIATE");
        for (const char* sql : kSchema) {
            mDatabase->Run(sql);
        }
    }
    mStatements = std::make_unique<Statements>(*mDatabase);
}

IndexWriter::~IndexWriter() {
    mStatements.reset();
    mDatabase.reset();
    if (!mNewName.empty()) {
        unlink(mNewName.c_str());
    }
}

bool IndexWriter::IsCurrent(const std::string& file, const FileStamp& stamp) {
    Statement& known = mStatements->mKnown;
    return known.BindBytes(1, file).Bind(2, stamp.mSize).Bind(3, stamp.mModified).BindText(4, stamp.mSidecars).Once();
}

void IndexWriter::Try(const std::function<void()>& change) {
    const std::lock_guard lock(mMutex);
    if (mFailure.empty()) {
        try {
            change();
        } catch (const DatabaseError& error) {
            mFailure = error.what();
        }
    }
}

void IndexWriter::Remove(const std::string& file) {
    Try([&] { Drop(file); });
}

void IndexWriter::Drop(const std::string& file) {
    Statement& idOf = mStatements->mIdOf.BindBytes(1, file);
    if (idOf.Next()) {
        const std::int64_t id = idOf.Number(0);
        idOf.Next();
        mStatements->mDropWords.Bind(1, id).Once();
        mStatements->mDropValues.Bind(1, id).Once();
        mStatements->mDropFile.Bind(1, id).Once();
    }
}

std::int64_t IndexWriter::PutFile(const std::string& file, const FileStamp& stamp, const std::string& problem) {
    Drop(file);
    Statement& add = mStatements->mAddFile;
    add.BindBytes(1, file).BindText(2, NameInWords(file)).Bind(3, stamp.mSize).Bind(4, stamp.mModified);
    add.BindText(5, stamp.mSidecars);
    problem.empty() ? add.BindNull(6) : add.BindText(6, problem);
    add.Once();
    return sqlite3_last_insert_rowid(mDatabase->Handle());
}

void IndexWriter::PutProblem(const std::string& file, const FileStamp& stamp, const std::string& problem) {
    Try([&] { PutFile(file, stamp, problem); });
}

void IndexWriter::Put(const std::string& file, const FileStamp& stamp, const std::vector<IndexedValue>& values) {
    Try([&] { PutValues(PutFile(file, stamp, {}), values); });
}

void IndexWriter::PutValues(std::int64_t id, const std::vector<IndexedValue>& values) {
    std::string texts;
    Statement& add = mStatements->mAddValue;
    for (const IndexedValue& value : values) {
        add.Bind(1, id).BindText(2, value.mPath).Bind(3, value.mItem);
        value.mLanguage.empty() ? add.BindNull(4) : add.BindText(4, value.mLanguage);
        add.BindText(5, value.mNamespace).BindText(6, value.mStored).BindText(7, value.mDisplay);
        add.BindText(8, value.mIsNative ? "native" : "xmp").Once();
        texts.append(value.mStored).append("\n");
        texts.append(value.mDisplay == value.mStored ? std::string() : value.mDisplay + "\n");
    }
    mStatements->mAddWords.Bind(1, id).BindText(2, texts).Once();
}

std::size_t IndexWriter::RemoveGone(const std::string& folder) {
    std::error_code error;
    if (!fs::is_directory(folder, error)) {
        return 0;
    }
    std::string from = folder;
    from += from.ends_with('/') ? "" : "/";
    std::string to = from;
    to.back() = '/' + 1;
    Statement below(*mDatabase, "SELECT name FROM file WHERE name > ?1 AND name < ?2");
    below.BindBytes(1, from).BindBytes(2, to);
    std::vector<std::string> gone;
    while (below.Next()) {
        struct stat status {};
        if (std::string name = below.Text(0);
            lstat(name.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR)) {
            gone.push_back(std::move(name));
        }
    }
    std::for_each(gone.begin(), gone.end(), [this](const std::string& name) { Remove(name); });
    return gone.size();
}

void IndexWriter::Commit() {
    if (!mFailure.empty()) {
        throw DatabaseError(SQLITE_ERROR, mFailure);
    }
    mDatabase->Run("COMMIT");
    mStatements.reset();
    mDatabase.reset();
    if (mNewName.empty()) {
        return;
    }
    const char* const from = mNewName.c_str();
    bool isDone = renameat2(AT_FDCWD, from, AT_FDCWD, mName.c_str(), RENAME_NOREPLACE) == 0;
    if (!isDone && (errno == EINVAL || errno == ENOSYS)) {  // a file system that cannot be asked for it
        isDone = access(mName.c_str(), F_OK) != 0 && rename(from, mName.c_str()) == 0;
    }
    if (!isDone) {
        throw DatabaseError(SQLITE_CANTOPEN, std::string("cannot be made (") + std::strerror(errno) + ")");
    }
    mNewName.clear();
}

namespace {

/// The values of one file after the other as an index has them.
class IndexValues : public ValueSource {
public:
    explicit IndexValues(const Database& database)
        : mRows(database, "SELECT stored, language FROM value WHERE file = ?1 AND path = ?2 ORDER BY item"),
          mItem(database, "SELECT stored FROM value WHERE file = ?1 AND path = ?2 AND item = ?3"),
          mBelow(database,
                 "SELECT 1 FROM value WHERE file = ?1 AND path > ?2 || '/' AND path < ?2 || '0' UNION ALL "
                 "SELECT 1 FROM value WHERE file = ?1 AND path > ?2 || '[' AND path < ?2 || '\\' UNION ALL "
                 "SELECT 1 FROM value WHERE file = ?1 AND path = ?2 LIMIT 1") {}

    void SetFile(std::int64_t file) { mFile = file; }

    std::vector<std::string> Texts(const Target& target) const override {
        const std::string path = zephmetadata::ExpressionForPath(target.mPath);
        const bool isAlternative = zephmetadata::PrimitiveTypeOfPath(target.mPath) == zephmetadata::kPrimitiveType_Alt;
        std::vector<Row> rows = RowsAt(path);
        if (isAlternative && !target.mLanguage.empty()) {
            std::erase_if(rows, [&](const Row& row) { return Lower(row.mLanguage) != Lower(target.mLanguage); });
        }
        std::vector<std::string> texts;
        for (const Row& row : rows) {
            texts.insert(Lower(row.mLanguage) == "x-default" ? texts.begin() : texts.end(), row.mStored);
        }
        const bool isOne = !isAlternative && !zephmetadata::IsPathAnArray(target.mPath, true);
        return isOne ? AsOne(rows, texts, path) : texts;
    }

    bool Has(const Target& target) const override {
        const std::string path = zephmetadata::ExpressionForPath(target.mPath);
        return mBelow.Bind(1, mFile).BindText(2, path).Once() || ItemAt(path);
    }

private:
    struct Row {
        std::string mStored;
        std::string mLanguage;
    };

    std::vector<Row> RowsAt(const std::string& path) const {
        std::vector<Row> rows;
        mRows.Bind(1, mFile).BindText(2, path);
        while (mRows.Next()) {
            rows.push_back({mRows.Text(0), mRows.Text(1)});
        }
        return rows;
    }

    /// The text of a path such as dc:subject[2], which stands in the rows of its list.
    std::optional<std::string> ItemAt(const std::string& path) const {
        const std::size_t open = path.ends_with(']') ? path.rfind('[') : std::string::npos;
        std::int64_t number = 0;
        if (open == std::string::npos ||
            std::from_chars(&path[open + 1], path.data() + path.size(), number).ec != std::errc()) {
            return std::nullopt;
        }
        mItem.Bind(1, mFile).BindText(2, std::string_view(path).substr(0, open)).Bind(3, number);
        std::optional<std::string> text;
        while (mItem.Next()) {
            text = mItem.Text(0);
        }
        return text;
    }

    /// What a list, or a text in several languages, is as one text where no definition says that it is more.
    std::vector<std::string> AsOne(const std::vector<Row>& rows, const std::vector<std::string>& texts,
                                   const std::string& path) const {
        if (rows.empty()) {
            const auto item = ItemAt(path);
            return item ? std::vector<std::string>{*item} : std::vector<std::string>();
        }
        std::string joined = texts.front();
        for (std::size_t i = 1; i < texts.size() && rows.front().mLanguage.empty(); ++i) {
            joined.append("; ").append(texts[i]);
        }
        return {joined};
    }

    std::int64_t mFile = 0;
    // Asking changes where a statement is, and nothing else.
    mutable Statement mRows;
    mutable Statement mItem;
    mutable Statement mBelow;
};

}  // namespace

IndexReader::IndexReader(const std::string& name) : mDatabase((CheckIsFile(name), name)) {
    mDatabase.Run("PRAGMA query_only=ON");
    CheckIsIndex(mDatabase);
}

void IndexReader::ForEach(const std::string& words, const Visit& visit) const {
    const char* const matching = " AND id IN (SELECT rowid FROM words WHERE words MATCH ?1)";
    Statement files(mDatabase, std::string("SELECT id, name FROM file WHERE error IS NULL") +
                                   (words.empty() ? "" : matching) + " ORDER BY name");
    if (!words.empty()) {
        files.BindText(1, words);
    }
    IndexValues values(mDatabase);
    try {
        while (files.Next()) {
            values.SetFile(files.Number(0));
            visit(files.Text(1), values);
        }
    } catch (const DatabaseError& error) {
        if (!words.empty() && error.Code() == SQLITE_ERROR) {
            throw std::invalid_argument("--text: " + std::string(error.what()) +
                                        "; words with such signs stand in double quotes");
        }
        throw;
    }
}

}  // namespace zephmeta
