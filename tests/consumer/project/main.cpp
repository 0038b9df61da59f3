#include <cstdlib>
#include <filesystem>

#include "host.h"

namespace {

int CheckAll(const host::Arguments& arguments) {
    struct Part {
        const char* mName;
        int (*mCheck)(const host::Arguments&);
    };
    const Part parts[] = {
        {"library", host::CheckLibrary}, {"platform", host::CheckPlatform},     {"definitions", host::CheckDefinitions},
        {"paths", host::CheckPaths},     {"values", host::CheckValues},         {"providers", host::CheckProviders},
        {"views", host::CheckViews},     {"extensions", host::CheckExtensions},
    };
    int failures = 0;
    for (const Part& part : parts) {
        const int result = part.mCheck(arguments);
        std::cout << part.mName << (result == 0 ? ": good\n" : ": FAILED\n");
        failures += result;
    }
    return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: consumer PHOTO VERSION\n";
        return 2;
    }
    std::string folder = (std::filesystem::temp_directory_path() / "consumer-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        return 2;
    }
    for (const char* base : {"SYSTEM", "GLOBAL_PREF", "PREF", "PLUGINS"}) {
        setenv(("ZEPHCORE_" + std::string(base) + "_DIR").c_str(), (folder + "/" + base).c_str(), 1);
    }
    setenv("ZEPHCORE_LANGUAGE", "nb_NO", 1);
    const std::string photo = folder + "/photo.jpg";
    std::filesystem::copy_file(argv[1], photo);
    const int result = CheckAll({folder, photo, argv[2]});
    std::filesystem::remove_all(folder);
    return result;
}
