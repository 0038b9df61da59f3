#include "media_file.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>

#include "providers.h"

namespace zephmeta {

namespace {

using zephmetadata::FileReport;
using zephmetadata::FileStatus;

std::string Reason(const FileReport& report) {
    return report.mStatus == FileStatus::kFileStatus_Success ? std::string() : Describe(report);
}

zephmetadata::SidecarPolicy sidecarPolicy = zephmetadata::kSidecarPolicy_Automatic;

}  // namespace

void UseSidecars(zephmetadata::SidecarPolicy policy) {
    sidecarPolicy = policy;
}

MediaFile::MediaFile(const std::string& name) : mName(name) {
    const zephmetadata::UTF16String path = zephcore::PathFromNative(name);
    if (IsSidecarName(name)) {
        const auto sidecar = std::make_shared<zephmetadata::SidecarProvider>(path);
        mSidecar = sidecar.get();
        mProvider = sidecar;
    } else {
        const auto media = zephmetadata::OpenMedia(path, sidecarPolicy);
        mMedia = media.get();
        mProvider = media;
    }
}

const FileReport& MediaFile::LastRead() const {
    return mSidecar != nullptr ? mSidecar->LastRead() : mMedia->LastRead();
}

const FileReport& MediaFile::LastWrite() const {
    return mSidecar != nullptr ? mSidecar->LastWrite() : mMedia->LastWrite();
}

bool MediaFile::HasXMP() const {
    return LastRead().mStatus == FileStatus::kFileStatus_Success;
}

std::string MediaFile::ReadProblem() const {
    return HasXMP() || LastRead().mStatus == FileStatus::kFileStatus_NoXMP ? std::string() : Reason(LastRead());
}

std::string MediaFile::ReadWarning() const {
    const bool isDamaged = HasXMP() && !LastRead().mDetail.empty();
    return isDamaged ? Reason({FileStatus::kFileStatus_DamagedFile, LastRead().mDetail}) : std::string();
}

std::string MediaFile::WhyWithoutXMP() const {
    return LastRead().mStatus == FileStatus::kFileStatus_NoXMP ? LastRead().mDetail : std::string();
}

std::string MediaFile::WriteProblem() const {
    return Reason(LastWrite());
}

std::string MediaFile::Sidecar() const {
    return mMedia == nullptr ? std::string() : zephcore::PathToNative(mMedia->SidecarPath());
}

bool MediaFile::IsMissingSidecar() const {
    return mSidecar != nullptr && LastRead().mStatus == FileStatus::kFileStatus_NoFile;
}

bool MediaFile::Start() {
    return mMedia != nullptr && mMedia->StartMetaData();
}

std::vector<MediaFile> OpenAll(const std::vector<std::string>& names, Problems& problems) {
    std::vector<MediaFile> files;
    std::set<std::filesystem::path> seen;
    Progress progress(names.size(), true);
    for (const std::string& name : names) {
        progress.Next(name);
        std::error_code isNoPath;
        if (!seen.insert(std::filesystem::weakly_canonical(name, isNoPath)).second && !isNoPath) {
            continue;
        }
        MediaFile file(name);
        const std::string problem = file.ReadProblem();
        problems.ReportCollected(name);
        if (problem.empty()) {
            files.push_back(std::move(file));
        } else {
            problems.Report(name, problem);
        }
    }
    return files;
}

zephmetadata::sp<zephmetadata::MetaDataProvider> AsOne(const std::vector<MediaFile>& files) {
    std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>> providers;
    std::transform(files.begin(), files.end(), std::back_inserter(providers),
                   [](const MediaFile& file) { return file.Provider(); });
    return Together(providers);
}

}  // namespace zephmeta
