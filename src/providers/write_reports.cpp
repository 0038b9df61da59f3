#include "providers/write_reports.h"

#include "zephmetadata/source_provider.h"

namespace zephmetadata {

namespace {

/// Calls @p use with what @p provider is, if it is one of those over files.
template <typename Use>
void WithFile(const MetaDataProvider& provider, const Use& use) {
    if (const auto* const media = dynamic_cast<const MediaProvider*>(&provider)) {
        use(*media);
    } else if (const auto* const file = dynamic_cast<const FileProvider*>(&provider)) {
        use(*file);
    } else if (const auto* const sidecar = dynamic_cast<const SidecarProvider*>(&provider)) {
        use(*sidecar);
    }
}

}  // namespace

UTF16String FilePathOf(const MetaDataProvider& provider) {
    UTF16String path;
    WithFile(provider, [&](const auto& file) { path = file.FilePath(); });
    return path;
}

FileReport WhyWithoutTree(const MetaDataProvider& provider) {
    FileReport report{FileStatus::kFileStatus_NoXMP, {}};
    WithFile(provider, [&](const auto& file) { report = file.LastRead(); });
    const bool wasEmptied = report.mStatus == FileStatus::kFileStatus_Success;
    return wasEmptied ? FileReport{FileStatus::kFileStatus_NoXMP, {}} : report;
}

}  // namespace zephmetadata
