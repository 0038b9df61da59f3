#pragma once

#include <string>
#include <vector>

#include "console.h"
#include "zephmetadata/providers.h"

namespace zephmeta {

/// How the files that are opened from now on go together with their sidecars.
void UseSidecars(zephmetadata::SidecarPolicy policy);

/// A file of the command line with the provider that fits it: a sidecar by its name, else a media file.
class MediaFile {
public:
    explicit MediaFile(const std::string& name);

    const std::string& Name() const { return mName; }
    const zephmetadata::sp<zephmetadata::MetaDataProvider>& Provider() const { return mProvider; }
    bool HasXMP() const;
    /// Why nothing can be read, for people; empty when the file was read, with or without XMP.
    std::string ReadProblem() const;
    /// What is damaged in a file that was read as far as it goes; empty when nothing is.
    std::string ReadWarning() const;
    /// Why a file without XMP can be given none, where more is known than its format.
    std::string WhyWithoutXMP() const;
    /// Why the last write-back failed; empty when it did not.
    std::string WriteProblem() const;
    /// The sidecar that changes go to instead of the file; empty when they go into the file.
    std::string Sidecar() const;
    /// Gives a file without XMP its first; false when its format cannot carry any.
    bool Start();
    /// Whether this is a sidecar that is not there.
    bool IsMissingSidecar() const;

private:
    const zephmetadata::FileReport& LastRead() const;
    const zephmetadata::FileReport& LastWrite() const;

    std::string mName;
    zephmetadata::sp<zephmetadata::MetaDataProvider> mProvider;
    zephmetadata::MediaProvider* mMedia = nullptr;      // either of these two is
    zephmetadata::SidecarProvider* mSidecar = nullptr;  // what mProvider holds
};

/// Those of @p names that can be read, each file once; the others are reported.
std::vector<MediaFile> OpenAll(const std::vector<std::string>& names, Problems& problems);
/// The files as one provider. A file without XMP counts as one that has no values.
zephmetadata::sp<zephmetadata::MetaDataProvider> AsOne(const std::vector<MediaFile>& files);

}  // namespace zephmeta
