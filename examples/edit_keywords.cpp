// Adds a keyword to a photo: edit_keywords photo.jpg sunrise
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <string>

namespace {

using namespace zephmetadata;

bool AddKeyword(const std::string& file, const std::string& keyword) {
    const auto photo = std::make_shared<FileProvider>(zephcore::PathFromNative(file));
    photo->StartMetaData();  // of a photo that has none
    ValueEdit edit;
    edit.mKind = kEditKind_Add;  // one that is there already is not added again
    edit.mPath = PathForExpression("dc:subject");
    edit.mValue = keyword;

    MetaDataUpdateAccess access(photo);
    if (const EditOutcome outcome = access.Apply(edit); outcome.mResult == kEditResult_Refused) {
        std::cerr << file << ": " << Describe(outcome) << '\n';
        return false;
    }
    const WriteReport report = access.Commit();
    for (const WriteFailure& failure : report.mFailures) {
        std::cerr << Describe(failure) << '\n';
    }
    std::string text;
    GetValue(*access, edit.mPath, text);
    std::cout << text << '\n';
    return report.mFailures.empty();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: edit_keywords FILE KEYWORD\n";
        return 2;
    }
    const zephmetadata::Library library;
    return AddKeyword(argv[1], argv[2]) ? 0 : 1;
}
