#include <mutex>
#include <nlohmann/json.hpp>

#include "zephcore/environment.h"
#include "zephcore/files.h"

namespace zephcore {

namespace {

using nlohmann::json;

constexpr std::uint64_t kMaxSettingsBytes = 1U << 20U;

File SettingsFile() {
    return {Dir::PrefDir(), u"debug.json"};
}

json ReadSettings() {
    const auto text = FileUtils::ReadFileToString(SettingsFile().FullPath(), kMaxSettingsBytes);
    json settings = text ? json::parse(*text, nullptr, /*allow_exceptions=*/false) : json::object();
    return settings.is_object() ? settings : json::object();
}

}  // namespace

DebugDatabase& DebugDatabase::Instance() {
    static DebugDatabase instance;
    return instance;
}

UTF8String DebugDatabase::GetEntry(const UTF8String& key, const UTF8String& defaultValue) const {
    const json settings = ReadSettings();
    const auto entry = settings.find(key);
    return entry != settings.end() && entry->is_string() ? entry->get<UTF8String>() : defaultValue;
}

bool DebugDatabase::SetEntry(const UTF8String& key, const UTF8String& value) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    json settings = ReadSettings();
    settings[key] = value;
    // Bytes that are no UTF-8 are replaced: the settings stay readable.
    const UTF8String text = settings.dump(2, ' ', false, json::error_handler_t::replace) + '\n';
    const File file = SettingsFile();
    return FileUtils::EnsureDirectoryExists(file.Parent().FullPath()) &&
           FileUtils::SimpleWriteStringToFile(file.FullPath(), text);
}

}  // namespace zephcore
