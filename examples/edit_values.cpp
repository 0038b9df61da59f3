// Reads and sets values of every kind, and says what became of each: edit_values photo.jpg
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <string>

namespace {

using namespace zephmetadata;

void Read(XMPMetaHandle tree) {
    int rating = 0;
    if (GetValue(tree, PathForExpression("xmp:Rating"), rating)) {
        std::cout << "stars: " << rating << '\n';
    }
    Date taken;
    if (GetValue(tree, PathForExpression("exif:DateTimeOriginal"), taken)) {
        std::cout << "year: " << taken.year << '\n';
    }
    const Path exposure = PathForExpression("exif:ExposureTime");
    std::string shown;
    std::string stored;
    if (GetValue(tree, exposure, shown) && GetRawStringValue(tree, exposure, stored)) {
        std::cout << stored << " is shown as " << shown << '\n';
    }
    for (const std::string& keyword : GetItems(tree, PathForExpression("dc:subject"))) {
        std::cout << "keyword: " << keyword << '\n';
    }
    for (const auto& [language, title] : GetLanguages(tree, PathForExpression("dc:title"))) {
        std::cout << language << ": " << title << '\n';
    }
}

void Show(const char* what, const EditOutcome& outcome) {
    std::cout << what << ": "
              << (outcome.mResult == kEditResult_Changed     ? "set"
                  : outcome.mResult == kEditResult_Unchanged ? "was there already"
                                                             : Describe(outcome))
              << '\n';
}

void Edit(MetaDataUpdateAccess& access) {
    Show("title", access.Set(PathForExpression("dc:title"), "Low tide"));
    Show("title in German", access.Set(PathForExpression(R"(dc:title[?xml:lang="de"])"), "Ebbe"));
    Show("keywords", access.Set(PathForExpression("dc:subject"), R"(pier; "sand; wet")"));
    Show("second keyword", access.Set(PathForExpression("dc:subject[2]"), "sand"));
    Show("city", access.Set(PathForExpression("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity"), "Westmoor"));
    Show("date", access.Set(PathForExpression("photoshop:DateCreated"), Date{2026, 5, 18}));
    Show("rating", access.Set(PathForExpression("xmp:Rating"), 4));
    Show("too high a rating", access.Set(PathForExpression("xmp:Rating"), 9));
    Show("mistyped", access.Set(PathForExpression("dc:titel"), "Low tide"));
    Show("headline", access.Delete(PathForExpression("photoshop:Headline")));
}

int Run(const char* file) {
    const sp<MediaProvider> photo = OpenMedia(zephcore::PathFromNative(file));
    Read(*MetaDataReadAccess(photo));
    photo->StartMetaData();  // a photo without metadata gets its first
    MetaDataUpdateAccess access(photo);
    Edit(access);
    const WriteReport report = access.Commit();
    for (const WriteFailure& failure : report.mFailures) {
        std::cerr << Describe(failure) << '\n';
    }
    return report.IsWritten() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: edit_values FILE\n";
        return 2;
    }
    const zephmetadata::Library library;
    zephmetadata::RegisterBundledPackages();  // the IPTC standard and much else beside the built-in definitions
    return Run(argv[1]);
}
