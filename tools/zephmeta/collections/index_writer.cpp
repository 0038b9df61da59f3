#include "collections/index_writer.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "collections/index_format.h"
#include "json.h"
#include "listing.h"
#include "zephmetadata/library.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

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

[[noreturn]] void ThrowNotMade(const std::string& why) {
    throw DatabaseError(SQLITE_CANTOPEN, "cannot be made (" + why + ")");
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

/// The file of a new database, under a hidden name beside its own, so that no folder is taken for holding it. It is taken away
/// again unless it takes its place.
class IndexWriter::NewFile {
public:
    explicit NewFile(const std::string& name) : mPlace(name) {
        const fs::path path(name);
        const std::string file = "." + path.filename().native() + ".zephmeta-" + std::to_string(getpid());
        mName = (path.parent_path() / file).native();
        Remove();                       // that of a process that is no more
        constexpr mode_t kMode = 0666;  // less what the user's mask takes away
        const int descriptor = open(mName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
        if (descriptor < 0) {
            ThrowNotMade(std::strerror(errno));
        }
        close(descriptor);
    }
    ~NewFile() { Remove(); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& Name() const { return mName; }

    void TakePlace() const {
        const char* const from = mName.c_str();
        const char* const to = mPlace.c_str();
        bool isDone = renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0;
        if (!isDone && (errno == EINVAL || errno == ENOSYS)) {  // a file system that cannot be asked for it
            isDone = access(to, F_OK) != 0 && rename(from, to) == 0;
        }
        if (!isDone) {
            ThrowNotMade(std::strerror(errno));
        }
    }

private:
    /// With its journal, which SQLite would take for the unfinished business of the next database of the name.
    void Remove() const {
        unlink(mName.c_str());
        unlink((mName + "-journal").c_str());
    }

    std::string mPlace;
    std::string mName;
};

IndexWriter::IndexWriter(const std::string& name, bool isUpdate) {
    std::error_code error;
    const bool isThere = fs::symlink_status(name, error).type() != fs::file_type::not_found;
    if (isThere && !isUpdate) {
        throw DatabaseError(SQLITE_CANTOPEN, "is there already; --update brings an index up to date");
    }
    isThere ? Open(name) : Make(name);
    mStatements = std::make_unique<Statements>(*mDatabase);
}

IndexWriter::~IndexWriter() = default;

void IndexWriter::Open(const std::string& name) {
    CheckIsFile(name);
    mDatabase = std::make_unique<Database>(name);
    CheckIsIndex(*mDatabase);
    mDatabase->Run("BEGIN IMMEDIATE");
}

void IndexWriter::Make(const std::string& name) {
    std::error_code error;
    if (fs::exists(name + "-journal", error)) {
        // SQLite would take it for the unfinished business of the new database.
        ThrowNotMade("a journal of a database of this name is there");
    }
    mNewFile = std::make_unique<NewFile>(name);
    mDatabase = std::make_unique<Database>(mNewFile->Name());
    mDatabase->Run("PRAGMA application_id=" + std::to_string(kIndexApplication));
    mDatabase->Run("PRAGMA user_version=" + std::to_string(kIndexVersion));
    mDatabase->Run("BEGIN IMMEDIATE");
    for (const char* sql : kIndexSchema) {
        mDatabase->Run(sql);
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
    if (mNewFile) {
        mNewFile->TakePlace();
    }
}

}  // namespace zephmeta
