#include "support/temp_folder.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace support {

TempFolder::TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zephtest-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    mPath = name;
    for (const char* base : {"SYSTEM", "GLOBAL_PREF", "PREF", "PLUGINS"}) {
        setenv(("ZEPHCORE_" + std::string(base) + "_DIR").c_str(), (mPath / "base" / base).c_str(), 1);
    }
    setenv("ZEPHCORE_LANGUAGE", "en_US", 1);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
}

std::filesystem::path TempFolder::Write(const std::filesystem::path& name, std::string_view bytes) const {
    const std::filesystem::path path = mPath / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace support
