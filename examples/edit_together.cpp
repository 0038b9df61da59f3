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
    std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>> files;
    for (int i = 2; i < argc; ++i) {
        const auto file = zephmetadata::OpenMedia(zephcore::PathFromNative(argv[i]));
        file->StartMetaData();  // a file without metadata takes part, too
        files.push_back(file);
    }
    const auto selection = std::make_shared<zephmetadata::AggregateProvider>(files);

    zephmetadata::MetaDataUpdateAccess access(selection);
    for (const char* expression : {"dc:title", "xmp:Rating", "dc:rights"}) {
        Show(*access, expression);
    }
    access.Set(zephmetadata::PathForExpression("dc:rights"), argv[1]);
    const zephmetadata::WriteReport report = access.Commit();
    for (const zephmetadata::WriteFailure& failure : report.mFailures) {
        std::cerr << Describe(failure) << '\n';
    }
    Show(*access, "dc:title");
    Show(*access, "dc:rights");
    return report.mFailures.empty() ? 0 : 1;
}
