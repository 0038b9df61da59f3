// Keeps XMP in a database instead of files: sqlite_provider DATABASE ASSET [TITLE]
//
// A provider of the host's own needs two things: a packet to begin with, and a place for what was edited. Everything else
// (typed values, definitions, panels, several sources as one) works on it as on a file.
#include <sqlite3.h>
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <memory>
#include <string>

namespace {

struct Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Close>;

Database Open(const char* name) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(name, &opened);
    Database database(opened);
    constexpr const char* kTable = "CREATE TABLE IF NOT EXISTS metadata (asset TEXT PRIMARY KEY, packet BLOB NOT NULL)";
    const bool usable = result == SQLITE_OK && sqlite3_exec(opened, kTable, nullptr, nullptr, nullptr) == SQLITE_OK;
    return usable ? std::move(database) : nullptr;
}

Statement Prepare(sqlite3* database, const char* text, const std::string& asset) {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(database, text, -1, &prepared, nullptr);
    sqlite3_bind_text(prepared, 1, asset.c_str(), -1, SQLITE_TRANSIENT);
    return Statement(prepared);
}

/// The packet of an asset; an empty one where the database has none yet.
std::string StoredPacket(sqlite3* database, const std::string& asset) {
    const Statement query = Prepare(database, "SELECT packet FROM metadata WHERE asset = ?1", asset);
    if (sqlite3_step(query.get()) != SQLITE_ROW) {
        return zephmetadata::SerializeXMPMeta(zephmetadata::CreateXMPMeta().get());
    }
    const auto* bytes = static_cast<const char*>(sqlite3_column_blob(query.get(), 0));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(query.get(), 0))};
}

class AssetProvider : public zephmetadata::BufferProviderImpl {
public:
    /// @p database outlives the provider.
    AssetProvider(sqlite3* database, std::string asset)
        : BufferProviderImpl(nullptr, 0), mDatabase(database), mAsset(std::move(asset)) {
        const std::string packet = StoredPacket(mDatabase, mAsset);
        ResetBuffer(reinterpret_cast<const unsigned char*>(packet.data()), packet.size());
    }

private:
    void WriteBuffer(const std::vector<zephmetadata::Path>& /*changes*/, const char* data, std::size_t size) override {
        const Statement insert = Prepare(mDatabase, "INSERT OR REPLACE INTO metadata VALUES (?1, ?2)", mAsset);
        sqlite3_bind_blob64(insert.get(), 2, data, size, SQLITE_TRANSIENT);
        if (sqlite3_step(insert.get()) != SQLITE_DONE) {
            ReportWriting({}, {zephmetadata::kFileStatus_NotWritten, sqlite3_errmsg(mDatabase)});
        }
    }

    sqlite3* mDatabase;
    std::string mAsset;
};

int Run(sqlite3* database, const std::string& asset, const char* newTitle) {
    const auto provider = std::make_shared<AssetProvider>(database, asset);
    const zephmetadata::Path title = zephmetadata::PathForExpression("dc:title");
    zephmetadata::MetaDataUpdateAccess access(provider);
    if (newTitle != nullptr) {
        access.Set(title, newTitle);
    }
    const zephmetadata::WriteReport report = access.Commit();
    for (const zephmetadata::WriteFailure& failure : report.mFailures) {
        std::cerr << Describe(failure) << '\n';
    }
    std::string text;
    GetValue(*access, title, text);
    std::cout << asset << ": " << text << '\n';
    return report.mFailures.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3 && argc != 4) {
        std::cerr << "usage: sqlite_provider DATABASE ASSET [TITLE]\n";
        return 2;
    }
    const Database database = Open(argv[1]);
    if (!database) {
        std::cerr << argv[1] << ": no database\n";
        return 1;
    }
    const zephmetadata::Library library;
    return Run(database.get(), argv[2], argc == 4 ? argv[3] : nullptr);
}
