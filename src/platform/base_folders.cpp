#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cassert>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/base_folders.h"
#include "zephcore/files.h"

namespace zephcore {

namespace {

[[maybe_unused]] constexpr int kMachineWideId = 44;
constexpr std::string_view kFolderName = "zephcore";

std::string Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

std::string HomeFolder() {
    if (std::string home = Variable("HOME"); !home.empty()) {
        return home;
    }
    std::array<char, 4096> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
        return found->pw_dir;
    }
    // No relative path: nothing may be loaded from whatever folder is the current one.
    return "/nonexistent";
}

std::string ConfigurationFolder() {
    // The XDG Base Directory Specification has relative paths ignored.
    if (std::string configured = Variable("XDG_CONFIG_HOME"); configured.starts_with('/')) {
        return configured;
    }
    return HomeFolder() + "/.config";
}

/// The folder that @p variable names, else @p byDefault.
template <typename Default>
std::string NativeBaseFolder(const char* variable, Default byDefault) {
    std::string configured = Variable(variable);
    return configured.empty() ? byDefault() : configured;
}

template <typename Default>
Dir BaseFolder(const char* variable, Default byDefault) {
    return Dir(PathFromNative(NativeBaseFolder(variable, byDefault)));
}

std::string OwnFolderIn(const std::string& parent) {
    return parent + '/' + std::string(kFolderName);
}

std::string NativeGlobalPrefDir() {
    return NativeBaseFolder("ZEPHCORE_GLOBAL_PREF_DIR", [] { return OwnFolderIn(ConfigurationFolder()); });
}

}  // namespace

std::string NativePrefDir() {
    return NativeBaseFolder("ZEPHCORE_PREF_DIR", NativeGlobalPrefDir);
}

Dir Dir::PrefDir() {
    return Dir(PathFromNative(NativePrefDir()));
}

Dir Dir::GlobalPrefDir() {
    return Dir(PathFromNative(NativeGlobalPrefDir()));
}

Dir Dir::SystemDir([[maybe_unused]] int id) {
    assert(id == kMachineWideId);
    return BaseFolder("ZEPHCORE_SYSTEM_DIR", [] { return OwnFolderIn(ZEPHCORE_DATA_DIR); });
}

Dir Dir::PluginsDir() {
    return BaseFolder("ZEPHCORE_PLUGINS_DIR", [] { return OwnFolderIn(ZEPHCORE_LIB_DIR); });
}

Dir Dir::TempDir() {
    return BaseFolder("TMPDIR", [] { return std::string("/tmp"); });
}

Dir Dir::AppDir() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? Dir(u".") : Dir(PathFromNative(program.parent_path().native()));
}

}  // namespace zephcore
