#include <filesystem>

#include "batch/batch.h"
#include "commands/commands.h"
#include "documents/document_file.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

namespace fs = std::filesystem;

/// Beside the file, or in the folder: its name with ".xmp" behind it.
fs::path SidecarOf(const std::string& name, const std::string& folder) {
    const fs::path file(name);
    return (folder.empty() ? file.parent_path() : fs::path(folder)) / (file.filename().native() + ".xmp");
}

void Extract(const MediaFile& file, const fs::path& into, FileResult& result) {
    const zephmetadata::MetaDataReadAccess access(file.Provider());
    const std::string packet = *access == nullptr ? std::string() : zephmetadata::SerializeXMPMeta(*access);
    if (packet.empty()) {
        result.Fail(*access == nullptr ? "has no XMP to extract" : "its XMP cannot be written as a packet");
        return;
    }
    if (const std::string problem = WriteNewFile(into.native(), packet); !problem.empty()) {
        result.Fail(problem);
        return;
    }
    result.SetOutcome(Outcome::kWritten);
    result.Print(OneLine(file.Name()) + ": extracted to " + OneLine(into.native()));
}

}  // namespace

int ExtractPackets(const ExtractRequest& request) {
    Problems problems;
    problems.ReportCollected({});
    std::error_code error;
    if (!request.mFolder.empty() && !fs::is_directory(request.mFolder, error)) {
        fs::create_directories(request.mFolder, error);
        if (error) {
            problems.Report(request.mFolder, "cannot be made (" + error.message() + ")");
            return problems.ExitStatus();
        }
    }
    return Batch(request.mBatch, problems).Run([&](const MediaFile& file, FileResult& result) {
        Extract(file, SidecarOf(file.Name(), request.mFolder), result);
    });
}

}  // namespace zephmeta
