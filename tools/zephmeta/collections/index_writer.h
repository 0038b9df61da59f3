#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "collections/database.h"
#include "zephmetadata/types.h"

namespace zephmeta {

/// What tells whether a file was changed since it was read. Times are in nanoseconds since 1970.
struct FileStamp {
    std::int64_t mSize = -1;
    std::int64_t mModified = 0;
    std::string mSidecars;  ///< the same of the sidecars that may go with it, in words

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

FileStamp StampOf(const std::string& name);

/// A row of the index: a simple value, an item of a list or one language of a text.
struct IndexedValue {
    std::string mPath;
    std::string mNamespace;
    std::string mLanguage;
    std::int64_t mItem = 0;  ///< the place in a list, from 1; 0 of a simple value
    std::string mStored;
    std::string mDisplay;
    bool mIsNative = false;
};

/// The values of a tree, which may be null.
std::vector<IndexedValue> IndexedValuesOf(zephmetadata::XMPMetaHandle tree);

/// Makes an index of files and their values in an SQLite database, or brings one up to date. The database is what it was
/// before, or does not exist, until Commit. All that fails throws DatabaseError.
class IndexWriter {
public:
    /// Without @p isUpdate, @p name must not exist; with it, it may.
    IndexWriter(const std::string& name, bool isUpdate);
    ~IndexWriter();
    IndexWriter(const IndexWriter&) = delete;
    IndexWriter& operator=(const IndexWriter&) = delete;

    /// Whether the file was read as it is now, without a problem.
    bool IsCurrent(const std::string& file, const FileStamp& stamp);
    /// These three may be called by several threads at once. What they could not do makes Commit fail.
    void Put(const std::string& file, const FileStamp& stamp, const std::vector<IndexedValue>& values);
    void PutProblem(const std::string& file, const FileStamp& stamp, const std::string& problem);
    void Remove(const std::string& file);
    /// Removes the files below a folder that are no longer there; how many these were. The folder itself has to be there, so
    /// that a disk that is not plugged in empties nothing.
    std::size_t RemoveGone(const std::string& folder);
    void Commit();

private:
    class NewFile;
    struct Statements;

    void Open(const std::string& name);
    void Make(const std::string& name);
    void Try(const std::function<void()>& change);
    void Drop(const std::string& file);
    void PutValues(std::int64_t id, const std::vector<IndexedValue>& values);
    std::int64_t PutFile(const std::string& file, const FileStamp& stamp, const std::string& problem);

    std::unique_ptr<NewFile> mNewFile;  // null for an update
    std::mutex mMutex;                  // of what follows
    std::string mFailure;
    std::unique_ptr<Database> mDatabase;
    std::unique_ptr<Statements> mStatements;
};

}  // namespace zephmeta
