#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "media/containers/container.h"
#include "media/files/file_source.h"

/// Reading and replacing media files. Paths are native ones. Nothing here throws or prints; what the callbacks throw
/// passes through and leaves the file as it was.
namespace zephmetadata::media {

/// A regular file that is open for reading.
struct OpenedMedia {
    FileStatus mStatus = FileStatus::kFileStatus_NoFile;  ///< kFileStatus_Success when the rest is valid
    UTF8String mDetail;
    FileStamp mStamp;
    std::shared_ptr<const FileSource> mSource;
};

/// Opens a file at the end of all symbolic links, after putting right what a killed process left of it.
OpenedMedia OpenMediaFile(const std::string& nativePath);

/// An edit that was carried out, before it takes the file's place.
struct CarriedEdit {
    const Plan& mPlan;
    std::shared_ptr<const ByteSource> mBefore;
    std::shared_ptr<const ByteSource> mAfter;
};
using PlanMedia = std::function<PlannedEdit(const std::shared_ptr<const ByteSource>& file)>;
/// Answers in English what is not as it should be, an empty text for nothing.
using CheckMedia = std::function<UTF8String(const CarriedEdit&)>;

/// Changes a file that was read as @p expected as @p plan says, or leaves it exactly as it was. Before the new file takes
/// the place of the old one every byte of it is compared with the plan, and then @p check is asked, which may be none.
/// An empty plan is a success that writes nothing. Writers of one file take turns; the callbacks must not write it.
WriteOutcome ReplaceMedia(const std::string& nativePath, const FileStamp& expected, const PlanMedia& plan,
                          const CheckMedia& check);

/// Makes a file that is not there yet, with all its bytes at once; kFileStatus_Changed when there is one by now.
WriteOutcome CreateMedia(const std::string& nativePath, std::string_view bytes);

/// Removes a file that was read as @p expected. Of the links that lead to it none is removed.
WriteOutcome RemoveMedia(const std::string& nativePath, const FileStamp& expected);

}  // namespace zephmetadata::media
