#include <sys/stat.h>

#include <cstdint>
#include <mutex>
#include <nlohmann/json.hpp>

#include "platform/base_folders.h"
#include "zephcore/environment.h"
#include "zephcore/files.h"

namespace zephcore {

namespace {

using nlohmann::json;

constexpr std::uint64_t kMaxSettingsBytes = 1U << 20U;

std::string SettingsPath() {
    return NativePrefDir() + "/debug.json";
}

json ReadSettings(const UTF16String& path) {
    const auto text = FileUtils::ReadFileToString(path, kMaxSettingsBytes);
    json settings = text ? json::parse(*text, nullptr, /*allow_exceptions=*/false) : json::object();
    return settings.is_object() ? settings : json::object();
}

/// What tells one state of a file from another; all zero for a missing one.
struct Version {
    std::uint64_t mFile = 0;
    std::int64_t mSize = 0;
    std::int64_t mSeconds = 0;
    std::int64_t mNanoseconds = 0;

    friend bool operator==(const Version&, const Version&) = default;
};

Version VersionOf(const std::string& nativePath) {
    struct stat status {};
    if (stat(nativePath.c_str(), &status) != 0) {
        return {};
    }
    return {status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

/// The settings as they were read last. Asked for with every value that is read, so the file is read again only when it
/// is another one, or has changed.
class Settings {
public:
    UTF8String Entry(const UTF8String& key, const UTF8String& defaultValue) {
        const std::lock_guard lock(mMutex);
        Refresh();
        const auto entry = mEntries.find(key);
        return entry != mEntries.end() && entry->is_string() ? entry->get<UTF8String>() : defaultValue;
    }

private:
    void Refresh() {
        std::string path = SettingsPath();
        const Version version = VersionOf(path);
        if (path != mPath || version != mVersion) {
            mEntries = ReadSettings(PathFromNative(path));
            mPath = std::move(path);
            mVersion = version;
        }
    }

    std::mutex mMutex;
    std::string mPath;
    Version mVersion;
    json mEntries = json::object();
};

}  // namespace

DebugDatabase& DebugDatabase::Instance() {
    static DebugDatabase instance;
    return instance;
}

UTF8String DebugDatabase::GetEntry(const UTF8String& key, const UTF8String& defaultValue) const {
    static Settings settings;
    return settings.Entry(key, defaultValue);
}

bool DebugDatabase::SetEntry(const UTF8String& key, const UTF8String& value) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const File file(PathFromNative(SettingsPath()));
    json settings = ReadSettings(file.FullPath());
    settings[key] = value;
    // Bytes that are no UTF-8 are replaced: the settings stay readable.
    const UTF8String text = settings.dump(2, ' ', false, json::error_handler_t::replace) + '\n';
    return FileUtils::EnsureDirectoryExists(file.Parent().FullPath()) &&
           FileUtils::SimpleWriteStringToFile(file.FullPath(), text);
}

}  // namespace zephcore
