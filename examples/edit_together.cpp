// Edits many files as one, as an editor does with a selection: edit_together RIGHTS FILE...
//
// What the files hold alike is shown, the rest is mixed. An edit goes to each of them; what is still mixed stays each
// file's own.
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <string>
#include <vector>

namespace {

void Show(zephmetadata::XMPMetaHandle tree, const char* expression) {
    const zephmetadata::Path path = zephmetadata::PathForExpression(expression);
    std::string text;
    auto result = zephmetadata::kGetValueResult_Success;
    GetValue(tree, path, text, &result);
    std::cout << expression << ": "
              << (result == zephmetadata::kGetValueResult_Mixed     ? "(different values)"
                  : result == zephmetadata::kGetValueResult_NoValue ? "(none)"
                                                                    : text)
              << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: edit_together RIGHTS FILE...\n";
        return 2;
    }
    const zephmetadata::Library library;
    std::vector<zephmetadata::sp<zephmetadata::MediaProvider>> files;
    for (int i = 2; i < argc; ++i) {
        files.push_back(zephmetadata::OpenMedia(zephcore::PathFromNative(argv[i])));
        files.back()->StartMetaData();  // a file without metadata takes part, too
    }
    const std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>> parts(files.begin(), files.end());
    const auto selection = std::make_shared<zephmetadata::AggregateProvider>(parts);

    const zephmetadata::Path rights = zephmetadata::PathForExpression("dc:rights");
    {
        zephmetadata::MetaDataUpdateAccess access(selection);
        for (const char* expression : {"dc:title", "xmp:Rating", "dc:rights"}) {
            Show(*access, expression);
        }
        if (SetValue(*access, rights, std::string(argv[1]))) {
            access.AddChange(rights);
        }
    }

    int failures = 0;
    for (const auto& file : files) {
        if (file->LastWrite().mStatus != zephmetadata::kFileStatus_Success) {
            std::cerr << zephcore::PathToNative(file->FilePath()) << ": not written: " << file->LastWrite().mDetail
                      << '\n';
            ++failures;
        }
    }
    Show(*zephmetadata::MetaDataReadAccess(selection), "dc:title");
    Show(*zephmetadata::MetaDataReadAccess(selection), "dc:rights");
    return failures == 0 ? 0 : 1;
}
