// Reading media files, those of the folder BENCH_MEDIA or the samples of the tests, against the toolkit opening the same
// files and visiting every node.
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "ratio.h"
#include "zephmetadata/zephmetadata.h"

namespace {

std::vector<std::string> MediaFiles() {
    const char* const folder = std::getenv("BENCH_MEDIA");
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(
             folder == nullptr ? ZEPHMETADATA_SOURCE_DIR "/tests/data" : folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().string());
        }
    }
    return files;
}

std::size_t ReadOurs(const std::string& file) {
    const auto provider = std::make_shared<zephmetadata::FileProvider>(zephcore::PathFromNative(file));
    const zephmetadata::MetaDataReadAccess access(provider);
    return *access == nullptr ? 0 : 1;
}

std::size_t ReadReference(const std::string& path) {
    const bench::FileHandle file(xmp_files_open_new(path.c_str(), XMP_OPEN_READ));
    const bench::TreeHandle tree(file ? xmp_files_get_new_xmp(file.get()) : nullptr);
    if (!tree) {
        return 0;
    }
    const bench::IteratorHandle iterator(xmp_iterator_new(tree.get(), nullptr, nullptr, XMP_ITER_PROPERTIES));
    const bench::StringHandle schema(xmp_string_new());
    const bench::StringHandle nodePath(xmp_string_new());
    const bench::StringHandle value(xmp_string_new());
    std::uint32_t options = 0;
    while (xmp_iterator_next(iterator.get(), schema.get(), nodePath.get(), value.get(), &options)) {
    }
    xmp_files_close(file.get(), XMP_CLOSE_NOOPTION);
    return 1;
}

/// A round over all files that both sides can read: a file that one of them refuses would be no comparison.
template <std::size_t (*Read)(const std::string&)>
std::function<void()> Round(const std::vector<std::string>& files) {
    return [files] {
        std::size_t read = 0;
        for (const std::string& file : files) {
            read += Read(file);
        }
        bench::Require(read == files.size(), "reading all files");
    };
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    zephmetadata::Initialize();
    std::vector<std::string> files = MediaFiles();
    std::erase_if(files, [](const std::string& file) { return ReadOurs(file) == 0 || ReadReference(file) == 0; });
    Require(!files.empty(), "finding files that both sides read");
    return {"read media", Round<ReadOurs>(files), Round<ReadReference>(files), 1.1};
}
