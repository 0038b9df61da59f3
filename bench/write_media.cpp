// Setting a title in a hundred copies of a photo, against the toolkit's bare way: open for update, put, close, which
// neither compares nor keeps the old file until the new one is whole.
#include <vector>

#include "ratio.h"
#include "support/temp_folder.h"
#include "zephmetadata/zephmetadata.h"

namespace {

constexpr int kCopies = 100;

/// Copies of the photo, which live as long as this. Each round writes another title: one that is there already is no work.
class Copies {
public:
    Copies() {
        const std::string photo = support::ReadFile(ZEPHMETADATA_SOURCE_DIR "/tests/data/harbour.jpg");
        for (int i = 0; i < kCopies; ++i) {
            mFiles.push_back(mFolder.Write(std::to_string(i) + ".jpg", photo).string());
        }
    }
    const std::vector<std::string>& Files() const { return mFiles; }
    std::string NextTitle() { return "Title " + std::to_string(1000 + ++mRounds % 1000); }

private:
    support::TempFolder mFolder;
    std::vector<std::string> mFiles;
    int mRounds = 0;
};

void WriteOurs(const std::string& file, const std::string& title) {
    using namespace zephmetadata;
    static const Path path = PathForExpression("dc:title");
    const auto provider = std::make_shared<FileProvider>(zephcore::PathFromNative(file));
    {
        MetaDataUpdateAccess access(provider);
        bench::Require(SetValue(*access, path, title), "setting the title");
        access.AddChange(path);
    }
    bench::Require(provider->LastWrite().mStatus == FileStatus::kFileStatus_Success, "writing through the library");
}

void WriteReference(const std::string& path, const std::string& title) {
    const bench::FileHandle file(xmp_files_open_new(path.c_str(), XMP_OPEN_FORUPDATE));
    const bench::TreeHandle tree(file ? xmp_files_get_new_xmp(file.get()) : nullptr);
    bench::Require(tree && xmp_set_localized_text(tree.get(), NS_DC, "title", "", "x-default", title.c_str(), 0) &&
                       xmp_files_put_xmp(file.get(), tree.get()) && xmp_files_close(file.get(), XMP_CLOSE_NOOPTION),
                   "writing through the toolkit");
}

template <void (*Write)(const std::string&, const std::string&)>
std::function<void()> Round() {
    return [copies = std::make_shared<Copies>()] {
        const std::string title = copies->NextTitle();
        for (const std::string& file : copies->Files()) {
            Write(file, title);
        }
    };
}

}  // namespace

bench::Comparison bench::MakeComparison() {
    zephmetadata::Initialize();
    return {"write media", Round<WriteOurs>(), Round<WriteReference>(), 2};
}
