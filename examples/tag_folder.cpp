// Adds a keyword to every photo of a folder: tag_folder FOLDER KEYWORD
//
// The edit of a file is carried out as a whole or not at all, and a file that has the keyword already is not written.
#include <zephmetadata/zephmetadata.h>

#include <iostream>
#include <string>

namespace {

/// What became of one file, in words.
std::string Outcome(const zephmetadata::EditReport& report) {
    if (report.IsRefused()) {
        return "refused: " + Describe(report.mOutcomes.front());
    }
    if (report.mStatus != zephmetadata::kFileStatus_Success) {
        return "not written: " + Describe(zephmetadata::FileReport{report.mStatus, report.mDetail});
    }
    return report.IsChanged() ? "tagged" : "has it already";
}

/// True unless the file should have been tagged and was not.
bool Tag(const zephcore::File& file, const std::vector<zephmetadata::ValueEdit>& edits) {
    // With its sidecar, if it has one or needs one.
    const auto photo = zephmetadata::OpenMedia(file.FullPath());
    if (photo->LastRead().mStatus == zephmetadata::kFileStatus_UnknownFormat) {
        return true;  // no photo: a folder holds other things, too
    }
    const zephmetadata::EditReport report = ApplyEdits(photo, edits);
    std::cout << zephcore::PathToNative(file.GetName()) << ": " << Outcome(report) << '\n';
    return !report.IsRefused() && report.mStatus == zephmetadata::kFileStatus_Success;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: tag_folder FOLDER KEYWORD\n";
        return 2;
    }
    const zephmetadata::Library library;
    const zephcore::Dir folder(zephcore::PathFromNative(argv[1]));
    if (!library.IsRunning() || !folder.IsReadable()) {
        std::cerr << argv[1] << ": cannot be read\n";
        return 1;
    }
    zephmetadata::ValueEdit keyword;
    keyword.mKind = zephmetadata::kEditKind_Add;
    keyword.mPath = zephmetadata::PathForExpression("dc:subject");
    keyword.mValue = argv[2];

    bool done = true;
    for (const zephcore::File& file : folder.Files()) {
        done = Tag(file, {keyword}) && done;
    }
    return done ? 0 : 1;
}
