#include <array>
#include <string_view>

#include "zephcore/files.h"
#include "zephcore/localizer.h"
#include "zephcore/text.h"
#include "zephmetadata/file_status.h"

namespace zephmetadata {

namespace {

/// In the order of the enumeration.
constexpr auto kTexts = std::to_array<std::u16string_view>({
    u"$$$/zephmetadata/FileStatus/Success=done",
    u"$$$/zephmetadata/FileStatus/NoFile=no such file",
    u"$$$/zephmetadata/FileStatus/NotAFile=not a file",
    u"$$$/zephmetadata/FileStatus/Unreadable=cannot be read",
    u"$$$/zephmetadata/FileStatus/UnknownFormat=not a media file of a known format",
    u"$$$/zephmetadata/FileStatus/DamagedFile=the file is damaged",
    u"$$$/zephmetadata/FileStatus/DamagedXMP=its XMP is damaged and left as it is",
    u"$$$/zephmetadata/FileStatus/NoXMP=the file has no XMP",
    u"$$$/zephmetadata/FileStatus/ReadOnly=the file is read-only",
    u"$$$/zephmetadata/FileStatus/CannotCarryXMP=its metadata can be read but not written",
    u"$$$/zephmetadata/FileStatus/WritingDisabled=writing is switched off",
    u"$$$/zephmetadata/FileStatus/NotWritten=could not be written",
    u"$$$/zephmetadata/FileStatus/Changed=the file was changed by another program meanwhile",
});
static_assert(kTexts.size() == static_cast<std::size_t>(kFileStatus_Changed) + 1);

}  // namespace

UTF8String Describe(FileStatus status) {
    const auto index = static_cast<std::size_t>(status);
    return index < kTexts.size() ? zephcore::UTF16to8(zephcore::ZString(kTexts[index])) : UTF8String();
}

UTF8String Describe(const FileReport& report) {
    const UTF8String status = Describe(report.mStatus);
    return report.mDetail.empty() ? status : status + " (" + report.mDetail + ")";
}

UTF8String Describe(const WriteFailure& failure) {
    const UTF8String reason = Describe(FileReport{failure.mStatus, failure.mDetail});
    return failure.mPath.empty() ? reason : zephcore::PathToNative(failure.mPath) + ": " + reason;
}

}  // namespace zephmetadata
