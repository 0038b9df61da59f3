// Adds a keyword to a photo: edit_keywords photo.jpg sunrise
#include <zephmetadata/zephmetadata.h>

#include <algorithm>
#include <iostream>

namespace {

using namespace zephmetadata;

/// Appends @p keyword, unless it is there already; true when the tree changed.
bool AddKeyword(XMPMetaHandle tree, const Path& keywords, const std::string& keyword) {
    const std::vector<std::string> items = GetItems(tree, keywords);
    if (std::find(items.begin(), items.end(), keyword) != items.end()) {
        return false;
    }
    // An item that is one past the end is made.
    return SetValue(tree, CreatePathFromArrayItem(keywords, static_cast<int>(items.size()) + 1), keyword);
}

bool Edit(const std::string& file, const std::string& keyword) {
    const auto photo = std::make_shared<FileProvider>(zephcore::PathFromNative(file));
    if (photo->LastRead().mStatus == FileStatus::kFileStatus_NoXMP) {
        photo->StartMetaData();
    }
    const Path keywords = PathForExpression("dc:subject");
    {
        // The end of the access writes the changes back into the file.
        MetaDataUpdateAccess access(photo);
        if (*access == nullptr) {
            std::cerr << file << ": no metadata that could be changed\n";
            return false;
        }
        if (AddKeyword(*access, keywords, keyword)) {
            access.AddChange(keywords);
        }
    }
    if (photo->LastWrite().mStatus != FileStatus::kFileStatus_Success) {
        std::cerr << file << ": not written: " << photo->LastWrite().mDetail << '\n';
        return false;
    }
    std::string text;
    GetValue(*MetaDataReadAccess(photo), keywords, text);
    std::cout << text << '\n';
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: edit_keywords FILE KEYWORD\n";
        return 2;
    }
    zephmetadata::Initialize();
    const bool edited = Edit(argv[1], argv[2]);
    zephmetadata::Terminate();
    return edited ? 0 : 1;
}
