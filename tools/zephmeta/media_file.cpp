#include "media_file.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>

#include "together.h"

namespace zephmeta {

namespace {

using zephmetadata::FileReport;
using zephmetadata::FileStatus;

struct ReasonRow {
    FileStatus mStatus;
    std::string_view mReason;
};

constexpr auto kReasons = std::to_array<ReasonRow>({
    {FileStatus::kFileStatus_NoFile, "no such file"},
    {FileStatus::kFileStatus_NotAFile, "not a file"},
    {FileStatus::kFileStatus_Unreadable, "cannot be read"},
    {FileStatus::kFileStatus_UnknownFormat, "not a media file of a known format"},
    {FileStatus::kFileStatus_DamagedFile, "the file is damaged"},
    {FileStatus::kFileStatus_DamagedXMP, "its XMP is damaged and left as it is"},
    {FileStatus::kFileStatus_NoXMP, "the file has no XMP"},
    {FileStatus::kFileStatus_ReadOnly, "the file is read-only"},
    {FileStatus::kFileStatus_CannotCarryXMP, "its metadata can be read but not written"},
    {FileStatus::kFileStatus_WritingDisabled, "writing is switched off"},
    {FileStatus::kFileStatus_NotWritten, "could not be written"},
    {FileStatus::kFileStatus_Changed, "the file was changed by another program meanwhile"},
});

std::string Reason(const FileReport& report) {
    const auto* row = std::find_if(kReasons.begin(), kReasons.end(),
                                   [&](const ReasonRow& candidate) { return candidate.mStatus == report.mStatus; });
    std::string reason = row == kReasons.end() ? std::string() : std::string(row->mReason);
    if (!reason.empty() && !report.mDetail.empty()) {
        reason += " (" + report.mDetail + ")";
    }
    return reason;
}

bool IsSidecarName(const std::string& name) {
    constexpr std::string_view kExtension = ".xmp";
    if (name.size() <= kExtension.size()) {
        return false;
    }
    return std::equal(kExtension.begin(), kExtension.end(), name.end() - static_cast<std::ptrdiff_t>(kExtension.size()),
                      [](char wanted, char c) { return wanted == (c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c); });
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
    return HasXMP() && !LastRead().mDetail.empty() ? "the file is damaged (" + LastRead().mDetail + ")" : std::string();
}

std::string MediaFile::WhyWithoutXMP() const {
    return LastRead().mStatus == FileStatus::kFileStatus_NoXMP ? LastRead().mDetail : std::string();
}

std::string MediaFile::WriteProblem() const {
    return Reason(LastWrite());
}

bool MediaFile::WasChangedMeanwhile() const {
    return LastWrite().mStatus == FileStatus::kFileStatus_Changed;
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
